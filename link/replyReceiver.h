// The receive state machine of the command frames: STX, text, ETX, block check.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <span>
#include <string>

namespace CommonComm {

// Places of replyBytes, and where in it the fields of a reply stand.
constexpr std::int32_t replyCapacity = 451;
constexpr std::int32_t replyResponse = 2; // two bytes: the response code
constexpr std::int32_t replyData = 4;     // to the end

constexpr std::uint8_t stx = 0x02;
constexpr std::uint8_t etx = 0x03;

// Reads one reply. It counts a position over every byte that is neither STX nor ETX, noise ahead of STX included, and
// the position alone decides what a byte is:
//
//   1 to 4     node number and sub-address, not looked at
//   5, 6       end code
//   7 to 14    hexadecimal pairs, stored: command code and response code
//   15 onward  data: hexadecimal pairs, or as they come with `rawData`, stored
//
// After STX and ETX, in whatever order they came, the next byte is the block check: the exclusive OR of all bytes
// but STX up to and with ETX.
class ReplyReceiver {
  public:
    // Stores into `replyBytes`, which it re-creates with replyCapacity bytes of 0.
    ReplyReceiver(Bytes& replyBytes, bool rawData);

    // Takes the bytes of one read up to a block check byte; what stands after that one is not looked at. True when the
    // block check was right, so that all else that has come is to be thrown away. Fails when there is no room left to
    // store, at a pair that is not hexadecimal, and at the block check of a frame that stored too little to be cut or
    // to hold a response code.
    bool take(std::span<const std::uint8_t> bytes);

    // A block check byte has ended the frame, good or bad.
    bool frameDone() const { return frameDone_; }

    // The frame is done, its block check right, its end code 00 or 0F.
    bool frameGood() const { return frameDone_ && !bccBad_ && answered(); }

    // Result of the exchange as things stand: the response code of an answer, empty as long as no good frame stands;
    // 9999 without an end code; else 90 and the end code.
    std::string result() const;

    // The end code says that all is well, but no good frame came of it.
    bool brokenAnswer() const { return endCode_ == "00" && responseCode_.empty(); }

    // State of a broken answer as the link log tells it.
    std::string logText() const;

  private:
    bool answered() const { return endCode_ == "00" || endCode_ == "0F"; }
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
    bool bodyEnded_ = false; // a block check byte was taken, in a frame with another end code than 11
    bool bccBad_ = false;
    bool frameDone_ = false;
    std::string endCode_;
    std::string responseCode_;
};

} // namespace CommonComm
