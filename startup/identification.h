#pragma once

namespace StartUpWindow {

// Asks the unit what is connected and fills the models and versions of rows 0 and 1. Ends the program unless exactly
// one sensor is connected, and at nearly every failure; a unit that has no amplifier data yet ("1004", "2204") leaves
// the rows blank. When it returns, the main window may come up.
void subIdentifyUnit();

} // namespace StartUpWindow
