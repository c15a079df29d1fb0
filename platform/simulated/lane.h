// One direction of a simulated line: bytes under way, in order.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/virtualClock.h"

#include <deque>

namespace platform {

// How bytes travel.
struct LinePace {
    int bitsPerSecond = 38400; // 10 bits for each byte; 0: no time passes
    bool wholeWrites = false;  // the tool gets what was sent at once with its last byte, not byte by byte
    Micros latency = 1000;     // the tool's adapter hands bytes over at multiples of this; 0: at once

    // The time that so many bytes take.
    Micros duration(std::size_t bytes) const;
};

constexpr LinePace unpaced{.bitsPerSecond = 0, .wholeWrites = true, .latency = 0};

class Lane {
  public:
    explicit Lane(const LinePace& pace) : pace_(pace) {}

    // Sends bytes from a moment on, or after those before them where that is later.
    void send(Bytes bytes, Micros at);

    // The moment at which the first of the writes under way is across, never without one.
    Micros writeEnd() const;
    // Takes that write off the line.
    Bytes takeWrite();

    // The moment of the next byte's arrival as the adapter hands it over, never without one.
    Micros nextArrival() const;
    // Moves what has arrived by `now` to the end of `received`; true when there was something.
    bool takeArrived(Micros now, Bytes& received);

    // Drops all that has not left by `now`; a byte on its way counts as gone.
    void dropUnsent(Micros now);
    void clear();

  private:
    struct Write {
        Micros start = 0;
        std::size_t taken = 0;
        Bytes bytes = {};
    };

    Micros end(const Write& write) const { return write.start + pace_.duration(write.bytes.size()); }
    Micros handedOver(Micros arrival) const;
    std::size_t arrived(const Write& write, Micros now) const;

    const LinePace& pace_;
    std::deque<Write> writes_;
    Micros busyUntil_ = 0;
};

} // namespace platform
