// What the load and the save command share of the file dialog.
#pragma once

#include <string>

namespace MainWindow {

enum class DialogKind { open, save };

// Shows the dialog, with the path chosen last as its file name, and stores the path that the operator gives. Fails with
// failureNumber::dialogCancelled.
void askForPath(DialogKind kind, std::string& path);

// subReportError, but a cancelled dialog passes in silence.
void reportUnlessCancelled();

} // namespace MainWindow
