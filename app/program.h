#pragma once

#include "state/variables.h"

namespace program {

// Binds every event of every form to its handler.
void bindEvents();

// Starts the program: resets variables and forms, binds every event to its handler, selects the language as a click on
// the main window does, and runs the start-up window. Call setHost() before. Returns when start-up is over and the program waits for the operator.
void startIn(Language language);

// The same in English, as the windows start.
void start();

} // namespace program
