// The operator's transfer commands, and the timer that runs the procedures step by step.
#pragma once

namespace MainWindow {

// "Start upgrade": refuses a file whose model is not that of the selected row, asks when the unit does not answer, and
// writes. Returns after the whole transfer; a tick closes it.
void cmdUpgrade_Click();

// "Save the present firmware": asks for a file and starts the read; ticks do the rest.
void cmdPresent_Click();

// One tick: one step of the running procedure.
void CommTimer_Timer();

} // namespace MainWindow

namespace WaitWindow {

void Form_Load();

// Cancels a read, sends CAN to the unit, and hides the dialog; the next tick closes the read.
void cmdCancel_Click();

// The limit of a byte wait has passed.
void timerWait_Timer();

} // namespace WaitWindow
