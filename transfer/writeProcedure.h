#pragma once

#include <cstdint>

namespace FirmComm {

// Does the work of one state of a write, state::writeTransfer or state::writeClosing, and gives the next state; gives
// any other value back. Gives 0 and does nothing while a step is running.
std::int32_t fncWriteStep(std::int32_t state);

// How a write ends that never began or broke off: the unit leaves its transfer mode, the "Failed" box comes, the window
// is usable. Gives the next state.
std::int32_t endFailedWrite();

} // namespace FirmComm
