#pragma once

#include "simulator/journal.h"
#include "simulator/transmitter.h"
#include "simulator/unitOptions.h"

#include <array>
#include <span>

namespace simulator {

// The unit's XMODEM receiver for 128-byte blocks. It sends 'C' or NAK until the first packet, answers each packet with ACK
// or NAK, acknowledges a repeated block without storing it, and cancels with CAN CAN at a block out of sequence. After
// noise it discards bytes until the line has been idle.
class XmodemReceiver {
  public:
    XmodemReceiver(const UnitOptions& options, Journal& journal, Transmitter& transmitter)
        : options_(options), journal_(journal), transmitter_(transmitter) {}

    // Begins a transfer. The first start byte is sent at `firstStart`.
    void start(Micros firstStart);

    // Takes bytes up to the end of a packet at most and returns their number. `bytes` is not empty.
    std::size_t receive(std::span<const std::uint8_t> bytes, Micros now);

    // Something other than a packet was received.
    void takeNoise(Micros now);

    void advance(Micros now);
    Micros due() const;

    // False while a packet is being received: an STX is then data.
    bool betweenPackets() const { return phase_ != Phase::packet; }

    // Ended by CAN of either side or because no answer came.
    bool brokenOff() const { return phase_ == Phase::brokenOff; }

    const Bytes& image() const { return image_; }

  private:
    enum class Phase { waiting, packet, purging, finished, brokenOff };
    using Answer = std::span<const std::uint8_t>;

    void takeFirst(std::uint8_t byte, Micros now);
    void sendStart(Micros now);
    void endPacket(Micros now);
    Answer checkPacket();
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
    bool packetSeen_ = false; // from then on NAK is sent instead of start bytes
    int starts_ = 0;
    int failures_ = 0; // consecutive
    int cans_ = 0;     // consecutive
    Micros lastByteAt_ = 0;
    Micros firstPacketAt_ = 0;
    Micros waitEnd_ = 0;
};

} // namespace simulator
