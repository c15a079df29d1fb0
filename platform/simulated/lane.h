// One direction of a simulated line: the bytes in transit, in order.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/virtualClock.h"

#include <deque>

namespace platform {

// Timing of a line.
struct LinePace {
    int bitsPerSecond = 38400; // 10 bits for each byte; 0: no time passes
    bool wholeWrites = false;  // the program receives a write as a whole, not byte by byte
    Micros latency = 1000;     // the program's adapter delivers bytes at multiples of this time; 0: at once

    // Time on the line of a number of bytes.
    Micros duration(std::size_t bytes) const;
};

constexpr LinePace unpaced{.bitsPerSecond = 0, .wholeWrites = true, .latency = 0};

class Lane {
  public:
    explicit Lane(const LinePace& pace) : pace_(pace) {}

    // Sends bytes, beginning at `at` or after the bytes before them, whichever is later.
    void send(Bytes bytes, Micros at);

    // Time at which the oldest write in transit has arrived as a whole; `never` without one.
    Micros writeEnd() const;
    // Removes that write from the line and returns its bytes.
    Bytes takeWrite();

    // Time at which the adapter delivers the next byte; `never` without one.
    Micros nextArrival() const;
    // Appends the bytes that have arrived by `now` to `received`; true when there are any.
    bool takeArrived(Micros now, Bytes& received);

    // Discards the bytes whose transmission has not begun by `now`.
    void dropUnsent(Micros now);
    void clear();

  private:
    struct Write {
        Micros start = 0;
        std::size_t taken = 0;
        Bytes bytes = {};
    };

    Micros end(const Write& write) const { return write.start + pace_.duration(write.bytes.size()); }
    Micros deliveryTime(Micros arrival) const;
    std::size_t arrived(const Write& write, Micros now) const;

    const LinePace& pace_;
    std::deque<Write> writes_;
    Micros busyUntil_ = 0;
};

} // namespace platform
