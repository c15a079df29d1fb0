// What the reply receiver must make of a reply, worked out from all reads at once by the layout of the frame.
#pragma once

#include "base/failure.h"
#include "link/replyReceiver.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace replyOracle {

using Reads = std::vector<Bytes>;

struct Outcome {
    bool failed = false; // the rest, but for the stored bytes, is then of no matter
    bool done = false;
    bool good = false;
    bool clearsInput = false;
    bool broken = false;
    std::string result = {};
    std::string log = {}; // of a broken answer
    Bytes stored = {};
    bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    out << (outcome.failed ? "failed"
            : outcome.done ? "done"
                           : "open")
        << (outcome.good ? " good" : "") << (outcome.clearsInput ? " clears" : "") << " \"" << outcome.result << "\" "
        << outcome.log << " stored";
    for (const std::uint8_t byte : outcome.stored) {
        out << ' ' << static_cast<int>(byte);
    }
    return out;
}

// What the receiver itself makes of it. As in an exchange, a good frame ends the reading.
inline Outcome received(const Reads& reads, bool rawData) {
    Outcome outcome;
    CommonComm::ReplyReceiver receiver(outcome.stored, rawData);
    try {
        for (std::size_t next = 0; next < reads.size() && !receiver.frameGood(); ++next) {
            outcome.clearsInput |= receiver.take(reads[next]);
        }
    } catch (const Failure&) {
        return {.failed = true, .stored = outcome.stored};
    }
    outcome.done = receiver.frameDone();
    outcome.good = receiver.frameGood();
    outcome.broken = receiver.brokenAnswer();
    outcome.result = receiver.result();
    outcome.log = outcome.broken ? receiver.logText() : "";
    return outcome;
}

namespace detail {

// The frame up to its ETX, and what is taken for a block check after it: the next byte, and the first one of every
// read after that.
struct Parts {
    std::string text; // without STX and ETX
    Bytes blockChecks;
    std::uint8_t check = 0; // the right one
    bool stx = false;
    bool etx = false;
};

inline Parts partsOf(const Reads& reads) {
    Parts parts;
    for (const Bytes& read : reads) {
        for (const std::uint8_t byte : read) {
            if (parts.stx && parts.etx) {
                parts.blockChecks.push_back(byte);
                break;
            }
            parts.stx |= byte == 2;
            parts.etx |= byte == 3;
            parts.check ^= byte == 2 ? 0 : byte;
            parts.text += byte == 2 || byte == 3 ? "" : std::string(1, static_cast<char>(byte));
        }
    }
    return parts;
}

// Stores the text after the end code; false when it cannot.
inline bool store(const std::string& text, bool rawData, Bytes& stored) {
    constexpr std::string_view digits = "0123456789ABCDEFabcdef";
    for (std::size_t at = 6; at < text.size();) {
        const bool raw = rawData && at >= 14;
        const std::string piece = text.substr(at, raw ? 1 : 2);
        at += piece.size();
        if (!raw && piece.size() < 2) {
            return true;
        }
        if (stored.size() == 451 || (!raw && piece.find_first_not_of(digits) != std::string::npos)) {
            return false;
        }
        stored.push_back(raw ? static_cast<std::uint8_t>(piece[0])
                             : static_cast<std::uint8_t>(std::stoi(piece, nullptr, 16)));
    }
    return true;
}

inline std::string hexadecimal(const Bytes& bytes, const char* separator) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        text += std::string(digits) + separator;
    }
    return text;
}

} // namespace detail

inline Outcome expected(const Reads& reads, bool rawData) {
    const detail::Parts parts = detail::partsOf(reads);
    const std::string endCode = parts.text.substr(std::min<std::size_t>(parts.text.size(), 4), 2);
    const bool answers = endCode == "00" || endCode == "0F";
    const bool done = !parts.blockChecks.empty();
    const bool cut = done && endCode != "11";
    const bool right = cut && parts.blockChecks[0] == parts.check;

    Bytes stored;
    const bool storedAll = detail::store(parts.text, rawData, stored);
    Outcome outcome{.stored = stored};
    if (!cut || !storedAll || stored.empty()) {
        outcome.stored.resize(451);
    }
    if (!storedAll || (cut && stored.empty()) || (right && answers && stored.size() < 4)) {
        outcome.failed = true;
        return outcome;
    }
    outcome.done = done;
    outcome.good = right && answers;
    outcome.clearsInput = cut && std::ranges::count(parts.blockChecks, parts.check) > 0;
    outcome.broken = endCode == "00" && !right;
    if (answers) {
        outcome.result = right ? detail::hexadecimal({stored[2], stored[3]}, "") : "";
    } else {
        outcome.result = endCode.empty() ? "9999" : "90" + endCode;
    }
    if (outcome.broken) {
        const auto word = [](bool value) { return value ? "True" : "False"; };
        outcome.log = std::string("[NG2] S:") + word(parts.stx) + " E:" + word(parts.etx) + " B:" + word(cut) +
                      " P:" + word(cut) + " U:" + std::to_string(outcome.stored.size() - 1) +
                      " A:" + detail::hexadecimal(stored, " ");
    }
    return outcome;
}

} // namespace replyOracle
