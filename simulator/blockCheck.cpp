#include "simulator/blockCheck.h"

#include "simulator/wire.h"

#include <array>
#include <numeric>

namespace simulator {

namespace {

constexpr std::array<std::uint16_t, 256> makeCrcTable() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        unsigned crc = byte << 8;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000) != 0 ? crc << 1 ^ 0x1021 : crc << 1;
        }
        table[byte] = static_cast<std::uint16_t>(crc);
    }
    return table;
}

constexpr auto crcTable = makeCrcTable();

} // namespace

std::uint16_t crcOf(std::span<const std::uint8_t> bytes) {
    std::uint16_t crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc = static_cast<std::uint16_t>(crc << 8 ^ crcTable[(crc >> 8 ^ byte) & 0xFF]);
    }
    return crc;
}

std::uint8_t checksumOf(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

bool packetAgrees(std::span<const std::uint8_t> packet, bool crc) {
    if (packet.size() != (crc ? crcPacketSize : checksumPacketSize) || (packet[1] ^ packet[2]) != 0xFF) {
        return false;
    }
    const auto data = packet.subspan(headerSize, blockSize);
    const auto check = packet.subspan(headerSize + blockSize);
    return crc ? crcOf(data) == (check[0] << 8 | check[1]) : checksumOf(data) == check[0];
}

} // namespace simulator
