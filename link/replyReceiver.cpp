#include "link/replyReceiver.h"

#include "base/checked.h"
#include "base/failure.h"
#include "base/text.h"

namespace CommonComm {

namespace {

constexpr std::int16_t firstEndCode = 5;
constexpr std::int16_t firstStored = 7;
constexpr std::int16_t firstData = 15;

std::uint8_t hexPair(std::uint8_t high, std::uint8_t low) {
    const auto highDigit = hexDigit(static_cast<char>(high));
    const auto lowDigit = hexDigit(static_cast<char>(low));
    if (!highDigit || !lowDigit) {
        throw Failure(failureNumber::typeMismatch, "The reply holds no hexadecimal digits.");
    }
    return static_cast<std::uint8_t>(*highDigit << 4 | *lowDigit);
}

const char* word(bool value) {
    return value ? "True" : "False";
}

} // namespace

ReplyReceiver::ReplyReceiver(Bytes& replyBytes, bool rawData) : replyBytes_(replyBytes), rawData_(rawData) {
    replyBytes_.assign(replyCapacity, 0);
}

bool ReplyReceiver::take(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (stxSeen_ && etxSeen_) {
            return takeBlockCheck(byte);
        }
        if (byte == stx) {
            stxSeen_ = true;
        } else if (byte == etx) {
            bcc_ ^= byte;
            etxSeen_ = true;
        } else {
            takeText(byte);
        }
    }
    return false;
}

void ReplyReceiver::takeText(std::uint8_t byte) {
    bcc_ ^= byte;
    position_ = narrow<std::int16_t>(std::int32_t{position_} + 1);
    if (position_ < firstEndCode) {
        return;
    }
    if (position_ < firstStored) {
        endCode_ += static_cast<char>(byte);
    } else if (rawData_ && position_ >= firstData) {
        store(byte);
    } else if (position_ % 2 != 0) {
        highChar_ = byte;
    } else {
        store(hexPair(highChar_, byte));
    }
}

void ReplyReceiver::store(std::uint8_t byte) {
    at(replyBytes_, lastIndex_ + 1) = byte;
    ++lastIndex_;
}

bool ReplyReceiver::takeBlockCheck(std::uint8_t byte) {
    if (endCode_ == "11") {
        frameDone_ = true;
        return false;
    }
    bodyEnded_ = true;
    if (lastIndex_ < 0) {
        throw Failure(failureNumber::outOfRange, "The reply holds nothing.");
    }
    replyBytes_.resize(static_cast<std::size_t>(lastIndex_) + 1);
    frameDone_ = true;
    if (byte != bcc_) {
        bccBad_ = true;
        return false;
    }
    // A frame stays bad even if a later byte matches.
    if (endCodeGood() && !bccBad_) {
        responseCode_ = hexText(at(replyBytes_, replyResponse), 2) + hexText(at(replyBytes_, replyResponse + 1), 2);
    }
    return true;
}

std::string ReplyReceiver::result() const {
    if (endCodeGood()) {
        return responseCode_;
    }
    return endCode_.empty() ? "9999" : "90" + endCode_;
}

std::string ReplyReceiver::logText() const {
    std::string text = std::string("[NG2] S:") + word(stxSeen_) + " E:" + word(etxSeen_) + " B:" + word(bodyEnded_) +
                       " P:" + word(bccBad_) + " U:" + std::to_string(replyBytes_.size() - 1) + " A:";
    for (std::int32_t index = 0; index <= lastIndex_; ++index) {
        text += hexText(at(replyBytes_, index), 2) + ' ';
    }
    return text;
}

} // namespace CommonComm
