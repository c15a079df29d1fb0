// The XMODEM receiver: one look at the port for each call. It checks neither header nor check bytes and never asks for a
// block again. A block of which a look catches fewer than 128 bytes is lost until the unit sends it again by itself; what of
// a block comes behind its first 128 bytes still finds its place.
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
constexpr std::int32_t noBlock = 6; // fewer bytes, or none while run.blockLength is above 0
constexpr std::int32_t end = 12;    // silence for 3000 ms, or the port failed; the operator has seen why
} // namespace found

// Looks at the port once. Bytes of a block are in run.blockBuffer, run.blockLength of them.
std::int32_t fncReadBlock();

// True when the image lacks bytes that the unit has sent, or tried to send.
bool imageIncomplete();

// Moves the 128 data bytes of run.blockBuffer to run.readBackImage, and the progress bar.
void subStoreBlock();

// Forgets what an earlier read has left: image, count, pieces. run.blockBuffer and run.blockLength stay.
void subResetReader();

} // namespace FirmComm
