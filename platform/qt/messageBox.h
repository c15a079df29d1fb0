// The modal message box.
#pragma once

#include <string>

namespace platform {

// Shows the box and gives boxAnswer::ok or boxAnswer::cancel. The toolkit's event loop runs meanwhile.
int showMessageBox(const std::string& text, int style, const std::string& title);

} // namespace platform
