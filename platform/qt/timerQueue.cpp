#include "platform/qt/timerQueue.h"

#include "platform/clock.h"

#include <algorithm>

namespace platform {

void TimerQueue::readSettings() {
    timers_.readSettings(clockMicros());
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
    constexpr Micros longest = fromSeconds(24 * 3600); // limit of the toolkit's timer; it is set again when it fires
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
        const Timer& timer = timers_.take(now);
        if (timer.tick) {
            deliver_(timer.tick);
        }
    }
}

} // namespace platform
