#include "transfer/procedures.h"

#include "common/variables.h"
#include "firmware/binaryFile.h"
#include "link/commPort.h"
#include "link/resultCodes.h"
#include "link/unitCommands.h"
#include "platform/desktop.h"
#include "transfer/blockReader.h"
#include "transfer/rawByte.h"
#include "transfer/xModem.h"
#include "ui/language.h"
#include "ui/messages.h"
#include "ui/stringTable.h"

using platform::desktop;
namespace boxStyle = platform::boxStyle;

namespace FirmComm {

namespace {

constexpr int tickInterval = 100; // milliseconds
constexpr int pauseBehindVerification = 2000;
constexpr std::int16_t lastTry = 3;

bool succeeded(const std::string& code) {
    return fncResultNumber(code) == resultSuccess;
}

// Marks that a step is running, for as long as it lives.
class StepMark {
  public:
    StepMark() { run.stepBusy = true; }
    StepMark(const StepMark&) = delete;
    StepMark& operator=(const StepMark&) = delete;
    ~StepMark() { run.stepBusy = false; }
};

void setCommTimer(bool enabled) {
    frmMain().CommTimer.setEnabled(enabled);
    frmMain().CommTimer.setInterval(enabled ? tickInterval : 0);
}

std::string operate(const std::string& operation) {
    return Common::fncOperation(operation, run.targetUnit);
}

// Sends an operation again, as tries 2 and 3, until it succeeds. Gives up at once when the port is gone. Behind the last
// failure run.commRetry stands at 4.
std::string operateAgain(const std::string& operation, std::string code) {
    for (run.commRetry = 2; run.commRetry <= lastTry && CommonComm::linkAlive(); ++run.commRetry) {
        code = operate(operation);
        if (succeeded(code)) {
            break;
        }
    }
    return code;
}

std::string startTransfer(const std::string& operation) {
    CommonComm::serialPort().clearReceived();
    CommonComm::serialPort().clearUnsent();
    subResetReader();
    if (operation == "51") {
        std::string prepared = operate("50");
        if (!succeeded(prepared)) {
            prepared = operateAgain("50", prepared);
        }
        if (!succeeded(prepared)) {
            return prepared;
        }
        run.commRetry = 0;
    }
    std::string code = operate(operation);
    if (!succeeded(code)) {
        code = operateAgain(operation, code);
    }
    if (!succeeded(code)) {
        subReportError();
        return {};
    }
    if (operation == "52") {
        subSendRaw(xModem::nak);
    }
    FrmWait& form = frmWait();
    form.prbComm.value = 0;
    form.prbComm.max = imageSize;
    form.prbComm.min = 0;
    desktop().show(form);
    setCommTimer(true);
    return code;
}

// The results are not looked at. Without a port the operator has been told already.
void closeTransferMode(const std::string& operation) {
    if (CommonComm::linkAlive()) {
        operate(operation);
    }
}

void showNotice(const char* japanese, const char* english, int style) {
    const bool inJapanese = japaneseSelected();
    desktop().msgBox(inJapanese ? japanese : english, style,
                     inJapanese ? messageText::japaneseTitle : messageText::title);
}

std::int32_t transferWrite() {
    if (!succeeded(fncStartTransfer("51"))) {
        return endFailedWrite();
    }
    if (xModem::xModemS() != 0) {
        subReportError();
        return endFailedWrite();
    }
    return programState::writeClosing;
}

std::int32_t closeWrite() {
    run.verifying = verificationSelected();
    subEndTransfer();
    if (run.verifying) {
        return programState::verificationDue;
    }
    // The English box has a Cancel button; its answer changes nothing.
    const bool inJapanese = japaneseSelected();
    desktop().msgBox(inJapanese ? messageText::succeedJapanese : messageText::succeed,
                     boxStyle::information + (inJapanese ? boxStyle::ok : boxStyle::okCancel), messageText::title);
    FrmMain& form = frmMain();
    form.mousePointer = platform::MousePointer::standard;
    form.lblVersion[form.optPresent[0].value == 1 ? 0 : 1].caption = form.lblVersion[2].caption;
    return programState::idleAfterWrite;
}

std::int32_t startRead() {
    run.readRefused = !succeeded(fncStartTransfer("52"));
    return run.readRefused ? programState::readClosing : programState::readBlocks;
}

std::int32_t readBlock() {
    switch (fncReadBlock()) {
    case found::block:
        subStoreBlock();
        subSendRaw(xModem::ack);
        return programState::readBlocks;
    case found::eot: subSendRaw(xModem::nak); return programState::readEnd;
    case found::end: return programState::readClosing;
    default: return programState::readBlocks;
    }
}

void saveImage() {
    if (imageIncomplete()) {
        fncMsgBox(textId::applicationError, boxStyle::critical,
                  japaneseSelected() ? "受信できなかったデータがあります。何も保存されていません。"
                                     : "A part of the firmware was lost on the way. Nothing was saved.");
        return;
    }
    fncBinaryFile(run.saveFilePath, run.readBackImage, FileMode::write);
}

std::int32_t awaitSecondEnd() {
    switch (fncReadBlock()) {
    case found::eot:
        subSendRaw(xModem::ack);
        if (!verificationSelected()) {
            saveImage();
        }
        return programState::readClosing;
    case found::end: return programState::readClosing;
    default: return programState::readEnd;
    }
}

std::int32_t closeRead() {
    subEndTransfer();
    if (!run.verifying) {
        setCommTimer(false);
    }
    if (!verificationSelected()) {
        showNotice(run.readRefused ? messageText::failedJapanese : messageText::succeedJapanese,
                   run.readRefused ? messageText::failed : messageText::succeed, boxStyle::information);
    }
    return programState::idle;
}

std::int32_t readStep(std::int32_t state) {
    switch (state) {
    case programState::readStart: return startRead();
    case programState::readBlocks: return readBlock();
    case programState::readEnd: return awaitSecondEnd();
    case programState::readClosing: return closeRead();
    default: return state;
    }
}

std::int32_t writeStep(std::int32_t state) {
    switch (state) {
    case programState::writeTransfer: return transferWrite();
    case programState::writeClosing: return closeWrite();
    default: return state;
    }
}

void readBack() {
    frmWait().lblMsg.caption = japaneseSelected() ? "ベリファイ中..." : "Verification...";
    run.programState = programState::readStart;
    while (run.programState != programState::idle) {
        desktop().sleep(tickInterval);
        desktop().doEvents();
        run.programState = fncReadStep(run.programState);
    }
    setCommTimer(false);
    closeTransferMode("54");
    closeTransferMode("53");
}

void tellComparison() {
    if (fncCompareImage() == 0) {
        showNotice(messageText::succeedJapanese, messageText::succeed, boxStyle::information);
    } else {
        showNotice(messageText::verifyFailedJapanese, messageText::failed, boxStyle::critical);
    }
}

} // namespace

bool verificationSelected() {
    return frmMain().chkVerify.value == 1;
}

std::int32_t fncWriteStep(std::int32_t state) {
    if (run.stepBusy) {
        return programState::idle;
    }
    const StepMark mark;
    try {
        return writeStep(state);
    } catch (const std::exception&) {
        subReportError();
        return endFailedWrite();
    }
}

std::int32_t fncReadStep(std::int32_t state) {
    if (run.stepBusy) {
        return programState::idle;
    }
    const StepMark mark;
    try {
        return readStep(state);
    } catch (const std::exception&) {
        subReportError();
        run.readRefused = true;
        return state == programState::readClosing ? programState::idle : programState::readClosing;
    }
}

std::string fncStartTransfer(const std::string& operation) {
    try {
        return startTransfer(operation);
    } catch (const std::exception&) {
        subReportError();
        return {};
    }
}

void subEndTransfer() {
    const bool verify = verificationSelected();
    if (!verify) {
        setCommTimer(false);
    }
    closeTransferMode("54");
    desktop().doEvents();
    if (!verify) {
        closeTransferMode("53");
        desktop().doEvents();
    }
    unloadFrmWait();
    frmMain().enabled = !run.verifying;
}

std::int32_t endFailedWrite() {
    run.verifying = false;
    subEndTransfer();
    setCommTimer(false);
    desktop().msgBox(japaneseSelected() ? messageText::failedJapanese : messageText::failed, boxStyle::information,
                     messageText::title);
    frmMain().mousePointer = platform::MousePointer::standard;
    return programState::idleAfterWrite;
}

std::int32_t fncCompareImage() {
    return run.readBackImage == run.firmwareImage ? 0 : 1;
}

void runVerification() {
    readBack();
    CommonComm::subClosePort();
    desktop().sleep(pauseBehindVerification);
    tellComparison();
    unloadFrmWait();
    setCommTimer(false);
    run.programState = programState::verified;
    run.verifying = false;
    FrmMain& form = frmMain();
    desktop().show(form);
    form.enabled = true;
    form.mousePointer = platform::MousePointer::standard;
}

} // namespace FirmComm
