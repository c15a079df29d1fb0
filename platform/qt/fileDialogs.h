// The dialogs for opening and saving a file. They are the toolkit's own, so they are the same on every host.
#pragma once

#include "platform/host.h"

namespace platform {

enum class FileDialogKind { open, save };

// Shows the dialog, see Host::showOpen. The toolkit's event loop runs meanwhile.
void showFileDialog(FileDialog& dialog, FileDialogKind kind);

} // namespace platform
