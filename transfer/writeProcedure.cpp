#include "transfer/writeProcedure.h"

#include "base/flagGuard.h"
#include "link/resultCodes.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/outcome.h"
#include "transfer/programState.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

namespace boxStyle = platform::boxStyle;

namespace FirmComm {

namespace {

std::int32_t transferImage() {
    if (!succeeded(fncStartTransfer("51"))) {
        endWith(Outcome::refused);
        return endFailedWrite();
    }
    if (xModem::xModemS() != 0) {
        subReportError();
        return endFailedWrite();
    }
    return state::writeClosing;
}

// The English box has a Cancel button; its answer changes nothing.
void showSuccess() {
    fncMsgBox(textId::succeed, boxStyle::information + (japaneseSelected() ? boxStyle::ok : boxStyle::okCancel));
}

std::int32_t closeWrite() {
    shared.verifying = verificationSelected();
    if (!shared.verifying) {
        endWith(Outcome::succeeded);
    }
    subEndTransfer();
    if (shared.verifying) {
        return state::verificationDue;
    }
    showSuccess();
    FrmMain& form = frmMain();
    form.mousePointer = platform::MousePointer::standard;
    form.lblVersion[form.optPresent[0].value == 1 ? 0 : 1].caption = form.lblVersion[2].caption;
    return state::idleAfterWrite;
}

} // namespace

std::int32_t fncWriteStep(std::int32_t state) {
    if (shared.stepBusy) {
        return state::idle;
    }
    const FlagGuard guard(shared.stepBusy);
    try {
        switch (state) {
        case state::writeTransfer: return transferImage();
        case state::writeClosing: return closeWrite();
        default: return state;
        }
    } catch (const std::exception&) {
        reportFailure();
        return endFailedWrite();
    }
}

std::int32_t endFailedWrite() {
    endWith(Outcome::failed);
    shared.verifying = false;
    subEndTransfer();
    setCommTimer(false);
    fncMsgBox(textId::failed, boxStyle::information);
    frmMain().mousePointer = platform::MousePointer::standard;
    return state::idleAfterWrite;
}

} // namespace FirmComm
