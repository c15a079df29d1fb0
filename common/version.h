// The program's name and version, as its windows show them.
#pragma once

namespace program {
constexpr const char* name = "TarnBeacon"; // the title of a box that gives none of its own
constexpr int major = 1;
constexpr int minor = 3;
} // namespace program
