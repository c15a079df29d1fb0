#pragma once

#include "simulator/unitOptions.h"

#include <deque>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace simulator {

// Bytes and the moment at which the unit hands them to its line.
struct Output {
    Micros at = 0;
    Bytes bytes;
};

// What the unit is about to say, in order.
class Transmitter {
  public:
    // Queues bytes for a moment, or for that of the bytes queued last where this is later.
    void send(std::span<const std::uint8_t> bytes, Micros at, Pieces pieces = {});

    // Hands over what is due.
    void release(Micros now);

    // Forgets what has not been handed over.
    void drop() { queue_.clear(); }

    std::optional<Micros> due() const;

    // What has been handed over since the last call.
    std::vector<Output> take() { return std::exchange(released_, {}); }

  private:
    std::deque<Output> queue_;
    std::vector<Output> released_;
};

} // namespace simulator
