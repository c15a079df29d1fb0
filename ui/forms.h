// The three windows. The first call of an accessor loads the form: it creates the object, binds the events, lets the
// host load the window, and runs the load event.
#pragma once

#include "ui/frmMain.h"
#include "ui/frmStartUp.h"
#include "ui/frmWait.h"

#include <functional>

FrmStartUp& frmStartUp();
FrmMain& frmMain();
FrmWait& frmWait();

bool frmWaitLoaded();

// Unloads the progress dialog; the next frmWait() loads it again. Does nothing when it is not loaded.
void unloadFrmWait();

// The routines that bind the events of each form; the handlers are in higher folders.
struct FormBinders {
    std::function<void(FrmStartUp&)> frmStartUp;
    std::function<void(FrmMain&)> frmMain;
    std::function<void(FrmWait&)> frmWait;
};
void setFormBinders(FormBinders binders);

// Resets all forms to the state at the start of a process.
void resetForms();
