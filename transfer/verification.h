#pragma once

#include <cstdint>

namespace FirmComm {

// 0 when shared.readBackImage equals shared.firmwareImage in all elements, else 1.
std::int32_t fncCompareImage();

// Reads the unit back after a write, compares, says how it went, and closes the port. Runs inside one tick; window
// events, further ticks among them, run meanwhile. The main window is usable again at its end.
void runVerification();

} // namespace FirmComm
