#include "transfer/transferMode.h"

#include "base/exitCode.h"
#include "link/commPort.h"
#include "link/resultCodes.h"
#include "link/unitCommands.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/blockReader.h"
#include "transfer/outcome.h"
#include "transfer/rawWrite.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

using platform::host;

namespace FirmComm {

namespace {

constexpr int tickInterval = 100; // milliseconds
constexpr std::int16_t lastTry = 3;

std::string operate(const std::string& operation) {
    const std::string code = Common::fncOperation(operation, shared.targetUnit);
    if (!succeeded(code)) {
        portStands(); // the box of a time-out does not say that the port is gone
    }
    return code;
}

// Sends an operation until it succeeds, up to three times, and stops at once when the port is gone. shared.commRetry
// is the number of the try from the second on: 2 and 3; after three failures it is 4.
std::string operateUpToThreeTimes(const std::string& operation) {
    std::string code = operate(operation);
    if (succeeded(code)) {
        return code;
    }
    for (shared.commRetry = 2; shared.commRetry <= lastTry && portStands(); ++shared.commRetry) {
        code = operate(operation);
        if (succeeded(code)) {
            break;
        }
    }
    return code;
}

void showProgress() {
    FrmWait& form = frmWait();
    form.prbComm.value = 0;
    form.prbComm.max = imageSize;
    form.prbComm.min = 0;
    host().show(form);
}

std::string startTransfer(const std::string& operation) {
    CommonComm::serialPort().clearReceived();
    CommonComm::serialPort().clearUnsent();
    subResetReader();
    if (operation == "51") {
        const std::string prepared = operateUpToThreeTimes("50");
        if (!succeeded(prepared)) {
            return prepared;
        }
        shared.commRetry = 0;
    }
    const std::string code = operateUpToThreeTimes(operation);
    if (!succeeded(code)) {
        if (portStands()) {
            subReportError();
        }
        return {};
    }
    if (operation == "52" && subSendRaw(xModem::nak) != 0) {
        endWith(Outcome::portLost);
        return {};
    }
    showProgress();
    setCommTimer(true);
    return code;
}

} // namespace

std::string fncStartTransfer(const std::string& operation) {
    try {
        host().keepAwake(true);
        return startTransfer(operation);
    } catch (const std::exception&) {
        reportFailure();
        return {};
    }
}

void subEndTransfer() {
    const bool verify = verificationSelected();
    if (!verify) {
        setCommTimer(false);
    }
    closeTransferMode("54");
    host().doEvents();
    if (!verify) {
        closeTransferMode("53");
        host().doEvents();
    }
    unloadFrmWait();
    host().keepAwake(shared.verifying);
    frmMain().enabled = !shared.verifying;
}

void subSendCancel(bool (*underWay)()) {
    constexpr int cancelCount = 10;
    for (int sent = 0; sent < cancelCount && underWay() && portStands(); ++sent) {
        CommonComm::subClearInput();
        subSendRaw(xModem::can);
    }
}

void subBreakOff() {
    constexpr int replyTime = 1000; // milliseconds
    try {
        host().waitForBytes(host().timeGetTime() + replyTime); // a block that is on its way must end before CAN
        subSendCancel([] { return true; });
        closeTransferMode("54");
        closeTransferMode("53");
    } catch (const std::exception&) { // the program ends in any case
    }
    host().endProgram(exitCode::failed);
}

void closeTransferMode(const std::string& operation) {
    if (portStands()) {
        operate(operation);
    }
}

void setCommTimer(bool enabled) {
    frmMain().CommTimer.setEnabled(enabled);
    frmMain().CommTimer.setInterval(enabled ? tickInterval : 0);
}

bool verificationSelected() {
    return frmMain().chkVerify.value == 1;
}

void showReadNotice(std::int32_t id, int style) {
    showMessage(id, style, selectedText(textId::waitTitle));
}

} // namespace FirmComm
