// The real desktop on the toolkit's offscreen screen, for the rest of the process, as in the program.
#pragma once

#include "platform/qt/qtDesktop.h"

#include <cstdlib>

// What the font library keeps for itself is no leak of ours.
extern "C" const char* __lsan_default_suppressions() { // NOLINT: the sanitizer's name, once in each program
    return "leak:libfontconfig";
}

inline platform::QtDesktop& theDesktop() {
    static platform::QtDesktop* const desktop = [] {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        return new platform::QtDesktop;
    }();
    return *desktop;
}
