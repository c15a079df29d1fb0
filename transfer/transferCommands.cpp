#include "transfer/transferCommands.h"

#include "common/variables.h"
#include "common/version.h"
#include "firmware/fileDialog.h"
#include "link/commPort.h"
#include "link/unitCommands.h"
#include "platform/desktop.h"
#include "platform/failure.h"
#include "transfer/programState.h"
#include "transfer/rawByte.h"
#include "transfer/readProcedure.h"
#include "transfer/transferMode.h"
#include "transfer/verification.h"
#include "transfer/writeProcedure.h"
#include "transfer/xModem.h"
#include "ui/forms.h"
#include "ui/messages.h"
#include "ui/resourceSetting.h"
#include "ui/stringTable.h"

using platform::desktop;
using platform::MousePointer;
namespace boxStyle = platform::boxStyle;
namespace state = FirmComm::state;

namespace MainWindow {

namespace {

void giveWindowBack(FrmMain& form) {
    form.enabled = true;
    form.mousePointer = MousePointer::arrow;
}

bool fileFitsSelectedRow(const FrmMain& form) {
    const std::size_t row = form.optPresent[0].value == 1 ? 0 : 1;
    return form.lblTitle[row].caption == form.lblTitle[2].caption;
}

// The check bars nothing, it only asks.
bool operatorGoesOn() {
    return FirmComm::fncCheckTarget() == 0 ||
           fncMsgBox(textId::sensorNotChecked, boxStyle::okCancel) != platform::boxAnswer::cancel;
}

void upgrade(FrmMain& form) {
    if (!operatorGoesOn()) {
        giveWindowBack(form);
        return;
    }
    if (form.LabelWriteProtect.visible) {
        desktop().msgBox(messageText::formatTest, boxStyle::ok, program::name);
        giveWindowBack(form);
        return;
    }
    frmWait().cmdCancel.enabled = false;
    run.programState = FirmComm::fncWriteStep(state::writeTransfer);
}

} // namespace

void cmdUpgrade_Click() {
    FrmMain& form = frmMain();
    try {
        if (!fileFitsSelectedRow(form)) {
            fncMsgBox(textId::fileNotAdapted, boxStyle::ok);
            return;
        }
        form.enabled = false;
        form.mousePointer = MousePointer::hourglass;
        upgrade(form);
    } catch (const std::exception&) {
        subReportError();
        run.programState = FirmComm::endFailedWrite();
    }
}

void cmdPresent_Click() {
    try {
        askForPath(DialogKind::save, run.saveFilePath);
        frmMain().enabled = false;
        run.programState = FirmComm::fncReadStep(state::readStart);
        if (run.programState == state::readClosing) {
            run.programState = FirmComm::fncReadStep(state::readClosing); // no tick would close it
        }
    } catch (const std::exception&) {
        reportUnlessCancelled();
    }
}

void CommTimer_Timer() {
    try {
        if (run.stepBusy) {
            return;
        }
        if (run.programState >= state::readBlocks && run.programState <= state::readClosing) {
            FirmComm::stepRead();
        }
        if (run.programState == state::writeClosing) {
            run.programState = FirmComm::fncWriteStep(run.programState);
        }
        if (run.programState == state::verificationDue && FirmComm::verificationSelected()) {
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
    return run.programState >= state::readBlocks && run.programState <= state::readEnd;
}

} // namespace

void Form_Load() {
    ResourceSetting::subSetFormText(frmWait().name);
}

void cmdCancel_Click() {
    constexpr int cancelCount = 10;
    if (readUnderWay()) {
        int failure = CommonComm::linkAlive() ? 0 : platform::failureNumber::portLost;
        for (int sent = 0; sent < cancelCount && failure == 0; ++sent) {
            CommonComm::subClearInput();
            failure = FirmComm::subSendRaw(xModem::can);
        }
        if (readUnderWay()) { // the box of a failure lets a tick close the read
            run.programState = state::readClosing;
        }
    }
    if (frmWaitLoaded()) {
        desktop().hide(frmWait());
    }
}

void timerWait_Timer() {
    run.waitTimedOut = true;
}

} // namespace WaitWindow
