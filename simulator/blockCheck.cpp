#include "simulator/blockCheck.h"

#include "simulator/wire.h"

#include <numeric>

namespace simulator {

// Processes eight bits at once by shifts of 4, 12 and 5 bits. It uses no table, unlike the program, so that the tests detect
// a fault in the program's table.
std::uint16_t crcOf(std::span<const std::uint8_t> bytes) {
    std::uint16_t crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc = static_cast<std::uint16_t>((crc << 8 | crc >> 8) ^ byte);
        crc = static_cast<std::uint16_t>(crc ^ (crc & 0xF0) >> 4);
        crc = static_cast<std::uint16_t>(crc ^ crc << 12);
        crc = static_cast<std::uint16_t>(crc ^ (crc & 0xFF) << 5);
    }
    return crc;
}

std::uint8_t checksumOf(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

bool packetValid(std::span<const std::uint8_t> packet, bool crc) {
    if (packet.size() != (crc ? crcPacketSize : checksumPacketSize) || (packet[1] ^ packet[2]) != 0xFF) {
        return false;
    }
    const auto data = packet.subspan(headerSize, blockSize);
    const auto check = packet.subspan(headerSize + blockSize);
    return crc ? crcOf(data) == (check[0] << 8 | check[1]) : checksumOf(data) == check[0];
}

} // namespace simulator
