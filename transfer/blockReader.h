// The XMODEM receiver: each call polls the port once. It checks neither header nor check bytes and never asks for a
// block again. A block of which a poll finds fewer than 128 bytes is lost unless the unit sends it again by itself.
#pragma once

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
constexpr std::int32_t noBlock = 6; // fewer bytes, or none while shared.blockLength is above 0
constexpr std::int32_t end = 12;    // silence for 3000 ms, or the port failed; the operator has seen why
} // namespace found

// Waits while bytes of a block are still coming in, 100 ms at most, so that the poll finds the whole block. No window
// event runs.
void waitForWholeBlock();

// Polls the port once. The bytes of a block are then in shared.blockBuffer, shared.blockLength of them.
std::int32_t fncReadBlock();

// Appends the 128 data bytes of shared.blockBuffer to shared.readBackImage and moves the progress bar.
void subStoreBlock();

// True when the image lacks bytes of blocks that a poll has cut.
bool imageIncomplete();

// True when 1,920 whole blocks have arrived, no more and no fewer.
bool imageArrived();

// Shows a message if the image is incomplete.
void reportLostBlocks();

// Clears image and state of an earlier transfer. shared.blockBuffer and shared.blockLength stay.
void subResetReader();

} // namespace FirmComm
