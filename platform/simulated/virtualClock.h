// The clock of the simulated host. It moves only when the program waits.
#pragma once

#include "base/time.h"

#include <string>

namespace platform {

// Thrown by the simulated endProgram(). Not a std::exception, so that no handler of the program catches it.
struct ProgramEnd {};

// Thrown when the program hangs: it waits for something that cannot happen, loops without waiting, or runs longer than the
// limit. Not a std::exception, so that no handler of the program catches it.
struct Stuck {
    std::string why;
};

class VirtualClock {
  public:
    Micros now() const { return now_; }

    // Moves the clock forward; an earlier time changes nothing. Throws Stuck beyond the limit.
    void advanceTo(Micros moment);

    // Counts a call of the program that waits or reads the clock. Throws Stuck after too many of them without progress.
    void countPoll();

    // Something happened without a move of the clock: counts from 0 again.
    void noteProgress() { polls_ = 0; }

    void setLimit(Micros limit) { limit_ = limit; }

  private:
    Micros now_ = 0;
    Micros limit_ = fromSeconds(24 * 60 * 60);
    int polls_ = 0; // since the clock moved or something happened
};

} // namespace platform
