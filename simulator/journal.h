// What a simulated unit has lived through.
#pragma once

#include "simulator/wire.h"

#include <string>
#include <vector>

namespace simulator {

struct HeardFrame {
    std::string text;  // the command text; of a frame that is not in order, all between STX and ETX
    bool good = false; // block check right and addressed to this unit
    Micros at = 0;
    std::string reply; // what stood between STX and ETX; empty for silence and for a reply set byte for byte
};

struct Journal {
    std::vector<HeardFrame> frames;
    std::vector<std::string> operations; // two digits each, in order, refused ones included

    // As receiver; the counts run on over all transfers.
    int packets = 0; // packets heard, damaged ones and EOTs included
    int blocksAccepted = 0;
    int blocksRefused = 0;      // damaged
    int blocksRepeated = 0;     // received a second time: acknowledged, not stored
    int ends = 0;               // EOTs acknowledged
    int cancels = 0;            // transfers broken off with CAN CAN, by either side
    bool imageComplete = false; // the last image received has ended with all its blocks
    Micros receiveTime = 0;     // of that image, from the end of its first packet to its EOT

    // As sender.
    int packetsSent = 0; // EOTs and repeats included
    int blocksSent = 0;  // each block once
};

// A short summary in lines of the form "name: values". Frames that were not good carry a "!".
std::string journalText(const Journal& journal);

} // namespace simulator
