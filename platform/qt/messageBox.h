// The modal message box.
#pragma once

#include <QWindow>

#include <string>

namespace platform {

// Shows the box above `below` (null: above nothing in particular) and gives boxAnswer::ok or boxAnswer::cancel. The
// toolkit's event loop runs meanwhile.
int showMessageBox(const std::string& text, int style, const std::string& title, QWindow* below);

} // namespace platform
