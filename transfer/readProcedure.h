#pragma once

#include <cstdint>

namespace FirmComm {

// Does the work of one state of a read, state::readStart to state::readClosing, and returns the next state; returns any
// other value unchanged. Returns 0 and does nothing while a step is running.
std::int32_t fncReadStep(std::int32_t state);

// Returns 0 if shared.readBackImage equals shared.firmwareImage in all elements, otherwise 1.
std::int32_t fncCompareImage();

// Does the step of shared.programState and stores the next state there, unless Cancel has set another meanwhile.
void stepRead();

} // namespace FirmComm
