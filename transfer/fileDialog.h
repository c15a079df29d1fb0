// The file dialog of the load and the save command.
#pragma once

#include <string>

namespace MainWindow {

enum class DialogKind { open, save };

// Shows the dialog with the last path as its file name, and stores the path that the operator chooses. Fails with
// failureNumber::dialogCancelled.
void askForPath(DialogKind kind, std::string& path);

// subReportError(), but without a message after a cancelled dialog.
void reportUnlessCancelled();

} // namespace MainWindow
