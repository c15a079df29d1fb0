// One session of the program. A seed determines the unit, the line, what the operator does, and the faults. At the end all
// faults stop, and the next write or save must succeed.
#pragma once

#include "platform/simulated/world.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace soak {

struct Result {
    std::vector<std::string> violations; // of the rules in monitor.cpp
    std::vector<std::string> trace;      // actions, boxes, faults and violations by time
    std::map<std::string, int> counts;   // of injected faults, and of the ways in which operations end
    Micros virtualTime = 0;
};

// With `wire` the trace also has the bytes on the line. `tamper` changes the World for a test of the rules; then no other
// fault occurs: the program starts, and the last operation follows, a write for an even seed and a save for an odd one. The
// same arguments give the same result.
Result runSession(std::uint64_t seed, bool wire, const std::function<void(platform::World&)>& tamper = {});

} // namespace soak
