#include "firmware/fileDialog.h"

#include "base/failure.h"
#include "platform/desktop.h"
#include "state/variables.h"
#include "ui/forms.h"
#include "ui/messages.h"

using platform::desktop;

namespace MainWindow {

void askForPath(DialogKind kind, std::string& path) {
    platform::FileDialog& dialog = frmMain().cmdSoft;
    dialog.flags = platform::FileDialog::overwritePrompt; // ignored by an open dialog
    dialog.initialDirectory = desktop().programDirectory();
    dialog.fileName = path;
    dialog.filter = shared.binFileFilter;
    dialog.cancelError = true;
    if (kind == DialogKind::open) {
        desktop().showOpen(dialog);
    } else {
        desktop().showSave(dialog);
    }
    path = dialog.fileName;
}

void reportUnlessCancelled() {
    if (currentFailure().number != failureNumber::dialogCancelled) {
        subReportError();
    }
}

} // namespace MainWindow
