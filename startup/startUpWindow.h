// The first window: it probes the port, identifies the unit and shows the main window, or offers a list of ports.
#pragma once

namespace StartUpWindow {

extern bool settingPort; // cmdTest_Click is running

// Runs first. Reads the settings, shows the picture, opens the port and asks for a unit.
void Form_Load();

// The set button: tries the port chosen in the list. Ignores a press while an earlier one is running.
void cmdTest_Click();

// The cancel button: ends the program.
void cmdEnd_Click();

// A close request: ends the program at port choice, else does nothing.
void Form_QueryUnload();

} // namespace StartUpWindow
