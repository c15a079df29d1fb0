// Properties, timing and faults of a simulated unit.
#pragma once

#include "simulator/wire.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

// How the unit sends bytes: whole (size 0), or in pieces of `size` bytes with a pause between two of them.
struct Pieces {
    std::size_t size = 0;
    Micros pause = 0;
};

// Changes to the reply to one command. Without a value the reply is the usual one.
struct CommandReply {
    std::optional<std::string> resultCode = std::nullopt; // any but "0000" also refuses the command: no effect
    std::optional<std::string> endCode = std::nullopt;
    std::optional<std::string> data = std::nullopt; // exactly as in the reply: hexadecimal digits or plain text
    std::optional<Bytes> bytes = std::nullopt;      // the whole reply, byte for byte
    bool silent = false;                            // carried out, but no reply
    bool ignored = false;                           // not carried out, whatever the reply says
    bool wrongCheck = false;
    Bytes noiseBefore = {};
    Micros delay = 0; // in addition to the unit's replyDelay
    Pieces pieces = {};
};

// Applies a reply to the `occurrence`-th frame (from 1; 0: every frame) of those whose command text begins with
// `prefix`. The empty prefix matches all frames. The first rule that matches applies.
struct ReplyRule {
    std::string prefix = {};
    int occurrence = 0;
    CommandReply reply = {};
};

// Changes to the answer to one packet while the unit receives an image.
struct PacketAnswer {
    enum class Handling {
        normal,  // checked, and stored when good
        ignored, // not stored; without `bytes` the answer is NAK
        cancels  // the unit leaves the transfer; without `bytes` the answer is CAN CAN
    };
    Handling handling = Handling::normal;
    std::optional<Bytes> bytes = std::nullopt; // sent instead of ACK or NAK; empty: nothing is sent
};

struct UnitOptions {
    std::string modelText = "KP42 UNIT"; // padded to 16 characters in the identification text
    std::string versionText = "V2.301";
    std::string stateText = "00";
    int sensorCount = 1;
    std::uint16_t rawVersion = 11022;                // of the amplifier
    char typeKey = '1';                              // one hexadecimal digit
    std::vector<std::string> unitFields{"01", "00"}; // the units that operations may name
    Bytes amplifierImage = Bytes(imageSize, 0xFF);   // the present firmware
    Bytes interfaceUnitImage = Bytes(imageSize, 0xFF);

    Micros replyDelay = fromMilliseconds(2);
    std::vector<ReplyRule> replies = {};
    std::optional<Micros> silentFrom = std::nullopt; // from this time on it receives and sends nothing

    // As receiver of an image.
    bool crc = true;                           // begins with 'C', else with NAK and checksums
    Micros startDelay = fromMilliseconds(100); // from the reply to the first start byte
    Micros startPeriod = fromSeconds(3);
    int startLimit = 20;                    // start bytes sent before it gives up
    Micros interByteLimit = fromSeconds(1); // after a longer pause a packet or frame is dropped
    Micros packetLimit = fromSeconds(15);   // silence between packets before it asks again with NAK
    int retryLimit = 10;                    // consecutive failures that it accepts, in both directions; then CAN CAN
    Micros packetDelay = 0;                 // from the end of a packet to its answer
    std::map<int, PacketAnswer> packetAnswers = {}; // n-th packet received (from 1), repeats and EOT included

    // As sender of its image.
    Micros sendDelay = 0; // before every packet
    Pieces sendPieces = {};
    Micros startWait = fromSeconds(60);
    Micros answerLimit = fromSeconds(10);  // silence before a packet is sent again
    bool repeatsEnd = true;                // sends EOT again on NAK
    std::map<int, Bytes> sentInstead = {}; // n-th packet sent (from 1), repeats and EOT included; empty: lost
};

} // namespace simulator
