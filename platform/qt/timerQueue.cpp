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
    arm();
}

void TimerQueue::remove(const Form& form) {
    std::erase_if(entries_, [&](const Entry& entry) { return std::ranges::count(form.timers, entry.timer) > 0; });
    arm();
}

void TimerQueue::sync() {
    for (Entry& entry : entries_) {
        if (entry.settings != entry.timer->settings()) {
            entry.settings = entry.timer->settings();
            entry.due = dueFrom(clockMicros(), *entry.timer);
        }
    }
    arm();
}

void TimerQueue::arm() {
    Micros next = never;
    for (const Entry& entry : entries_) {
        next = std::min(next, entry.due);
    }
    if (next == armed_) {
        return;
    }
    armed_ = next;
    if (next == never) {
        alarm_.stop();
        return;
    }
    constexpr Micros longest = 24 * 3600 * Micros{1'000'000}; // what a timer of the toolkit takes; it is set again then
    const Micros rest = std::clamp<Micros>(next - clockMicros(), 0, longest);
    alarm_.start(static_cast<int>((rest + 999) / 1000), Qt::PreciseTimer, this);
}

TimerQueue::Entry* TimerQueue::nextDue(Micros now) {
    const auto entry = std::ranges::min_element(entries_, {}, &Entry::due);
    return entry != entries_.end() && entry->due <= now ? &*entry : nullptr;
}

void TimerQueue::timerEvent(QTimerEvent*) {
    // A timer of the toolkit does not fire while its own slot runs, so it is set anew before any tick runs.
    alarm_.stop();
    armed_ = never;
    tickDue();
    arm();
}

void TimerQueue::tickDue() {
    const Micros now = clockMicros();
    while (Entry* entry = nextDue(now)) {
        entry->due = dueFrom(now, *entry->timer);
        arm();
        if (entry->timer->tick) {
            deliver_(entry->timer->tick);
        }
    }
}

} // namespace platform
