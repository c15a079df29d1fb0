#pragma once

#include "simulator/wire.h"

#include <string>
#include <string_view>

namespace simulator {

// Reads one command frame, byte by byte: STX, printable text, ETX, block check.
class FrameReader {
  public:
    enum class State { idle, receiving, complete, broken };

    // Takes a byte and returns the state after it. An STX begins a frame, also within a frame. A byte that cannot be
    // part of a command breaks the frame, and so does a text longer than any command.
    State read(std::uint8_t byte);

    void drop() { state_ = State::idle; }

    bool receiving() const { return state_ == State::receiving; }
    const std::string& text() const { return text_; }
    bool checkGood() const { return checkGood_; }

  private:
    void begin();

    State state_ = State::idle;
    std::string text_;
    std::uint8_t check_ = 0;
    bool textEnded_ = false;
    bool checkGood_ = false;
};

// STX, the text, ETX and the exclusive OR of the text and ETX.
Bytes frameOf(std::string_view text);

} // namespace simulator
