#pragma once

namespace program {

// Binds every event of every form to its handler.
void bindEvents();

// The start of the program: variables at their start values, no form loaded, every event bound to its handler, and the
// start-up window runs. Needs the desktop to be set. Returns when start-up hands over to the operator.
void start();

} // namespace program
