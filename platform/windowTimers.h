// The timers of the loaded forms, for a desktop that tells them the time.
#pragma once

#include "base/time.h"
#include "platform/form.h"

#include <vector>

namespace platform {

class WindowTimers {
  public:
    void add(Form& form);
    void remove(const Form& form);

    // Takes up what the program has set since the last call. To be called before time passes.
    void look(Micros now);

    // The moment of the next tick, never without one.
    Micros next() const;

    // The timer whose tick is due first. Its next tick is set before this one runs; ticks that were missed
    // meanwhile are left out.
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
