// Control bytes and sizes of the line protocol.
#pragma once

#include "base/bytes.h"
#include "base/time.h"

#include <cstddef>

namespace simulator {

inline constexpr std::uint8_t soh = 0x01;
inline constexpr std::uint8_t stx = 0x02;
inline constexpr std::uint8_t etx = 0x03;
inline constexpr std::uint8_t eot = 0x04;
inline constexpr std::uint8_t ack = 0x06;
inline constexpr std::uint8_t nak = 0x15;
inline constexpr std::uint8_t can = 0x18;
inline constexpr std::uint8_t crcStart = 'C';

inline constexpr std::size_t imageSize = 0x3C000;
inline constexpr std::size_t blockSize = 128;
inline constexpr std::size_t headerSize = 3;
inline constexpr std::size_t crcPacketSize = headerSize + blockSize + 2;
inline constexpr std::size_t checksumPacketSize = headerSize + blockSize + 1;

} // namespace simulator
