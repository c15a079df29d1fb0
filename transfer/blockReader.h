// The XMODEM receiver: each call polls the port once. It checks neither header nor check bytes and never asks for a
// block again. A block of which a poll finds fewer than 128 bytes is lost unless the unit sends it again by itself.
#pragma once

#include "base/bytes.h"

#include <cstdint>

namespace FirmComm {

// What one poll of the port has found.
namespace found {
constexpr std::int32_t nothing = 0;
constexpr std::int32_t block = 1; // 128 bytes or more
constexpr std::int32_t ack = 2;
constexpr std::int32_t nak = 3;
constexpr std::int32_t eot = 4;
constexpr std::int32_t crcRequest = 5;
constexpr std::int32_t noBlock = 6; // fewer bytes, or none while reader.blockLength is above 0
constexpr std::int32_t end = 12;    // silence for 3000 ms, or the port failed; the operator has seen why
} // namespace found

// The receiver's own variables.
struct Reader {
    Bytes blockBuffer = Bytes(1025); // bytes of the latest poll that found block data
    std::int16_t blockLength = 0;    // how many
    std::int32_t readBackCount = 0;  // bytes in shared.readBackImage
    std::int64_t lastActivityAt = 0; // clock at the last byte received or control byte sent, milliseconds

    // State of blocks of which a poll has found only a part.
    struct CutBlocks {
        bool restDue = false;        // the latest poll took a part of a block; the rest may follow
        bool lost = false;           // such a block was not stored and has not been repeated yet
        bool damaged = false;        // bytes of the image are missing
        std::uint8_t lastNumber = 0; // of the block stored last
    } cutBlocks;
};
extern Reader reader;

// Waits while bytes of a block are still coming in, 100 ms at most, so that the poll finds the whole block. No window
// event runs.
void waitForWholeBlock();

// Polls the port once. The bytes of a block are then in reader.blockBuffer, reader.blockLength of them.
std::int32_t fncReadBlock();

// Appends the 128 data bytes of reader.blockBuffer to shared.readBackImage and moves the progress bar.
void subStoreBlock();

// True when the image lacks bytes of blocks that a poll has cut.
bool imageIncomplete();

// True when 1,920 whole blocks have arrived, no more and no fewer.
bool imageArrived();

// Shows a message if the image is incomplete.
void reportLostBlocks();

// Clears image and state of an earlier transfer. reader.blockBuffer and reader.blockLength stay.
void subResetReader();

} // namespace FirmComm
