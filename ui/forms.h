// The three windows. The first touch of a form loads it: its object comes to be, its events are bound, the desktop
// loads its window, and its load event runs.
#pragma once

#include "ui/frmMain.h"
#include "ui/frmStartUp.h"
#include "ui/frmWait.h"

#include <functional>

FrmStartUp& frmStartUp();
FrmMain& frmMain();
FrmWait& frmWait();

bool frmWaitLoaded();

// Takes the progress dialog away; the next touch loads it anew. Harmless when it is not loaded.
void unloadFrmWait();

// What binds the events of each form: routines of subsystems that stand above this one.
struct FormBinders {
    std::function<void(FrmStartUp&)> frmStartUp;
    std::function<void(FrmMain&)> frmMain;
    std::function<void(FrmWait&)> frmWait;
};
void setFormBinders(FormBinders binders);

// Forgets all forms, as the start of a process does.
void forgetForms();
