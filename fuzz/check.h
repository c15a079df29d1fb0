#pragma once

#include <cstdio>
#include <cstdlib>

// Aborts the process if the condition is false. A fuzzer reports that as a finding.
inline void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "This is not true: %s\n", what);
        std::abort();
    }
}
