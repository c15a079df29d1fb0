// The operator's window: what is in the unit (rows 0 and 1), what is in the file (row 2), and the buttons.
#pragma once

#include "platform/host.h"

#include <array>

struct FrmMain : platform::Form {
    platform::Control lblPresent;                // heading of rows 0 and 1
    std::array<platform::Control, 2> optPresent; // selects row 0 or 1, the part of the unit that is addressed
    platform::Control lblRewriting;              // heading of row 2
    std::array<platform::Control, 3> lblTitle;   // model name of each row
    std::array<platform::Control, 3> lblVersion; // version of each row
    platform::Control cmdLoading;
    platform::Control Line1;
    platform::Control cmdUpgrade;
    platform::Control cmdEnd;

    // Stored hidden; the service screen shows all but the last two, which nothing shows: so the form is stored.
    platform::Control cmdPresent;
    platform::Control chkVerify;
    platform::Control fraLanguage;
    std::array<platform::Control, 2> optLanguage; // Japanese, English
    platform::Control LabelWriteProtect;          // visible: a write ends after its checks
    platform::Control Line2;                      // hidden for good, as in the stored form

    platform::Timer CommTimer{"CommTimer"}; // steps the transfer procedures
    platform::FileDialog cmdSoft;           // the open and the save dialog

    FrmMain();
};
