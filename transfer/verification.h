#pragma once

namespace FirmComm {

// Reads the unit back after a write, compares, shows the result, and closes the port. Runs inside one tick; window
// events and further ticks run meanwhile. At the end the main window is usable again.
void runVerification();

} // namespace FirmComm
