#pragma once

#include "simulator/wire.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace soak {

// What the tool can say to the unit. A message is one of these.
enum class Word {
    askIdentification,
    askState,
    askVersion,
    askTypeKey,
    prepareWrite,
    startWrite,
    startRead,
    endTransfer,
    closeProcedure,
    block,
    endOfImage,
    ack,
    nak,
    can,
    unknown,
};
std::string_view wordName(Word word);

// Puts the tool's writes together to messages. A frame comes in four writes, all else in one.
class ToolReader {
  public:
    struct Heard {
        bool begins = false;                     // a message begins with this write
        bool brokenOff = false;                  // a frame before it was never finished
        std::optional<Word> word = std::nullopt; // the message that is complete with this write
    };
    Heard take(std::span<const std::uint8_t> bytes);

    // Forgets a frame that will not be finished.
    void dropFrame() { frameParts_ = 0; }

    // The bytes of the latest message.
    const Bytes& message() const { return message_; }

  private:
    Bytes message_;
    int frameParts_ = 0; // writes of the frame under way
};

} // namespace soak
