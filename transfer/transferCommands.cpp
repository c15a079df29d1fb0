#include "transfer/transferCommands.h"

#include "base/version.h"
#include "link/unitCommands.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "transfer/fileDialog.h"
#include "transfer/outcome.h"
#include "transfer/programState.h"
#include "transfer/readProcedure.h"
#include "transfer/transferMode.h"
#include "transfer/verification.h"
#include "transfer/writeProcedure.h"
#include "transfer/xModem.h"
#include "ui/forms.h"
#include "ui/resourceSetting.h"

using platform::host;
using platform::MousePointer;
namespace boxStyle = platform::boxStyle;
namespace state = FirmComm::state;

namespace MainWindow {

namespace {

void enableWindow(FrmMain& form) {
    form.enabled = true;
    form.mousePointer = MousePointer::arrow;
}

bool fileFitsSelectedRow(const FrmMain& form) {
    const std::size_t row = form.optPresent[0].value == 1 ? 0 : 1;
    return form.lblTitle[row].caption == form.lblTitle[2].caption;
}

// A failed check only asks the operator.
bool operatorContinues() {
    return FirmComm::fncCheckTarget() == 0 ||
           fncMsgBox(textId::sensorNotChecked, boxStyle::okCancel) != platform::boxAnswer::cancel;
}

void upgrade(FrmMain& form) {
    if (!operatorContinues()) {
        FirmComm::endWith(Outcome::cancelled);
        FirmComm::portStands(); // the check was without a port: say so
        enableWindow(form);
        return;
    }
    if (form.LabelWriteProtect.visible) {
        FirmComm::endWith(Outcome::refused);
        showMessage(textId::formatTest, boxStyle::ok, program::name);
        enableWindow(form);
        return;
    }
    frmWait().cmdCancel.enabled = false;
    shared.programState = FirmComm::fncWriteStep(state::writeTransfer);
}

} // namespace

void cmdUpgrade_Click() {
    FrmMain& form = frmMain();
    try {
        FirmComm::beginOperation();
        if (!fileFitsSelectedRow(form)) {
            FirmComm::endWith(Outcome::refused);
            fncMsgBox(textId::fileNotAdapted, boxStyle::ok);
            return;
        }
        form.enabled = false;
        form.mousePointer = MousePointer::hourglass;
        upgrade(form);
    } catch (const std::exception&) {
        FirmComm::reportFailure();
        shared.programState = FirmComm::endFailedWrite();
    }
}

void cmdPresent_Click() {
    try {
        shared.outcome = Outcome::cancelled; // if the dialog is
        askForPath(DialogKind::save, shared.saveFilePath);
        FirmComm::beginOperation();
        frmMain().enabled = false;
        shared.programState = FirmComm::fncReadStep(state::readStart);
        if (shared.programState == state::readClosing) {
            shared.programState = FirmComm::fncReadStep(state::readClosing); // CommTimer does not run
        }
    } catch (const std::exception&) {
        reportUnlessCancelled();
    }
}

void CommTimer_Timer() {
    try {
        if (shared.stepBusy) {
            return;
        }
        if (shared.programState >= state::readBlocks && shared.programState <= state::readClosing) {
            FirmComm::stepRead();
        }
        if (shared.programState == state::writeClosing) {
            shared.programState = FirmComm::fncWriteStep(shared.programState);
        }
        if (shared.programState == state::verificationDue && FirmComm::verificationSelected()) {
            FirmComm::runVerification();
        }
    } catch (const std::exception&) {
        subReportError();
    }
}

} // namespace MainWindow

namespace WaitWindow {

namespace {

bool readUnderWay() {
    return shared.programState >= state::readBlocks && shared.programState <= state::readEnd;
}

} // namespace

void Form_Load() {
    ResourceSetting::subSetFormText(frmWait().name);
}

void cmdCancel_Click() {
    if (readUnderWay()) {
        FirmComm::endWith(Outcome::cancelled);
        FirmComm::subSendCancel(readUnderWay); // while the box of a failure is open, a tick may close the read
    }
    if (readUnderWay()) {
        shared.programState = state::readClosing;
    }
    if (frmWaitLoaded()) {
        host().hide(frmWait());
    }
}

void timerWait_Timer() {
    xModem::waitTimedOut = true;
}

} // namespace WaitWindow
