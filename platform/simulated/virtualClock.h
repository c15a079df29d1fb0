// The clock of the simulated desktop. It moves only when the program waits.
#pragma once

#include "base/time.h"

#include <string>

namespace platform {

// Thrown by the simulated endProgram(). No std::exception, so that no handler of the program stops it.
struct ProgramEnd {};

// Thrown when the program can never go on by itself: it waits for what nothing will bring, goes round without end at
// one moment, or runs longer than any use of it does. No std::exception, so that no handler of the
// program takes it for one of its own failures.
struct Stuck {
    std::string why;
};

class VirtualClock {
  public:
    Micros now() const { return now_; }

    // Moves to a later moment; one that has passed changes nothing. Throws Stuck beyond the limit.
    void advanceTo(Micros moment);

    // Notes a look of the program at its surroundings. Throws Stuck after too many of them at one moment.
    void noteLook();

    // Notes that something happened at this moment, so that the looks at it count anew.
    void noteProgress() { looks_ = 0; }

    void setLimit(Micros limit) { limit_ = limit; }

  private:
    Micros now_ = 0;
    Micros limit_ = fromSeconds(24 * 60 * 60);
    int looks_ = 0; // since the clock moved or something happened
};

} // namespace platform
