#include "simulator/frame.h"

namespace simulator {

namespace {

constexpr std::size_t longestText = 256;

} // namespace

FrameReader::State FrameReader::read(std::uint8_t byte) {
    if (state_ != State::receiving) {
        begin();
        return state_ = byte == stx ? State::receiving : State::broken;
    }
    if (textEnded_) {
        checkGood_ = byte == check_;
        return state_ = State::complete;
    }
    if (byte == stx) {
        begin();
        return state_;
    }
    check_ ^= byte;
    if (byte == etx) {
        textEnded_ = true;
    } else if (byte < 0x20 || byte > 0x7E || text_.size() == longestText) {
        state_ = State::broken;
    } else {
        text_.push_back(static_cast<char>(byte));
    }
    return state_;
}

void FrameReader::begin() {
    text_.clear();
    check_ = 0;
    textEnded_ = false;
}

Bytes frameOf(std::string_view text) {
    Bytes frame{stx};
    std::uint8_t check = etx;
    for (const char character : text) {
        frame.push_back(static_cast<std::uint8_t>(character));
        check ^= frame.back();
    }
    frame.push_back(etx);
    frame.push_back(check);
    return frame;
}

} // namespace simulator
