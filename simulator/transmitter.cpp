#include "simulator/transmitter.h"

#include <algorithm>

namespace simulator {

void Transmitter::send(std::span<const std::uint8_t> bytes, Micros at, Pieces pieces) {
    if (!queue_.empty()) {
        at = std::max(at, queue_.back().at);
    }
    while (!bytes.empty()) {
        const auto piece = bytes.first(pieces.size == 0 ? bytes.size() : std::min(pieces.size, bytes.size()));
        queue_.push_back({at, Bytes(piece.begin(), piece.end())});
        bytes = bytes.subspan(piece.size());
        at += pieces.pause;
    }
}

void Transmitter::release(Micros now) {
    while (!queue_.empty() && queue_.front().at <= now) {
        released_.push_back(std::move(queue_.front()));
        queue_.pop_front();
    }
}

} // namespace simulator
