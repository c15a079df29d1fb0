// The one clock of the real desktop: monotonic, in microseconds; Desktop::timeGetTime gives its milliseconds.
#pragma once

#include "platform/desktop.h"

#include <chrono>
#include <cstdint>

namespace platform {

using Micros = std::int64_t;

constexpr Micros neverMicros = INT64_MAX;

inline Micros clockMicros() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

// The moment at which timeGetTime reaches `milliseconds`.
constexpr Micros microsOf(std::int64_t milliseconds) {
    return milliseconds > neverMicros / 1000 ? neverMicros : milliseconds * 1000;
}

} // namespace platform
