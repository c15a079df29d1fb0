#pragma once

#include "simulator/journal.h"
#include "simulator/transmitter.h"
#include "simulator/unitOptions.h"

#include <array>
#include <optional>
#include <span>

namespace simulator {

// The unit's XMODEM receiver, 128-byte blocks, after the rules of Ward Christensen and the CRC of John Byrns: it asks
// with 'C' or NAK until the first packet, answers each with ACK or NAK, acknowledges a repeated block without storing
// it, and gives up with CAN CAN on a block out of sequence. Noise is let pass until the line has been quiet.
class XmodemReceiver {
  public:
    XmodemReceiver(const UnitOptions& options, Journal& journal, Transmitter& transmitter)
        : options_(options), journal_(journal), transmitter_(transmitter) {}

    // Begins a transfer. The first start byte goes out at `firstStart`.
    void start(Micros firstStart);

    // Takes bytes up to the end of a packet at most and gives how many it took. `bytes` is not empty.
    std::size_t receive(std::span<const std::uint8_t> bytes, Micros now);

    // The line brought something that was no packet.
    void hearNoise(Micros now);

    void advance(Micros now);
    std::optional<Micros> due() const;

    // False while a packet is on its way in, so that an STX is data.
    bool betweenPackets() const { return phase_ != Phase::packet; }

    // Broken off, by either side or for want of an answer.
    bool brokenOff() const { return phase_ == Phase::brokenOff; }

    const Bytes& image() const { return image_; }

  private:
    enum class Phase { waiting, packet, purging, finished, brokenOff };
    using Answer = std::span<const std::uint8_t>;

    void hearFirst(std::uint8_t byte, Micros now);
    void sendStart(Micros now);
    void endPacket(Micros now);
    Answer judgePacket();
    Answer acceptBlock();
    Answer acceptEnd();
    Answer refuse();
    Answer askAgain();
    Answer breakOff();
    void waitForPacket(Micros now);

    const UnitOptions& options_;
    Journal& journal_;
    Transmitter& transmitter_;

    Phase phase_ = Phase::brokenOff;
    std::array<std::uint8_t, crcPacketSize> packet_{};
    std::size_t packetFill_ = 0;
    Bytes image_;
    bool packetSeen_ = false; // since then start bytes give way to NAK
    int starts_ = 0;
    int failures_ = 0; // in a row
    int cans_ = 0;     // in a row
    Micros lastByteAt_ = 0;
    Micros firstPacketAt_ = 0;
    Micros waitEnd_ = 0;
};

} // namespace simulator
