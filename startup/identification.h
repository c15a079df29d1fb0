#pragma once

namespace StartUpWindow {

// Asks the unit what is connected and sets models and versions of rows 0 and 1. Ends the program unless exactly one sensor
// is connected, and at nearly every failure; with a unit that has no amplifier data yet ("1004", "2204") the rows stay
// blank. When it returns, the caller shows the main window.
void subIdentifyUnit();

} // namespace StartUpWindow
