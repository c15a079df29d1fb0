#pragma once

namespace program {

// Binds every event of every form to its handler.
void bindEvents();

// Starts the program: resets variables and forms, binds every event to its handler, and runs the start-up window. Call
// setHost() before. Returns when start-up is over and the program waits for the operator.
void start();

} // namespace program
