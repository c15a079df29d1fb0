#include "startup/startUpWindow.h"

#include "base/checked.h"
#include "base/exitCode.h"
#include "base/failure.h"
#include "base/flagGuard.h"
#include "configuration/iniFiles.h"
#include "link/commPort.h"
#include "link/unitCommands.h"
#include "platform/host.h"
#include "startup/identification.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"
#include "ui/resourceSetting.h"

using platform::host;
namespace boxStyle = platform::boxStyle;

namespace StartUpWindow {

bool settingPort = false;

namespace {

constexpr int portsOffered = 16;
constexpr const char* lineParameters = ",n,8,1"; // after the speed

void centre(FrmStartUp& form) {
    const platform::Size screen = host().screenSize();
    form.left = (screen.width - form.clientArea.width) / 2;
    form.top = (screen.height - form.clientArea.height) / 2;
}

void fillLists(FrmStartUp& form) {
    form.cmbBps.items = {"38400 bps"};
    form.cmbBps.listIndex = 0;
    for (int number = 1; number <= portsOffered; ++number) {
        form.cmbCom.items.push_back("COM" + std::to_string(number));
    }
    form.cmbCom.listIndex = 0;
}

void hideControls(FrmStartUp& form) {
    for (platform::Control* control :
         {&form.lblBPS, &form.lblCom, &form.cmbBps, &form.cmbCom, &form.cmdTest, &form.cmdEnd, &form.shpComm}) {
        control->visible = false;
    }
}

void offerPorts(FrmStartUp& form) {
    for (platform::Control* control : {&form.lblCom, &form.cmbCom, &form.cmdTest, &form.cmdEnd, &form.shpComm}) {
        control->visible = true;
    }
}

void selectPort(FrmStartUp& form, std::int16_t number) {
    if (number < 1 || number > portsOffered) {
        throw Failure(failureNumber::invalidProperty, "The list of ports has no COM" + std::to_string(number) + ".");
    }
    form.cmbCom.listIndex = number - 1;
}

void showMainWindow() {
    host().hide(frmStartUp());
    MainWindow::subSetAllVersion();
    host().show(frmMain());
}

void showWindow(FrmStartUp& form) {
    frmMain(); // loads it: that selects the language and requires TYPE.INI, before any text is set
    ResourceSetting::subSetFormText(form.name);
    frmMain().chkVerify.font.name = shared.screenFontName;
    if (host().previousInstance()) {
        fncMsgBox(textId::alreadyStarted, boxStyle::critical);
        host().endProgram(exitCode::failed);
    }
    Common::fncReadSetting();
    centre(form);
    fillLists(form);
    hideControls(form);
    host().show(form);
    host().doEvents();
}

void probeUnit(FrmStartUp& form) {
    selectPort(form, shared.comPortNumber);
    CommonComm::fncOpenPort(shared.comPortNumber, shared.bpsText + lineParameters);
    shared.commBusy = false;
    Bytes reply;
    const std::string result = Common::fncCommand("0501", reply);
    if (result == "0000") {
        subIdentifyUnit();
        showMainWindow();
    } else if (result == "2204") {
        shared.refusal = {"0501", result};
        host().endProgram(exitCode::unitNotReady);
    } else {
        showText(textId::portSetup, boxStyle::exclamation, shared.portSetupText);
        offerPorts(form);
    }
}

// Two tries; window events run after each failed one.
bool unitAnswers() {
    for (int tries = 0; tries < 2; ++tries) {
        Bytes reply;
        if (Common::fncCommand("0501", reply) == "0000") {
            return true;
        }
        host().doEvents();
    }
    return false;
}

void tryChosenPort(const FrmStartUp& form) {
    const std::string speedEntry = at(form.cmbBps.items, form.cmbBps.listIndex);
    const auto port = static_cast<std::int16_t>(form.cmbCom.listIndex + 1);
    CommonComm::subClosePort();
    if (!CommonComm::fncOpenPort(port, speedEntry.substr(0, speedEntry.find(' ')) + lineParameters)) {
        return;
    }
    if (!unitAnswers()) {
        fncMsgBox(textId::portNotEffective1, boxStyle::exclamation, std::to_string(port));
        return;
    }
    shared.comPortNumber = port;
    subIdentifyUnit();
    showMainWindow();
}

} // namespace

void Form_Load() {
    FrmStartUp& form = frmStartUp();
    try {
        showWindow(form);
        probeUnit(form);
    } catch (const std::exception&) {
        subReportError();
        // After any failure the operator needs a button to press.
        host().show(form);
        offerPorts(form);
    }
}

void cmdTest_Click() {
    if (settingPort) {
        return;
    }
    const FlagGuard guard(settingPort);
    tryChosenPort(frmStartUp());
}

void cmdEnd_Click() {
    host().endProgram(exitCode::done);
}

void Form_QueryUnload() {
    if (frmStartUp().visible && frmStartUp().cmdEnd.visible) {
        host().endProgram(exitCode::done);
    }
}

} // namespace StartUpWindow
