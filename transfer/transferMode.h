// Enters and leaves the unit's transfer mode.
#pragma once

#include <cstdint>
#include <string>

namespace FirmComm {

// Puts the unit into its transfer mode by operation "51" or "52", three tries; "51" is preceded by "50", with three
// tries of its own. Shows the progress dialog, starts CommTimer, and keeps the computer awake from its first step on.
// Returns the last result code, or an empty text if the failure has been reported.
std::string fncStartTransfer(const std::string& operation);

// Tells the unit that the transfer is over: "54", and "53" unless a verification is selected. They are left out when the
// port is gone; the operator has then seen why.
// Unloads the progress dialog. Unless a verification follows, lets the computer sleep again and enables the main
// window.
void subEndTransfer();

// Sends CAN ten times; stops when the port is gone or `underWay` returns false.
void subSendCancel(bool (*underWay)());

// Breaks off the transfer because the system ends the program: CAN, "54", "53". Then ends the program.
void subBreakOff();

// Sends "54" or "53", or reports that the port is gone; the result is ignored.
void closeTransferMode(const std::string& operation);

// Starts or stops the ticks of CommTimer.
void setCommTimer(bool enabled);

bool verificationSelected();

// A notice under the title of reads and verifications.
void showReadNotice(std::int32_t id, int style);

} // namespace FirmComm
