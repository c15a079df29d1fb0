#include "platform/windowTimers.h"

#include <algorithm>

namespace platform {

namespace {

Micros intervalOf(const Timer& timer) {
    return fromMilliseconds(timer.interval());
}

Micros firstTick(const Timer& timer, Micros now) {
    return timer.running() ? now + intervalOf(timer) : never;
}

} // namespace

void WindowTimers::add(Form& form) {
    for (Timer* timer : form.timers) {
        const std::uint64_t neverSeen = ~timer->settings(); // so that the next readSettings() starts it
        running_.push_back({&form, timer, neverSeen, never});
    }
}

void WindowTimers::remove(const Form& form) {
    std::erase_if(running_, [&](const Running& running) { return running.form == &form; });
}

void WindowTimers::readSettings(Micros now) {
    for (Running& running : running_) {
        if (running.settings != running.timer->settings()) {
            running.settings = running.timer->settings();
            running.due = firstTick(*running.timer, now);
        }
    }
}

Micros WindowTimers::next() const {
    Micros next = never;
    for (const Running& running : running_) {
        next = std::min(next, running.due);
    }
    return next;
}

Timer& WindowTimers::take(Micros now) {
    Running& running = *std::ranges::min_element(running_, {}, &Running::due);
    const Micros interval = intervalOf(*running.timer);
    running.due += interval * ((now - running.due) / interval + 1);
    return *running.timer;
}

} // namespace platform
