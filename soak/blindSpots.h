// What the protocols cannot see, and what of it a session has really met on the wire.
#pragma once

#include "simulator/unit.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace soak {

// What can pass without anybody's fault, and the evidence that it has passed in this very transfer; without that the
// invariants bite.
enum class BlindSpot {
    // The unit stores a block whose check bytes fit its damaged data. The data that the unit holds stand in a damaged
    // packet that reached it.
    agreeingBlock,
    // The tool takes a damaged or stray byte, or the answer to an earlier sending, for the ACK of what the unit lacks.
    // It read ACK while the unit had not accepted so much, after a touch of the line or a packet sent again.
    unearnedAck,
    // The tool's receiver compares nothing and stores 128 bytes of every block as they come, a late reply ahead of it
    // too. Those bytes reached the tool, at this place of the transfer.
    storedDamage,
    // The tool's receiver takes what begins with EOT for the end of the image. Such bytes reached the tool twice, and
    // the image is zero from there on.
    unseenEnd,
    // The tool's receiver stores a block that the unit sends a second time once more. The block reached the tool a
    // second time.
    repeatedBlock,
};

// In the order of BlindSpot.
constexpr std::array<std::string_view, 5> blindSpotNames{
    "damaged block with an agreeing check",
    "ACK not earned",
    "damaged block stored",
    "end that was none",
    "repeated block stored",
};

// One image on its way into the unit.
class WriteAccount {
  public:
    // The operation "51" goes out.
    void begin(const simulator::Unit& unit, bool disturbed);

    // A packet of the tool begins; gives what is wrong with it, empty when all is right.
    std::string packetSent(std::span<const std::uint8_t> packet, const Bytes& image);

    // What the line has made of bytes.
    void passed(bool toUnit, std::span<const std::uint8_t> sent, std::span<const std::uint8_t> arrived, bool late);
    // Something else has touched the line.
    void disturb() { disturbed_ = true; }

    // The tool takes a byte from the unit. Gives what is wrong, empty when all is right.
    std::string byteTaken(std::uint8_t byte, const simulator::Unit& unit);

    // The last byte that the tool took was the ACK of EOT.
    bool acknowledged() const { return ended_ && answer_ == simulator::ack; }

    // True when a blind spot that was met accounts for all in which the unit's image differs from the file.
    bool explains(const Bytes& received, const Bytes& file) const;
    int unearned() const { return unearned_; }

  private:
    std::string blockSent(std::span<const std::uint8_t> packet, const Bytes& image);
    bool earned(const simulator::Unit& unit) const;
    bool arrivedDamaged(std::span<const std::uint8_t> data) const;

    std::size_t blocks_ = 0;   // sent so far, each once
    bool ended_ = false;       // EOT has gone out
    int sendings_ = 0;         // of the present packet, since its last CAN
    std::uint8_t answer_ = 0;  // the byte taken last
    std::uint8_t request_ = 0; // 'C' or NAK: what began the transfer
    int endsBefore_ = 0;
    bool disturbed_ = false; // the line was touched, or a packet sent again
    bool keepNext_ = false;
    Bytes damaged_; // packets that arrived otherwise than they were sent, and what came right after each
    int unearned_ = 0;
};

// One image on its way out of the unit.
class ReadAccount {
  public:
    // The operation "52" goes out.
    void begin(const simulator::Unit& unit, bool disturbed);

    void disturb() { disturbed_ = true; }

    // The tool takes the bytes of one poll.
    void polled(std::span<const std::uint8_t> bytes);
    // The tool answers a block, or an EOT; gives what is wrong with that, empty when all is right.
    std::string acknowledged();
    std::string endAnswered() const;

    // True when the image is what the tool has acknowledged, in that order, and zero after it.
    bool holds(std::span<const std::uint8_t> image) const;

    // Nothing has touched the line, and the unit has sent each block once.
    bool clean(const simulator::Unit& unit) const;

    std::size_t blocks() const { return stored_.size(); }

  private:
    struct Poll {
        std::size_t begin = 0; // in stream_
        std::size_t end = 0;
    };
    bool matches(std::span<const std::uint8_t> block, std::size_t begin, std::size_t end) const;
    std::vector<std::size_t> beginsOf(std::span<const std::uint8_t> block, const Poll& poll, bool afterCut) const;

    Bytes stream_; // all that the tool has taken
    Poll latest_;
    std::vector<Poll> stored_; // acknowledged ones
    bool disturbed_ = false;
    int packetsBefore_ = 0;
    int blocksBefore_ = 0;
};

} // namespace soak
