// The check bytes of a block. The code is independent of the program's, so that neither hides a fault of the other.
#pragma once

#include <cstdint>
#include <span>

namespace simulator {

// The CRC of XMODEM: polynomial 0x1021, start value 0, most significant bit first.
std::uint16_t crcOf(std::span<const std::uint8_t> bytes);

// The low eight bits of the sum of the bytes.
std::uint8_t checksumOf(std::span<const std::uint8_t> bytes);

// True when the packet (SOH, number, complement, 128 bytes, CRC or checksum) is complete and its checks are right.
bool packetValid(std::span<const std::uint8_t> packet, bool crc);

} // namespace simulator
