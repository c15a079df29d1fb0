#pragma once

#include <cstdint>

namespace FirmComm {

// Returns 0 if shared.readBackImage equals shared.firmwareImage in all elements, otherwise 1.
std::int32_t fncCompareImage();

// Reads the unit back after a write, compares, shows the result, and closes the port. Runs inside one tick; window
// events and further ticks run meanwhile. At the end the main window is usable again.
void runVerification();

} // namespace FirmComm
