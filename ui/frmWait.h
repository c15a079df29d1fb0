// The progress dialog, shown during a transfer.
#pragma once

#include "platform/host.h"

struct FrmWait : platform::Form {
    platform::Control lblMsg;
    platform::Control prbComm; // in bytes of the image
    platform::Control cmdCancel;
    platform::Timer timerWait{"timerWait"}; // limits the wait for a byte

    FrmWait();
};
