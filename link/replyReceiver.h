// The receive state machine of the command frames: STX, text, ETX, block check.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <span>
#include <string>

namespace CommonComm {

// Size of replyBytes, and the indices of the fields of a reply.
constexpr std::int32_t replyCapacity = 451;
constexpr std::int32_t replyResponse = 2; // two bytes: the response code
constexpr std::int32_t replyData = 4;     // to the end

constexpr std::uint8_t stx = 0x02;
constexpr std::uint8_t etx = 0x03;

// Parses one reply. It counts every byte that is neither STX nor ETX, noise before STX included; this position alone
// decides the meaning of a byte:
//
//   1 to 4     node number and sub-address, ignored
//   5, 6       end code
//   7 to 14    hexadecimal pairs, stored: command code and response code
//   from 15    data, stored: hexadecimal pairs, or with `rawData` unchanged
//
// After STX and ETX, in any order, the next byte is the block check: the exclusive OR of all bytes but STX, ETX included.
class ReplyReceiver {
  public:
    // Stores into `replyBytes`, which it resets to replyCapacity bytes of 0.
    ReplyReceiver(Bytes& replyBytes, bool rawData);

    // Takes the bytes of one read up to a block check byte; ignores those after it. True when the block check was right:
    // the caller then discards pending input. Fails when replyBytes is full, at a pair that is not hexadecimal, and at the
    // block check of a frame that is too short.
    bool take(std::span<const std::uint8_t> bytes);

    // A block check byte has ended the frame, good or bad.
    bool frameDone() const { return frameDone_; }

    // The frame is finished, its block check right, its end code 00 or 0F.
    bool frameGood() const { return frameDone_ && !bccBad_ && endCodeGood(); }

    // Result of the exchange so far: with end code 00 or 0F the response code, empty without a good frame; without an end
    // code 9999; else 90 and the end code.
    std::string result() const;

    // The end code is 00, but there is no good frame.
    bool brokenReply() const { return endCode_ == "00" && responseCode_.empty(); }

    // State of a broken answer, for the link log.
    std::string logText() const;

  private:
    bool endCodeGood() const { return endCode_ == "00" || endCode_ == "0F"; }
    void takeText(std::uint8_t byte);
    bool takeBlockCheck(std::uint8_t byte);
    void store(std::uint8_t byte);

    Bytes& replyBytes_;
    bool rawData_;
    std::int16_t position_ = 0;
    std::int16_t lastIndex_ = -1; // of the byte stored last
    std::uint8_t highChar_ = 0;   // high digit of the pair in progress
    std::uint8_t bcc_ = 0;
    bool stxSeen_ = false;
    bool etxSeen_ = false;
    bool bodyEnded_ = false; // a block check byte was taken and the end code is not 11
    bool bccBad_ = false;
    bool frameDone_ = false;
    std::string endCode_;
    std::string responseCode_;
};

} // namespace CommonComm
