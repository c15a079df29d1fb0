// The first window: a picture while the program asks for the unit, a list of ports when none answers.
#pragma once

#include "platform/host.h"

struct FrmStartUp : platform::Form {
    platform::Control shpComm; // covers the picture at port choice
    platform::Control lblBPS;
    platform::Control cmbBps;
    platform::Control lblCom;
    platform::Control cmbCom;
    platform::Control cmdTest;
    platform::Control cmdEnd;
    platform::Control imgLogo;
    platform::Control STARTBOX;

    FrmStartUp();
};
