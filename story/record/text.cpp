#include "story/record/text.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace story {

namespace {

constexpr std::size_t longestShown = 48;
constexpr std::size_t rowBytes = 96;
constexpr std::size_t shortestRun = 64;
constexpr std::string_view digits =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz!#$%&()*+-;<=>?@^_`{|}~";

struct ControlName {
    std::uint8_t byte;
    std::string_view name;
};
constexpr std::array<ControlName, 7> controlNames{
    {{0x01, "SOH"}, {0x02, "STX"}, {0x03, "ETX"}, {0x04, "EOT"}, {0x06, "ACK"}, {0x15, "NAK"}, {0x18, "CAN"}}};

bool printable(std::uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F;
}

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Number of bytes of the UTF-8 character at the beginning of a text; 0 if there is none.
std::size_t characterLength(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    const std::string_view rest = text.substr(1, std::max<std::size_t>(length, 1) - 1);
    const bool whole =
        rest.size() + 1 == length && std::ranges::all_of(rest, [](char c) { return (c & 0xC0) == 0x80; });
    return whole ? length : 0;
}

bool isText(std::string_view content) {
    const auto odd = [](unsigned char c) { return c < ' ' && c != '\r' && c != '\n' && c != '\t'; };
    return std::ranges::none_of(content, odd) && content.find('\n') != std::string_view::npos;
}

[[noreturn]] void refuse(std::string_view text) {
    throw std::invalid_argument("This cannot be read: " + std::string(text));
}

} // namespace

std::uint8_t hexByte(std::string_view text) {
    const auto high = text.size() < 2 ? std::nullopt : hexDigit(text[0]);
    const auto low = text.size() < 2 ? std::nullopt : hexDigit(text[1]);
    if (!high || !low) {
        refuse(text);
    }
    return static_cast<std::uint8_t>(*high << 4 | *low);
}

std::string escaped(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const auto byte = static_cast<std::uint8_t>(text[0]);
        if (byte == '\n' || byte == '\\') {
            line += byte == '\n' ? "\\n" : "\\\\";
        } else if (length == 0 || byte < 0x20 || byte == 0x7F) {
            line += '\\' + hexText(byte, 2);
        } else {
            line += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return line;
}

std::string unescaped(std::string_view line) {
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line[at] != '\\') {
            text += line[at];
        } else if (const char next = at + 1 < line.size() ? line[at + 1] : '\0'; next == 'n' || next == '\\') {
            text += next == 'n' ? '\n' : next;
            ++at;
        } else {
            text += static_cast<char>(hexByte(line.substr(at + 1)));
            at += 2;
        }
    }
    return text;
}

std::string bytesText(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > longestShown) {
        return '=' + base85(bytes);
    }
    std::string text;
    bool quoted = false;
    for (const std::uint8_t byte : bytes) {
        const bool shown = printable(byte) && byte != '"';
        if (shown != quoted) {
            text += shown && !text.empty() ? " \"" : "\"";
            quoted = shown;
        }
        if (shown) {
            text += static_cast<char>(byte);
            continue;
        }
        const auto named = std::ranges::find(controlNames, byte, &ControlName::byte);
        text += text.empty() ? "" : " ";
        text += named == controlNames.end() ? '\\' + hexText(byte, 2) : std::string(named->name);
    }
    return text + (quoted ? "\"" : "");
}

Bytes bytesOfText(std::string_view text) {
    if (text.starts_with('=')) {
        return bytesOfBase85(text.substr(1));
    }
    Bytes bytes;
    while (!text.empty()) {
        if (text[0] == ' ') {
            text.remove_prefix(1);
            continue;
        }
        const bool quoted = text[0] == '"';
        const std::size_t end = quoted ? text.find('"', 1) : std::min(text.find(' '), text.size());
        if (end == std::string_view::npos) {
            refuse(text);
        }
        const std::string_view word = text.substr(quoted ? 1 : 0, end - (quoted ? 1 : 0));
        const auto named = std::ranges::find(controlNames, word, &ControlName::name);
        if (quoted) {
            bytes.insert(bytes.end(), word.begin(), word.end());
        } else {
            bytes.push_back(named != controlNames.end() ? named->byte : hexByte(word.substr(1)));
        }
        text.remove_prefix(end + (quoted ? 1 : 0));
    }
    return bytes;
}

std::string rowsOf(std::string_view content) {
    std::string rows;
    const bool text = isText(content);
    while (!content.empty()) {
        const std::size_t run = std::min(content.find_first_not_of(content[0]), content.size());
        std::size_t length = std::min(rowBytes, content.size());
        if (text) {
            length = std::min(content.find('\n'), content.size() - 1) + 1;
            rows += " \"" + escaped(content.substr(0, length));
        } else if (run >= shortestRun) {
            length = run;
            rows += " :" + hexText(static_cast<std::uint8_t>(content[0]), 2) + ' ' + std::to_string(run);
        } else {
            rows += ' ' + base85(asBytes(content.substr(0, length)));
        }
        rows += '\n';
        content.remove_prefix(length);
    }
    return rows;
}

std::string contentOfRows(std::string_view rows) {
    std::string content;
    while (!rows.empty()) {
        const std::size_t end = std::min(rows.find('\n'), rows.size());
        const std::string_view row = rows.substr(1, end - 1);
        if (row.starts_with('"')) {
            content += unescaped(row.substr(1));
        } else if (row.starts_with(':')) {
            content.append(std::stoul(std::string(row.substr(3))), static_cast<char>(hexByte(row.substr(1))));
        } else {
            const Bytes bytes = bytesOfBase85(row);
            content.append(bytes.begin(), bytes.end());
        }
        rows.remove_prefix(std::min(end + 1, rows.size()));
    }
    return content;
}

std::string base85(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() * 5 / 4 + 5);
    for (std::size_t start = 0; start < bytes.size(); start += 4) {
        std::uint32_t word = 0;
        for (std::size_t at = start; at < start + 4; ++at) {
            word = word << 8 | (at < bytes.size() ? bytes[at] : 0);
        }
        std::array<char, 5> group{};
        for (auto digit = group.rbegin(); digit != group.rend(); ++digit, word /= 85) {
            *digit = digits[word % 85];
        }
        text.append(group.data(), std::min<std::size_t>(bytes.size() - start + 1, group.size()));
    }
    return text;
}

Bytes bytesOfBase85(std::string_view text) {
    Bytes bytes;
    for (; !text.empty(); text.remove_prefix(std::min<std::size_t>(5, text.size()))) {
        const std::size_t count = std::min<std::size_t>(5, text.size());
        std::uint64_t word = 0;
        for (std::size_t at = 0; at < 5; ++at) {
            const std::size_t digit = at < count ? digits.find(text[at]) : 84;
            if (digit == std::string_view::npos) {
                refuse(text);
            }
            word = word * 85 + digit;
        }
        for (std::size_t at = 0; at + 1 < count; ++at) {
            bytes.push_back(static_cast<std::uint8_t>(word >> (24 - 8 * at)));
        }
    }
    return bytes;
}

std::string digestOf(std::span<const std::uint8_t> bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::uint8_t byte : bytes) {
        hash = (hash ^ byte) * 0x100000001B3;
    }
    return hexText(static_cast<std::uint32_t>(hash >> 32), 8) + hexText(static_cast<std::uint32_t>(hash), 8);
}

} // namespace story
