#include "app/program.h"

#include "configuration/iniFiles.h"
#include "platform/host.h"
#include "startup/startUpWindow.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "transfer/blockReader.h"
#include "transfer/loadCommand.h"
#include "transfer/outcome.h"
#include "transfer/transferCommands.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"
#include "ui/resourceSetting.h"

#include <functional>

namespace program {

namespace {

// Handlers report their failures themselves. This reports any that is left, on every host: none reaches a toolkit.
template <class Handler>
std::function<void()> event(Handler handler) {
    return [handler] {
        try {
            handler();
        } catch (const std::exception&) {
            subReportError();
        }
    };
}

void bindStartUp(FrmStartUp& form) {
    form.load = event(StartUpWindow::Form_Load);
    form.queryUnload = event(StartUpWindow::Form_QueryUnload);
    form.cmdTest.click = event(StartUpWindow::cmdTest_Click);
    form.cmdEnd.click = event(StartUpWindow::cmdEnd_Click);
}

void bindMain(FrmMain& form) {
    form.load = event(MainWindow::Form_Load);
    form.queryUnload = event(MainWindow::Form_QueryUnload);
    form.optPresent[0].click = event([] { MainWindow::optPresent_Click(0); });
    form.optPresent[1].click = event([] { MainWindow::optPresent_Click(1); });
    form.optLanguage[0].click = event(ResourceSetting::optLanguage_Click);
    form.optLanguage[1].click = event(ResourceSetting::optLanguage_Click);
    form.cmdLoading.click = event(MainWindow::cmdLoading_Click);
    form.cmdUpgrade.click = event(MainWindow::cmdUpgrade_Click);
    form.cmdPresent.click = event(MainWindow::cmdPresent_Click);
    form.cmdEnd.click = event(MainWindow::cmdEnd_Click);
    form.CommTimer.tick = event(MainWindow::CommTimer_Timer);
}

// A close request is ignored: the transfer unloads the dialog.
void bindWait(FrmWait& form) {
    form.load = event(WaitWindow::Form_Load);
    form.cmdCancel.click = event(WaitWindow::cmdCancel_Click);
    form.timerWait.tick = event(WaitWindow::timerWait_Timer);
}

void selectJapanese() {
    FrmMain& form = frmMain();
    form.optLanguage[0].value = 1;
    form.optLanguage[1].value = 0;
    ResourceSetting::optLanguage_Click();
}

} // namespace

void bindEvents() {
    setFormBinders({bindStartUp, bindMain, bindWait});
    platform::host().endRequested = event(FirmComm::subBreakOff);
}

void startIn(Language language) {
    resetForms();
    shared = {};
    Common::ini = {};
    StartUpWindow::settingPort = false;
    FirmComm::reader = {};
    FirmComm::lossShown = xModem::waitTimedOut = false;
    bindEvents();
    if (language == Language::japanese) {
        selectJapanese();
    }
    frmStartUp();
}

void start() {
    startIn(Language::english);
}

} // namespace program
