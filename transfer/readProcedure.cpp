#include "transfer/readProcedure.h"

#include "common/flagMark.h"
#include "common/variables.h"
#include "firmware/binaryFile.h"
#include "link/resultCodes.h"
#include "platform/desktop.h"
#include "transfer/blockReader.h"
#include "transfer/programState.h"
#include "transfer/rawByte.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"
#include "ui/messages.h"

namespace FirmComm {

namespace {

std::int32_t startRead() {
    run.readFailed = !succeeded(fncStartTransfer("52"));
    return run.readFailed ? state::readClosing : state::readBlocks;
}

std::int32_t readBlock() {
    waitForWholeBlock();
    switch (fncReadBlock()) {
    case found::block:
        subStoreBlock();
        subSendRaw(xModem::ack);
        return state::readBlocks;
    case found::eot: subSendRaw(xModem::nak); return state::readEnd;
    case found::end: return state::readClosing;
    default: return state::readBlocks;
    }
}

void saveImage() {
    if (!imageIncomplete()) {
        fncBinaryFile(run.saveFilePath, run.readBackImage, FileMode::write);
    }
}

std::int32_t awaitSecondEnd() {
    switch (fncReadBlock()) {
    case found::eot:
        subSendRaw(xModem::ack);
        tellLostBlocks();
        if (!verificationSelected()) {
            saveImage();
        }
        return state::readClosing;
    case found::end: return state::readClosing;
    default: return state::readEnd;
    }
}

std::int32_t closeRead() {
    subEndTransfer();
    if (!run.verifying) {
        setCommTimer(false);
    }
    if (!verificationSelected()) {
        showReadNotice(run.readFailed ? messageText::failedJapanese : messageText::succeedJapanese,
                       run.readFailed ? messageText::failed : messageText::succeed, platform::boxStyle::information);
    }
    return state::idle;
}

} // namespace

std::int32_t fncReadStep(std::int32_t state) {
    if (run.stepBusy) {
        return state::idle;
    }
    const FlagMark mark(run.stepBusy);
    try {
        switch (state) {
        case state::readStart: return startRead();
        case state::readBlocks: return readBlock();
        case state::readEnd: return awaitSecondEnd();
        case state::readClosing: return closeRead();
        default: return state;
        }
    } catch (const std::exception&) {
        subReportError();
        run.readFailed = true;
        return state == state::readClosing ? state::idle : state::readClosing;
    }
}

void stepRead() {
    const std::int32_t before = run.programState;
    const std::int32_t next = fncReadStep(before);
    if (run.programState == before) {
        run.programState = next;
    }
}

} // namespace FirmComm
