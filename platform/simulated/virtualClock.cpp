#include "platform/simulated/virtualClock.h"

namespace platform {

namespace {

constexpr int maxPolls = 100'000;

std::string secondsText(Micros moment) {
    return std::to_string(moment / 1'000'000) + " s";
}

} // namespace

void VirtualClock::advanceTo(Micros moment) {
    if (moment <= now_) {
        return;
    }
    if (moment > limit_) {
        throw Stuck{"the program still runs after " + secondsText(limit_)};
    }
    now_ = moment;
    polls_ = 0;
}

void VirtualClock::countPoll() {
    if (++polls_ > maxPolls) {
        throw Stuck{"the program loops without waiting, at " + secondsText(now_)};
    }
}

} // namespace platform
