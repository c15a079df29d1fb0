#include "platform/qt/timerQueue.h"

#include <algorithm>

namespace platform {

namespace {

// First moment of the next tick of a timer that starts its interval now.
Micros dueFrom(Micros now, const Timer& timer) {
    return timer.running() ? now + milliseconds(timer.interval()) : never;
}

} // namespace

void TimerQueue::add(const Form& form) {
    for (Timer* timer : form.timers) {
        entries_.push_back({timer, timer->settings(), dueFrom(clockMicros(), *timer)});
    }
}

void TimerQueue::remove(const Form& form) {
    std::erase_if(entries_, [&](const Entry& entry) { return std::ranges::count(form.timers, entry.timer) > 0; });
}

void TimerQueue::look() {
    for (Entry& entry : entries_) {
        if (entry.settings != entry.timer->settings()) {
            entry.settings = entry.timer->settings();
            entry.due = dueFrom(clockMicros(), *entry.timer);
        }
    }
}

Micros TimerQueue::due() const {
    const auto next = std::ranges::min_element(entries_, {}, &Entry::due);
    return next == entries_.end() ? never : next->due;
}

void TimerQueue::arm() {
    const Micros next = due();
    if (next == armed_) {
        return;
    }
    armed_ = next;
    if (next == never) {
        alarm_.stop();
        return;
    }
    constexpr Micros longest = seconds(24 * 3600); // what a timer of the toolkit takes; it is set again then
    const Micros rest = std::clamp<Micros>(next - clockMicros(), 0, longest);
    alarm_.start(static_cast<int>((rest + 999) / 1000), Qt::PreciseTimer, this);
}

void TimerQueue::timerEvent(QTimerEvent*) {
    // A timer of the toolkit does not fire while its own slot runs, so it is stopped before any tick runs.
    alarm_.stop();
    armed_ = never;
    tickDue();
    arm();
}

void TimerQueue::tickDue() {
    const Micros now = clockMicros();
    while (due() <= now) {
        Entry& entry = *std::ranges::min_element(entries_, {}, &Entry::due);
        const Timer& timer = *entry.timer;
        entry.due = dueFrom(now, timer);
        if (timer.tick) {
            deliver_(timer.tick);
        }
    }
}

} // namespace platform
