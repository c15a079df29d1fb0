#pragma once

#include <cstdint>

namespace FirmComm {

// Does the work of one state of a read, state::readStart to state::readClosing, and gives the next state; gives any
// other value back. Gives 0 and does nothing while a step is running.
std::int32_t fncReadStep(std::int32_t state);

// Steps the read by shared.programState and stores the next state there, unless Cancel has set another while the step ran.
void stepRead();

} // namespace FirmComm
