// The modal message box.
#pragma once

#include "platform/host.h"

namespace platform {

// Shows the box and returns boxAnswer::ok or boxAnswer::cancel. The toolkit's event loop runs meanwhile.
int showMessageBox(const Message& message);

} // namespace platform
