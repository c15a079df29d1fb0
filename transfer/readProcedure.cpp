#include "transfer/readProcedure.h"

#include "base/flagGuard.h"
#include "firmware/binaryFile.h"
#include "link/resultCodes.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "transfer/blockReader.h"
#include "transfer/programState.h"
#include "transfer/rawWrite.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"

namespace FirmComm {

namespace {

std::int32_t startRead() {
    shared.readFailed = !succeeded(fncStartTransfer("52"));
    return shared.readFailed ? state::readClosing : state::readBlocks;
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
        fncBinaryFile(shared.saveFilePath, shared.readBackImage, FileMode::write);
    }
}

std::int32_t awaitSecondEnd() {
    switch (fncReadBlock()) {
    case found::eot:
        subSendRaw(xModem::ack);
        reportLostBlocks();
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
    if (!shared.verifying) {
        setCommTimer(false);
    }
    if (!verificationSelected()) {
        showReadNotice(shared.readFailed ? textId::failed : textId::succeed, platform::boxStyle::information);
    }
    return state::idle;
}

} // namespace

std::int32_t fncReadStep(std::int32_t state) {
    if (shared.stepBusy) {
        return state::idle;
    }
    const FlagGuard guard(shared.stepBusy);
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
        shared.readFailed = true;
        return state == state::readClosing ? state::idle : state::readClosing;
    }
}

void stepRead() {
    const std::int32_t before = shared.programState;
    const std::int32_t next = fncReadStep(before);
    if (shared.programState == before) {
        shared.programState = next;
    }
}

} // namespace FirmComm
