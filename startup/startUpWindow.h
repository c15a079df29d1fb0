// The first window: it probes the port, identifies the unit and hands over to the main window, or offers the ports.
#pragma once

namespace StartUpWindow {

// The first of the program's own code. Reads the settings, shows the picture, opens the port and asks for a unit.
void Form_Load();

// The set button: tries the port chosen in the list. A press while an earlier one is still at work does nothing.
void cmdTest_Click();

// The cancel button: ends the program.
void cmdEnd_Click();

// A close request: ends the program at port choice, else does nothing.
void Form_QueryUnload();

} // namespace StartUpWindow
