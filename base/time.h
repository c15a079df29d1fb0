// Moments and lengths of time.
#pragma once

#include <cstdint>

// Microseconds, on whatever clock their owner keeps.
using Micros = std::int64_t;

// A moment that no clock reaches, in any unit.
constexpr std::int64_t never = INT64_MAX;

constexpr Micros fromMilliseconds(std::int64_t count) {
    return count > never / 1000 ? never : count * 1000;
}
constexpr Micros fromSeconds(std::int64_t count) {
    return count * 1'000'000;
}
