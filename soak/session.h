#pragma once

#include "soak/faultInjector.h"
#include "soak/log.h"
#include "soak/monitor.h"
#include "soak/plan.h"

namespace soak {

struct SessionResult {
    Tally tally;
    FaultCounts faults{};
    Micros virtualTime = 0;
    std::vector<std::string> violations;
    std::vector<std::string> story; // empty unless it was asked for
    std::size_t violatedAt = 0;     // line of the story
};

// One whole run of the program after a plan, and after it an operation without faults, which must succeed. The same
// plan gives the same result.
SessionResult runSession(const Plan& plan, bool story);

} // namespace soak
