// A simulated amplifier unit: bytes in, bytes out; the caller passes the time.
#pragma once

#include "simulator/frame.h"
#include "simulator/journal.h"
#include "simulator/transmitter.h"
#include "simulator/unitOptions.h"
#include "simulator/xmodemReceiver.h"
#include "simulator/xmodemSender.h"

#include <span>
#include <string>
#include <vector>

namespace simulator {

// Replies to commands:
// - A frame with a wrong block check gets a reply with end code "13" and nothing else, a frame whose text is no command
//   gets end code "14", a frame to another node or sub-address no reply. During a transfer, everything but a good frame
//   counts as noise.
// - "0501", "0601", the area reads of one element at address 1 and the operations in their exact form get "0000".
//   Any other area read gets "1101", an operation in another form "1004", any other command "1001".
// - "51" without a "50" to the same unit before it gets "2204", and so does any command but an operation while the
//   unit is in its transfer mode. It leaves that mode at any operation, or when a transfer is cancelled or
//   complete.
//
// A complete image becomes the present image of its unit, and the unit then reports the version of the image. Times must
// not go backwards from call to call.
class Unit {
  public:
    explicit Unit(UnitOptions options);
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    // Passes bytes to the unit, of which the last has arrived at `now`.
    void receive(std::span<const std::uint8_t> bytes, Micros now);

    // Runs everything that the unit does by itself up to `now`.
    void advance(Micros now);

    // Time at which `advance` has something to do next; `never` without one.
    Micros due() const;

    // The output of the unit since the last call, in order.
    std::vector<Output> takeOutput() { return transmitter_.take(); }

    // Enters a transfer without a command, for the amplifier.
    void startReceiving(Micros now);
    void startSending(Micros now);

    // Restarts, as after a power failure: the state of a transfer is lost. Images and journal stay.
    void restart();

    // The options may change while the unit runs.
    UnitOptions& options() { return options_; }

    const Journal& journal() const { return journal_; }

    // The image of the last write, complete or not.
    const Bytes& receivedImage() const { return receiver_.image(); }

  private:
    enum class Mode { commands, receiving, sending };
    struct Result {
        std::string code;
        std::string data = {};
    };

    bool silentAt(Micros now) const { return options_.silentFrom && now >= *options_.silentFrom; }
    std::size_t take(std::span<const std::uint8_t> bytes, Micros now);
    void takeFrameByte(std::uint8_t byte, Micros now);
    void takeFrame(Micros now);
    void dropFrame(Micros now);
    void step(Micros now);
    Micros dueByItself() const;

    void takeCommand(const std::string& command, Micros now);
    const CommandReply* specialReply(const std::string& command);
    Result execute(const std::string& command, Micros now);
    Result readArea(const std::string& command) const;
    Result operate(const std::string& command, Micros now);
    void reply(const std::string& text, Micros now, const CommandReply& special = {});

    Bytes& imageOf(const std::string& unitField);
    void keepReceivedImage();
    void leaveEndedTransfer();

    UnitOptions options_;
    Journal journal_;
    Transmitter transmitter_;
    XmodemReceiver receiver_{options_, journal_, transmitter_};
    XmodemSender sender_{options_, journal_, transmitter_};
    FrameReader frame_;
    Micros frameByteAt_ = 0;
    Micros latest_ = 0;           // time of the last action or received byte
    std::vector<int> ruleCounts_; // frames that each reply rule has counted
    Mode mode_ = Mode::commands;
    std::string preparedUnit_; // unit field of the last "50", until "53" or "54"
    std::string writtenUnit_;  // unit field of the present write
    int endsSeen_ = 0;
};

} // namespace simulator
