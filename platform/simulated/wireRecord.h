// Record of the bytes on a simulated line.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/virtualClock.h"

#include <deque>
#include <span>
#include <string>

namespace platform {

enum class Direction { toUnit, fromUnit };

struct WireEntry {
    Micros at = 0; // time of the write
    Direction direction = Direction::toUnit;
    bool altered = false; // the result of a fault on the entry before, or bytes that a fault has inserted
    Bytes bytes;
};

// Bytes as readable text, shortened when there are many: control characters by name, printable text in quotes.
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

    // Readable text, times in seconds: a line for each entry; writes of one side at the same time share a line.
    std::string text() const;

  private:
    std::size_t limit_ = SIZE_MAX;
    std::deque<WireEntry> entries_;
};

} // namespace platform
