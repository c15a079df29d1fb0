#pragma once

#include "simulator/unitOptions.h"

#include <deque>
#include <span>
#include <utility>
#include <vector>

namespace simulator {

// Bytes, and the time at which the unit sends them.
struct Output {
    Micros at = 0;
    Bytes bytes;
};

// The output queue of the unit.
class Transmitter {
  public:
    // Queues bytes for a time, but not before the bytes queued last.
    void send(std::span<const std::uint8_t> bytes, Micros at, Pieces pieces = {});

    // Moves the bytes that are due to the output.
    void release(Micros now);

    // Discards the bytes that are not due yet.
    void drop() { queue_.clear(); }

    Micros due() const { return queue_.empty() ? never : queue_.front().at; }

    // The output since the last call.
    std::vector<Output> take() { return std::exchange(released_, {}); }

  private:
    std::deque<Output> queue_;
    std::vector<Output> released_;
};

} // namespace simulator
