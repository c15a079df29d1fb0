#include "transfer/verification.h"

#include "link/commPort.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/blockReader.h"
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

// Silence and Cancel leave the comparison to decide; the loss of the port or of a part does not.
void showComparison() {
    const bool equal = shared.outcome != Outcome::portLost && !imageIncomplete() && fncCompareImage() == 0;
    if (shared.outcome != Outcome::portLost && shared.outcome != Outcome::cancelled) {
        shared.outcome = equal && imageArrived() ? Outcome::succeeded : Outcome::failed;
    }
    if (equal) {
        showReadNotice(textId::succeed, platform::boxStyle::information);
    } else {
        showReadNotice(textId::verifyFailed, platform::boxStyle::critical);
    }
}

} // namespace

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
