#include "platform/simulated/wireRecord.h"

#include "base/text.h"
#include "simulator/wire.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace platform {

namespace {

constexpr std::size_t longestShown = 48;
constexpr std::size_t shownAtStart = 8;
constexpr std::size_t shownAtEnd = 4;

struct ControlName {
    std::uint8_t byte;
    std::string_view name;
};
constexpr std::array<ControlName, 7> controlNames{{
    {simulator::soh, "SOH"},
    {simulator::stx, "STX"},
    {simulator::etx, "ETX"},
    {simulator::eot, "EOT"},
    {simulator::ack, "ACK"},
    {simulator::nak, "NAK"},
    {simulator::can, "CAN"},
}};

void addHexadecimal(std::string& text, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        text += ' ' + hexText(byte, 2);
    }
}

std::string_view controlName(std::uint8_t byte) {
    const auto at = std::ranges::find(controlNames, byte, &ControlName::byte);
    return at == controlNames.end() ? std::string_view{} : at->name;
}

// Control characters by name, printable text in quotes, the rest in hexadecimal.
void addShort(std::string& text, std::span<const std::uint8_t> bytes) {
    bool quoted = false;
    for (const std::uint8_t byte : bytes) {
        const bool printable = byte >= 0x20 && byte <= 0x7E;
        if (printable != quoted) {
            text += printable ? " \"" : "\"";
            quoted = printable;
        }
        if (printable) {
            text += static_cast<char>(byte);
        } else if (const std::string_view name = controlName(byte); !name.empty()) {
            text += ' ' + std::string(name);
        } else {
            addHexadecimal(text, {&byte, 1});
        }
    }
    text += quoted ? "\"" : "";
}

void addLong(std::string& text, std::span<const std::uint8_t> bytes) {
    addHexadecimal(text, bytes.first(shownAtStart));
    text += " (" + std::to_string(bytes.size() - shownAtStart - shownAtEnd) + " more)";
    addHexadecimal(text, bytes.last(shownAtEnd));
}

bool continues(const WireEntry& entry, const WireEntry& before) {
    return entry.at == before.at && entry.direction == before.direction && !entry.altered && !before.altered;
}

void addEntry(std::string& text, const WireEntry& entry) {
    std::array<char, 64> head{};
    std::snprintf(head.data(), head.size(), "%13.6f %s%s", static_cast<double>(entry.at) / 1e6,
                  entry.direction == Direction::toUnit ? "program" : "unit", entry.altered ? " altered:" : ":");
    text += head.data();
    text += wireText(entry.bytes) + '\n';
}

} // namespace

std::string wireText(std::span<const std::uint8_t> bytes) {
    std::string text;
    if (bytes.empty()) {
        text = " nothing";
    } else if (bytes.size() <= longestShown) {
        addShort(text, bytes);
    } else {
        addLong(text, bytes);
    }
    return text;
}

void WireRecord::keep(std::size_t limit) {
    limit_ = limit;
    while (entries_.size() > limit_) {
        entries_.pop_front();
    }
}

void WireRecord::add(Micros at, Direction direction, std::span<const std::uint8_t> bytes, bool altered) {
    if (limit_ == 0) {
        return;
    }
    if (entries_.size() == limit_) {
        entries_.pop_front();
    }
    entries_.push_back({at, direction, altered, Bytes(bytes.begin(), bytes.end())});
}

Bytes WireRecord::sent(Direction direction) const {
    Bytes bytes;
    for (const WireEntry& entry : entries_) {
        if (entry.direction == direction && !entry.altered) {
            bytes.insert(bytes.end(), entry.bytes.begin(), entry.bytes.end());
        }
    }
    return bytes;
}

std::string WireRecord::text() const {
    std::string text;
    for (auto next = entries_.begin(); next != entries_.end();) {
        WireEntry joined = *next;
        for (++next; next != entries_.end() && continues(*next, joined); ++next) {
            joined.bytes.insert(joined.bytes.end(), next->bytes.begin(), next->bytes.end());
        }
        addEntry(text, joined);
    }
    return text;
}

} // namespace platform
