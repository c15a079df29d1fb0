#pragma once

#include <cstdint>

namespace FirmComm {

// Does the work of one state of a write, state::writeTransfer or state::writeClosing, and returns the next state;
// returns any other value unchanged. Returns 0 and does nothing while a step is running.
std::int32_t fncWriteStep(std::int32_t state);

// Ends a write that did not begin or broke off: the unit leaves its transfer mode, the "Failed" box appears, the window
// is usable. Returns the next state.
std::int32_t endFailedWrite();

} // namespace FirmComm
