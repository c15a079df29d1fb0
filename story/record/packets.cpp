#include "story/record/packets.h"

#include "story/record/text.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace story {

namespace {

constexpr std::uint8_t etx = 0x03;
constexpr std::uint8_t soh = 0x01;
constexpr std::size_t headSize = 3;
constexpr std::size_t blockSize = 128;
constexpr std::size_t mostMissing = 16;       // blocks in a row; more of them are another transfer
constexpr std::string_view address = "00000"; // before the text of a command
constexpr std::string_view hexDigits = "0123456789ABCDEF";

std::uint8_t blockCheck(std::span<const std::uint8_t> text) {
    std::uint8_t check = etx;
    for (const std::uint8_t byte : text) {
        check ^= byte;
    }
    return check;
}

} // namespace

bool frameComplete(std::span<const std::uint8_t> frame) {
    return frame.size() > 2 && frame[frame.size() - 2] == etx;
}

std::optional<std::string> commandText(std::span<const std::uint8_t> frame) {
    if (frame.size() < address.size() + 3 || frame[0] != frameStart || !frameComplete(frame)) {
        return std::nullopt;
    }
    const std::string text(frame.begin() + 1, frame.end() - 2);
    const bool plain =
        std::ranges::all_of(text, [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); });
    if (!plain || !text.starts_with(address) || frame.back() != blockCheck(frame.subspan(1, text.size()))) {
        return std::nullopt;
    }
    return text.substr(address.size());
}

bool BlockNames::addName(std::string& line, std::span<const std::uint8_t> bytes, std::string_view image) {
    const std::size_t checkSize = bytes.size() - std::min(bytes.size(), headSize + blockSize);
    if ((checkSize != 1 && checkSize != 2) || bytes[0] != soh || (bytes[1] ^ bytes[2]) != 0xFF) {
        return false;
    }
    const std::size_t ahead = (bytes[1] - last_) & 0xFF;
    const std::size_t next = last_ + ahead;
    for (const std::size_t number : {ahead <= mostMissing ? next : bytes[1], next}) {
        if (number > 0 && number * blockSize <= image.size() &&
            std::memcmp(&image[(number - 1) * blockSize], &bytes[headSize], blockSize) == 0) {
            last_ = number;
            line += "block ";
            line += std::to_string(number);
            line += ' ';
            for (const std::uint8_t byte : bytes.last(checkSize)) {
                line += hexDigits[byte >> 4];
                line += hexDigits[byte & 0xF];
            }
            return true;
        }
    }
    return false;
}

Bytes blockOf(std::string_view numberAndCheck, std::string_view image) {
    const std::size_t blank = numberAndCheck.find(' ');
    const std::size_t number = std::stoul(std::string(numberAndCheck.substr(0, blank)));
    if (number == 0 || number * blockSize > image.size()) {
        throw std::invalid_argument("No such block: " + std::string(numberAndCheck));
    }
    const auto low = static_cast<std::uint8_t>(number);
    Bytes bytes{soh, low, static_cast<std::uint8_t>(low ^ 0xFF)};
    for (const char byte : image.substr((number - 1) * blockSize, blockSize)) {
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    for (std::size_t at = blank + 1; blank != std::string_view::npos && at + 1 < numberAndCheck.size(); at += 2) {
        bytes.push_back(hexByte(numberAndCheck.substr(at)));
    }
    return bytes;
}

} // namespace story
