// What went over a simulated line.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/virtualClock.h"

#include <deque>
#include <span>
#include <string>

namespace platform {

enum class Direction { toUnit, fromUnit };

struct WireEntry {
    Micros at = 0; // the moment of the write
    Direction direction = Direction::toUnit;
    bool altered = false; // what a fault made of the entry before, or put onto the line by itself
    Bytes bytes;
};

// Bytes for reading, in short where they are many: control characters by name, printable text in quotes.
std::string wireText(std::span<const std::uint8_t> bytes);

class WireRecord {
  public:
    // Keeps the last `limit` entries only; 0 records nothing.
    void keep(std::size_t limit);

    void add(Micros at, Direction direction, std::span<const std::uint8_t> bytes, bool altered = false);
    void clear() { entries_.clear(); }

    const std::deque<WireEntry>& entries() const { return entries_; }

    // All bytes that one side has sent, one write after the other.
    Bytes sent(Direction direction) const;

    // For reading: a line for each entry, time in seconds; the writes of one side at one moment stand on one line.
    std::string text() const;

  private:
    std::size_t limit_ = SIZE_MAX;
    std::deque<WireEntry> entries_;
};

} // namespace platform
