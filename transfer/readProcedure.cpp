#include "transfer/readProcedure.h"

#include "base/flagGuard.h"
#include "firmware/binaryFile.h"
#include "link/resultCodes.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "transfer/blockReader.h"
#include "transfer/outcome.h"
#include "transfer/programState.h"
#include "transfer/rawWrite.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"

namespace FirmComm {

namespace {

std::int32_t startRead() {
    if (!succeeded(fncStartTransfer("52"))) {
        endWith(Outcome::refused);
        return state::readClosing;
    }
    return state::readBlocks;
}

// Sends a control byte. If it cannot go out, the read ends here: the unit would send the last block again.
std::int32_t answer(std::uint8_t controlByte, std::int32_t next) {
    if (subSendRaw(controlByte) == 0) {
        return next;
    }
    endWith(Outcome::portLost);
    return state::readClosing;
}

std::int32_t readBlock() {
    waitForWholeBlock();
    switch (fncReadBlock()) {
    case found::block: subStoreBlock(); return answer(xModem::ack, state::readBlocks);
    case found::eot: return answer(xModem::nak, state::readEnd);
    case found::end: return state::readClosing;
    default: return state::readBlocks;
    }
}

// A read with verification selected that no write precedes keeps nothing.
bool useImage() {
    if (shared.verifying) {
        return fncCompareImage() == 0;
    }
    return verificationSelected() ||
           fncBinaryFile(shared.saveFilePath, shared.readBackImage, FileMode::write) == imageSize;
}

std::int32_t takeEnd() {
    const std::int32_t next = answer(xModem::ack, state::readClosing);
    if (shared.outcome == Outcome::none) {
        reportLostBlocks();
        const bool used = !imageIncomplete() && useImage();
        endWith(used && imageArrived() ? Outcome::succeeded : Outcome::failed);
    }
    return next;
}

std::int32_t awaitSecondEnd() {
    switch (fncReadBlock()) {
    case found::eot: return takeEnd();
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
        const bool failed = shared.outcome == Outcome::portLost || shared.outcome == Outcome::refused;
        showReadNotice(failed ? textId::failed : textId::succeed, platform::boxStyle::information);
    }
    return state::idle;
}

} // namespace

std::int32_t fncCompareImage() {
    return shared.readBackImage == shared.firmwareImage ? 0 : 1;
}

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
        reportFailure();
        endWith(Outcome::failed);
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
