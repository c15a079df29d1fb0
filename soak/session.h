// One session of the program, drawn as the lines of a story (story/player.h): the unit, the line, what the operator does, and
// the faults. At the end all faults stop, and the next write or save must succeed.
#pragma once

#include "base/time.h"

#include <cstdint>
#include <map>
#include <string>

namespace soak {

struct Result {
    std::string story;                 // as it plays
    std::string violation;             // the first one; empty: none
    std::map<std::string, int> counts; // of drawn faults, and of the ways in which operations end
    Micros virtualTime = 0;
};

// The same seed gives the same session.
Result runSession(std::uint64_t seed);

} // namespace soak
