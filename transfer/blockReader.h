// The XMODEM receiver: one look at the port for each call. It checks neither header nor check bytes and never asks for
// a block again. A block of which a look catches fewer than 128 bytes is lost until the unit sends it again by itself.
#pragma once

#include <cstdint>

namespace FirmComm {

// What one look at the port has found.
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

// Holds a poll back while the bytes of a block are still coming in, for 100 ms at the most, so that it finds the block
// whole. No window event runs.
void waitForWholeBlock();

// Looks at the port once. Bytes of a block are in shared.blockBuffer, shared.blockLength of them.
std::int32_t fncReadBlock();

// Moves the 128 data bytes of shared.blockBuffer to shared.readBackImage, and the progress bar.
void subStoreBlock();

// True when bytes of blocks caught in the middle are missing in the image.
bool imageIncomplete();

// Tells the operator when that is so.
void tellLostBlocks();

// Forgets what an earlier transfer has left of image and blocks. shared.blockBuffer and shared.blockLength stay.
void subResetReader();

} // namespace FirmComm
