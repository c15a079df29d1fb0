// Faults of one direction of a simulated line.
#pragma once

#include "base/bytes.h"
#include "platform/simulated/random.h"
#include "platform/simulated/virtualClock.h"

#include <limits>
#include <optional>
#include <vector>

namespace platform {

// The writes that a fault applies to.
enum class Writes {
    any,
    frames,   // to the unit: the parts of a command; from it: writes that begin with STX
    transfer, // all others: blocks and control bytes
};

struct LineFault {
    enum class Kind {
        lose,    // one byte is lost
        flip,    // one bit is inverted
        twice,   // one byte arrives twice
        insert,  // `bytes` are inserted; if that is empty, a random byte
        cut,     // the rest of the write is lost
        drop,    // the write is lost
        repeat,  // the write arrives twice
        replace, // `bytes` arrive instead
        delay,   // the write and those after it arrive later by `time`
    };
    Kind kind = Kind::lose;
    Writes writes = Writes::any;
    std::int64_t first = 1; // first and last write that it applies to, counted from when the fault is set
    std::int64_t last = std::numeric_limits<std::int64_t>::max();
    int perMille = 1000;                             // share of these writes
    std::optional<std::size_t> place = std::nullopt; // index in the write, at most its length; nullopt: random
    Bytes bytes = {};
    Micros time = 0;

    // Counted by the line.
    std::int64_t seen = 0;
    std::int64_t applied = 0;
};

// Applies the faults, one after the other, to a write that begins at `at`.
void applyFaults(std::vector<LineFault>& faults, Writes kind, Random& random, Bytes& bytes, Micros& at);

} // namespace platform
