#include "transfer/fileDialog.h"

#include "base/failure.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "ui/forms.h"

using platform::host;

namespace MainWindow {

void askForPath(DialogKind kind, std::string& path) {
    platform::FileDialog& dialog = frmMain().cmdSoft;
    dialog.flags = platform::FileDialog::overwritePrompt; // ignored by an open dialog
    dialog.initialDirectory = host().programDirectory();
    dialog.fileName = path;
    dialog.filter = shared.binFileFilter;
    dialog.cancelError = true;
    if (kind == DialogKind::open) {
        host().showOpen(dialog);
    } else {
        host().showSave(dialog);
    }
    path = dialog.fileName;
}

void reportUnlessCancelled() {
    if (currentFailure().number != failureNumber::dialogCancelled) {
        subReportError();
    }
}

} // namespace MainWindow
