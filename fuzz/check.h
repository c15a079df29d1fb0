#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process, which is how a fuzzer sees a finding, when something does not hold.
inline void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", what);
        std::abort();
    }
}
