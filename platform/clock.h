// The clock of the real host: monotonic; Host::timeGetTime returns its milliseconds.
#pragma once

#include "base/time.h"

#include <chrono>

namespace platform {

inline Micros clockMicros() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

} // namespace platform
