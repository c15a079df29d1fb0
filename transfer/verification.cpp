#include "transfer/verification.h"

#include "link/commPort.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/programState.h"
#include "transfer/readProcedure.h"
#include "transfer/transferMode.h"
#include "ui/forms.h"

using platform::host;

namespace FirmComm {

namespace {

constexpr int stepInterval = 100; // milliseconds
constexpr int comparisonPause = 2000;

void readBack() {
    frmWait().lblMsg.caption = selectedText(textId::verificationRuns);
    shared.programState = state::readStart;
    while (shared.programState != state::idle) {
        host().sleep(stepInterval);
        host().doEvents();
        stepRead();
    }
    setCommTimer(false);
    closeTransferMode("54");
    closeTransferMode("53");
    host().keepAwake(false);
}

void showComparison() {
    if (fncCompareImage() == 0) {
        showReadNotice(textId::succeed, platform::boxStyle::information);
    } else {
        showReadNotice(textId::verifyFailed, platform::boxStyle::critical);
    }
}

} // namespace

std::int32_t fncCompareImage() {
    return shared.readBackImage == shared.firmwareImage ? 0 : 1;
}

void runVerification() {
    readBack();
    CommonComm::subClosePort();
    host().sleep(comparisonPause);
    showComparison();
    unloadFrmWait();
    setCommTimer(false);
    shared.programState = state::verified;
    shared.verifying = false;
    FrmMain& form = frmMain();
    host().show(form);
    form.enabled = true;
    form.mousePointer = platform::MousePointer::standard;
}

} // namespace FirmComm
