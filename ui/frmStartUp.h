// The first window: a picture while the program asks for the unit, a list of ports when none answers.
#pragma once

#include "platform/host.h"

struct FrmStartUp : platform::Form {
    platform::Control shpComm; // covers the picture at port choice
    platform::Control lblBPS;  // hidden for good with its list, as in the stored form
    platform::Control cmbBps;
    platform::Control lblCom;
    platform::Control cmbCom;
    platform::Control cmdTest;
    platform::Control cmdEnd;
    platform::Control imgLogo;  // hidden for good, as in the stored form
    platform::Control STARTBOX; // a menu without a handler, as in the stored form

    FrmStartUp();
};
