#include "transfer/transferCommands.h"

#include "common/variables.h"
#include "common/version.h"
#include "link/commPort.h"
#include "link/unitCommands.h"
#include "platform/desktop.h"
#include "platform/failure.h"
#include "transfer/procedures.h"
#include "transfer/rawByte.h"
#include "transfer/xModem.h"
#include "ui/forms.h"
#include "ui/messages.h"
#include "ui/resourceSetting.h"
#include "ui/stringTable.h"

using platform::desktop;
using platform::MousePointer;
namespace boxStyle = platform::boxStyle;
namespace programState = FirmComm::programState;

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
    run.programState = FirmComm::fncWriteStep(programState::writeTransfer);
}

void askForSaveFile(platform::FileDialog& dialog) {
    dialog.flags = platform::FileDialog::overwritePrompt;
    dialog.initialDirectory = desktop().programDirectory();
    dialog.fileName = run.saveFilePath;
    dialog.filter = run.binFileFilter;
    dialog.cancelError = true;
    desktop().showSave(dialog);
    run.saveFilePath = dialog.fileName;
}

bool under(std::int32_t first, std::int32_t last) {
    return run.programState >= first && run.programState <= last;
}

// Stores the next state, unless Cancel has set another while the step ran.
void store(std::int32_t before, std::int32_t next) {
    if (run.programState == before) {
        run.programState = next;
    }
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
        askForSaveFile(frmMain().cmdSoft);
        frmMain().enabled = false;
        run.programState = FirmComm::fncReadStep(programState::readStart);
        if (run.programState == programState::readClosing) {
            run.programState = FirmComm::fncReadStep(programState::readClosing); // CommTimer does not run
        }
    } catch (const std::exception&) {
        if (failureInFlight().number != platform::failureNumber::dialogCancelled) {
            subReportError();
        }
    }
}

void CommTimer_Timer() {
    try {
        if (run.stepBusy) {
            return;
        }
        if (under(programState::readBlocks, programState::readClosing)) {
            const std::int32_t state = run.programState;
            store(state, FirmComm::fncReadStep(state));
        }
        if (under(8, programState::writeClosing)) {
            run.programState = FirmComm::fncWriteStep(run.programState);
        }
        if (run.programState == programState::verificationDue && FirmComm::verificationSelected()) {
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
    return run.programState >= programState::readBlocks && run.programState <= programState::readEnd;
}

} // namespace

void Form_Load() {
    ResourceSetting::subSetFormText(frmWait().name);
}

void cmdCancel_Click() {
    constexpr int cancelCount = 10;
    if (readUnderWay()) {
        for (int sent = 0; sent < cancelCount && CommonComm::linkAlive(); ++sent) {
            CommonComm::subClearInput();
            FirmComm::subSendRaw(xModem::can);
        }
        if (readUnderWay()) { // events run behind a failure box
            run.programState = programState::readClosing;
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
