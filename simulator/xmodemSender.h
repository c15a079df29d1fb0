#pragma once

#include "simulator/journal.h"
#include "simulator/transmitter.h"
#include "simulator/unitOptions.h"

#include <span>

namespace simulator {

// The unit's XMODEM sender for 128-byte blocks, with checksums if the transfer begins with NAK and CRC if it begins with
// 'C'. It repeats a packet after NAK or a time-out. Bytes that arrive while a packet is being sent are handled after it.
class XmodemSender {
  public:
    XmodemSender(const UnitOptions& options, Journal& journal, Transmitter& transmitter)
        : options_(options), journal_(journal), transmitter_(transmitter) {}

    // Begins a transfer of the image's whole blocks. The caller owns the image, which must outlive the transfer.
    void start(std::span<const std::uint8_t> image, Micros now);

    void receive(std::uint8_t byte, Micros now);
    void advance(Micros now);
    Micros due() const { return phase_ == Phase::ended ? never : nextAt_; }

    // Complete, cancelled, or ended because no answer came.
    bool ended() const { return phase_ == Phase::ended; }

  private:
    enum class Phase { starting, sending, waiting, ended };

    void takeRequest(std::uint8_t byte, Micros now);
    void takeAnswer(std::uint8_t byte, Micros now);
    bool takeCancel(std::uint8_t byte);
    void sendNext(Micros now);
    void sendAgain(Micros now);
    void sendPacket(Micros now);
    void buildPacket();
    void sendPiece(Micros now);

    const UnitOptions& options_;
    Journal& journal_;
    Transmitter& transmitter_;

    Phase phase_ = Phase::ended;
    std::span<const std::uint8_t> image_;
    bool crc_ = false;
    std::size_t position_ = 0; // of the image, after the present block
    bool endSent_ = false;
    Bytes packet_;
    std::span<const std::uint8_t> unsent_;
    Bytes held_;       // received while a packet was being sent
    int failures_ = 0; // consecutive
    int cans_ = 0;     // consecutive
    Micros nextAt_ = 0;
};

} // namespace simulator
