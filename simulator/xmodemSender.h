#pragma once

#include "simulator/journal.h"
#include "simulator/transmitter.h"
#include "simulator/unitOptions.h"

#include <optional>
#include <span>

namespace simulator {

// The unit's XMODEM sender, 128-byte blocks, with checksums when asked with NAK and CRC when asked with 'C'. A packet
// is sent again on NAK and on silence. What arrives while a packet is still going out is looked at after it.
class XmodemSender {
  public:
    XmodemSender(const UnitOptions& options, Journal& journal, Transmitter& transmitter)
        : options_(options), journal_(journal), transmitter_(transmitter) {}

    // Begins a transfer of the image's whole blocks. The image stays the caller's and must outlive the transfer.
    void start(std::span<const std::uint8_t> image, Micros now);

    void receive(std::uint8_t byte, Micros now);
    void advance(Micros now);
    std::optional<Micros> due() const;

    // Finished, broken off, or given up for want of an answer.
    bool ended() const { return phase_ == Phase::ended; }

  private:
    enum class Phase { starting, sending, waiting, ended };

    void hearRequest(std::uint8_t byte, Micros now);
    void hearAnswer(std::uint8_t byte, Micros now);
    bool hearCancel(std::uint8_t byte);
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
    Bytes held_;       // heard while a packet was going out
    int failures_ = 0; // in a row
    int cans_ = 0;     // in a row
    Micros nextAt_ = 0;
};

} // namespace simulator
