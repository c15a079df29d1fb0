// The way into the unit's transfer mode and out of it again.
#pragma once

#include <string>

namespace FirmComm {

// Takes the unit into its transfer mode by operation "51" or "52", three tries; ahead of "51" goes "50", with three
// tries of its own. Shows the progress dialog, starts CommTimer, and keeps the computer awake from its first step on.
// Gives the last result code, or an empty text when the failure has been reported.
std::string fncStartTransfer(const std::string& operation);

// Tells the unit that the transfer is over, unless the port is gone: "54", and "53" unless a verification is selected.
// Takes the progress dialog away. Unless a verification follows, lets the computer sleep again and enables the main
// window.
void subEndTransfer();

// Sends "54" or "53" when the port is there; the result is not looked at.
void closeTransferMode(const std::string& operation);

// Starts or stops the ticks of CommTimer.
void setCommTimer(bool enabled);

bool verificationSelected();

// A notice in the selected language, under the title of reads and verifications.
void showReadNotice(const char* japanese, const char* english, int style);

} // namespace FirmComm
