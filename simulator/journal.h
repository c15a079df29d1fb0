// Record of what a simulated unit has received and done.
#pragma once

#include "simulator/wire.h"

#include <string>
#include <vector>

namespace simulator {

struct ReceivedFrame {
    std::string text;  // the command text; of a bad frame, everything between STX and ETX
    bool good = false; // block check right and addressed to this unit
    Micros at = 0;
    std::string reply; // text between STX and ETX; empty without a reply and for a reply given as bytes
};

struct Journal {
    std::vector<ReceivedFrame> frames;
    std::vector<std::string> operations; // two digits each, in order, refused ones included

    // As receiver; the counts cover all transfers.
    int packets = 0; // packets received, damaged ones and EOTs included
    int blocksAccepted = 0;
    int blocksRefused = 0;      // damaged
    int blocksRepeated = 0;     // received a second time: acknowledged, not stored
    int ends = 0;               // EOTs acknowledged
    int cancels = 0;            // transfers cancelled with CAN CAN, by either side
    bool imageComplete = false; // the last image received is complete
    Micros receiveTime = 0;     // of that image, from the end of its first packet to its EOT

    // As sender.
    int packetsSent = 0; // EOTs and repeats included
    int blocksSent = 0;  // each block once
};

// A summary in lines of the form "name: values". Bad frames are marked with "!".
std::string journalText(const Journal& journal);

} // namespace simulator
