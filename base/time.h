// Points in time and durations.
#pragma once

#include <cstdint>

// Microseconds of the clock of the host in use.
using Micros = std::int64_t;

// A time that is never reached, in milliseconds or microseconds.
constexpr std::int64_t never = INT64_MAX;

constexpr Micros fromMilliseconds(std::int64_t count) {
    return count > never / 1000 ? never : count * 1000;
}
constexpr Micros fromSeconds(std::int64_t count) {
    return count * 1'000'000;
}
