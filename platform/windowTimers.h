// The timers of the loaded forms. The host passes the time.
#pragma once

#include "base/time.h"
#include "platform/form.h"

#include <vector>

namespace platform {

class WindowTimers {
  public:
    void add(Form& form);
    void remove(const Form& form);

    // Reads the settings of all timers. Call it before the clock moves.
    void readSettings(Micros now);

    // Time of the next tick; `never` when no timer runs.
    Micros next() const;

    // The timer whose tick is due first. Its next tick is scheduled at once; missed ticks are skipped.
    Timer& take(Micros now);

  private:
    struct Running {
        const Form* form;
        Timer* timer;
        std::uint64_t settings; // as last seen
        Micros due;
    };
    std::vector<Running> running_;
};

} // namespace platform
