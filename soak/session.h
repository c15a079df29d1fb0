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
    std::vector<std::string> violations; // of the rules in watch.cpp
    std::vector<std::string>
        story; // deeds, boxes, faults and violations by time, and when asked for what is on the line
    std::map<std::string, int> counts; // of faults brought, and of the ways in which operations end
    Micros virtualTime = 0;
};

// With `lie`, which changes the world, nothing else goes wrong: the program starts, and the last operation follows, a
// write for an even seed and a save for an odd one. The same arguments give the same result.
Result runSession(std::uint64_t seed, bool tell, const std::function<void(platform::World&)>& lie = {});

} // namespace soak
