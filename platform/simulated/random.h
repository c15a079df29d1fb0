#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <random>

namespace platform {

// Random numbers from a seed. The C++ standard defines the engine's sequence, so a seed gives the same numbers everywhere.
class Random {
  public:
    explicit Random(std::uint64_t seed = 0) : engine_(seed) {}

    std::uint64_t draw() { return engine_(); }
    std::int64_t below(std::int64_t count) {
        return static_cast<std::int64_t>(draw() % static_cast<std::uint64_t>(count));
    }
    std::int64_t between(std::int64_t least, std::int64_t most) { return least + below(most - least + 1); }
    bool chance(int perMille) { return below(1000) < perMille; }

    // All lengths in binary digits are equally likely, so small numbers are as frequent as large ones. `least` is 1 or more.
    std::int64_t spread(std::int64_t least, std::int64_t most) {
        const std::int64_t digits = between(width(least), width(most));
        const std::int64_t first = std::int64_t{1} << (digits - 1);
        return std::min(most, std::max(least, between(first, 2 * first - 1)));
    }

    template <class List>
    auto& pick(List& list) {
        return list[static_cast<std::size_t>(below(std::ssize(list)))];
    }

  private:
    static std::int64_t width(std::int64_t number) {
        return static_cast<std::int64_t>(std::bit_width(static_cast<std::uint64_t>(number)));
    }

    std::mt19937_64 engine_;
};

} // namespace platform
