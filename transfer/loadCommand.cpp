#include "transfer/loadCommand.h"

#include "firmware/firmwareFile.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "transfer/fileDialog.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"

using platform::host;

namespace MainWindow {

namespace {

void clearFileRow(FrmMain& form) {
    shared.fileVersionText.clear();
    shared.fileTypeName.clear();
    form.lblTitle[2].caption.clear();
    form.lblVersion[2].caption.clear();
    host().doEvents();
}

} // namespace

void cmdLoading_Click() {
    FrmMain& form = frmMain();
    try {
        askForPath(DialogKind::open, shared.loadFilePath);
        if (host().files().length(shared.loadFilePath) != imageSize) {
            return;
        }
        form.enabled = false;
        form.mousePointer = platform::MousePointer::hourglass;
        clearFileRow(form);
        FirmComm::loadFirmware();
        subSetAllVersion();
        host().doEvents(); // discards clicks on the disabled window before it is enabled
    } catch (const std::exception&) {
        reportUnlessCancelled();
    }
    form.enabled = true;
    form.cmdUpgrade.enabled = shared.fileLoaded;
    form.mousePointer = platform::MousePointer::arrow;
}

} // namespace MainWindow
