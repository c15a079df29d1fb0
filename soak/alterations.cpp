#include "soak/alterations.h"

#include "simulator/frame.h"

#include <array>
#include <string_view>

namespace soak {

namespace {

// Places in the text of a reply.
constexpr std::size_t endCodeAt = 4;
constexpr std::size_t commandCodeAt = 6;
constexpr std::size_t resultCodeAt = 10;
constexpr std::size_t dataAt = 14;

std::ptrdiff_t somePlace(const Bytes& bytes, Random& random) {
    return random.below(std::ssize(bytes));
}

std::string hexDigits(int count, Random& random) {
    std::string text;
    for (; count > 0; --count) {
        text += "0123456789ABCDEF"[random.below(16)];
    }
    return text;
}

void changeField(Bytes& bytes, std::size_t offset, std::string_view value) {
    if (bytes.size() < offset + value.size() + 3 || bytes.front() != simulator::stx) {
        return;
    }
    std::string text(bytes.begin() + 1, bytes.end() - 2);
    text.replace(offset, value.size(), value);
    bytes = simulator::frameOf(text);
}

} // namespace

void flipBits(Bytes& bytes, Random& random) {
    for (std::int64_t flips = random.spread(1, 4); flips > 0; --flips) {
        bytes[static_cast<std::size_t>(somePlace(bytes, random))] ^= static_cast<std::uint8_t>(1 << random.below(8));
    }
}

void loseBytes(Bytes& bytes, Random& random) {
    for (std::int64_t lost = random.spread(1, 8); lost > 0 && !bytes.empty(); --lost) {
        bytes.erase(bytes.begin() + somePlace(bytes, random));
    }
}

void doubleByte(Bytes& bytes, Random& random) {
    const std::ptrdiff_t place = somePlace(bytes, random);
    bytes.insert(bytes.begin() + place, bytes[static_cast<std::size_t>(place)]);
}

void insertBytes(Bytes& bytes, Random& random) {
    for (std::int64_t inserted = random.spread(1, 4); inserted > 0; --inserted) {
        const std::ptrdiff_t place = random.between(0, std::ssize(bytes));
        bytes.insert(bytes.begin() + place, strayByte(random));
    }
}

void cutShort(Bytes& bytes, Random& random) {
    bytes.resize(static_cast<std::size_t>(somePlace(bytes, random)));
}

void hideInSum(Bytes& bytes, Random& random) {
    if (bytes.size() < simulator::checksumPacketSize || bytes.front() != simulator::soh) {
        return;
    }
    const auto place = static_cast<std::size_t>(random.below(simulator::blockSize - 1));
    const auto change = static_cast<std::uint8_t>(random.between(1, 255));
    std::uint8_t& up = bytes[simulator::headerSize + place];
    std::uint8_t& down = bytes[simulator::headerSize + place + 1];
    up = static_cast<std::uint8_t>(up + change);
    down = static_cast<std::uint8_t>(down - change);
}

void changeCommandCode(Bytes& bytes, Random& random) {
    changeField(bytes, commandCodeAt, hexDigits(4, random));
}

void changeResultCode(Bytes& bytes, Random& random) {
    changeField(bytes, resultCodeAt, someResultCode(random));
}

void changeData(Bytes& bytes, Random& random) {
    changeField(bytes, dataAt + static_cast<std::size_t>(random.below(12)), hexDigits(1, random));
}

void changeEndCode(Bytes& bytes, Random& random) {
    constexpr std::array<std::string_view, 6> codes{"00", "0F", "0f", "11", "13", "FF"};
    changeField(bytes, endCodeAt, random.pick(codes));
}

std::uint8_t strayByte(Random& random) {
    using namespace simulator;
    constexpr std::array<std::uint8_t, 8> controls{soh, stx, etx, eot, ack, nak, can, crcStart};
    return random.chance(70) ? random.pick(controls) : static_cast<std::uint8_t>(random.below(256));
}

std::string someResultCode(Random& random) {
    constexpr std::array<std::string_view, 18> codes{"0000", "0101", "1001", "1002", "1004", "1101",
                                                     "1103", "1104", "2203", "2204", "2205", "1111",
                                                     "1234", "1234", "2222", "3333", "4444", "5555"};
    return random.chance(85) ? std::string(random.pick(codes)) : hexDigits(4, random);
}

} // namespace soak
