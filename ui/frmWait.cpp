#include "ui/frmWait.h"

#include "ui/serviceScreen.h"

using platform::ControlKind;

FrmWait::FrmWait() {
    name = "frmWait";
    clientArea = {5220, 1755};
    onTaskBar = false;

    prbComm = {.kind = ControlKind::progressBar, .name = "prbComm", .place = {240, 720, 4695, 495}, .tabIndex = 0};
    lblMsg = {.kind = ControlKind::label, .name = "lblMsg", .place = {360, 240, 4575, 255}, .tabIndex = 1};
    cmdCancel = {.kind = ControlKind::button,
                 .name = "cmdCancel",
                 .place = hiddenControls.cmdCancel.place,
                 .tabIndex = 2,
                 .visible = hiddenControls.cmdCancel.visible};

    controls = {&lblMsg, &prbComm, &cmdCancel};
    timers.push_back(&timerWait);
}
