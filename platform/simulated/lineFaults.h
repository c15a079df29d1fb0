// What a simulated line does to the bytes of one direction besides carrying them.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/random.h"
#include "platform/simulated/virtualClock.h"

#include <limits>
#include <optional>
#include <vector>

namespace platform {

// Which of the writes of a direction count.
enum class Writes {
    any,
    frames,   // to the unit: the parts of a command; from it: what begins with STX
    transfer, // all others: blocks and control bytes
};

struct LineFault {
    enum class Kind {
        lose,    // a byte
        flip,    // a bit of a byte
        twice,   // a byte comes twice
        insert,  // `bytes`, or without any a control byte or another one
        cut,     // the rest of the write is lost
        drop,    // the write is lost
        repeat,  // the write comes twice
        replace, // by `bytes`
        delay,   // by `time`; what is sent later stays behind it
    };
    Kind kind = Kind::lose;
    Writes writes = Writes::any;
    std::int64_t first = 1; // of those writes, from when the fault is set on, and the last
    std::int64_t last = std::numeric_limits<std::int64_t>::max();
    int perMille = 1000;                             // of the writes in between
    std::optional<std::size_t> place = std::nullopt; // in the write, at most its length; without one it is drawn
    Bytes bytes = {};
    Micros time = 0;

    // Kept by the line.
    std::int64_t seen = 0;
    std::int64_t struck = 0;
};

// Applies the faults to a write of a kind that goes onto the line at a moment. What a fault leaves of it meets the next
// one.
void strike(std::vector<LineFault>& faults, Writes kind, Random& random, Bytes& bytes, Micros& at);

} // namespace platform
