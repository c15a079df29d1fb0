// How windows and timers run the program's handlers: through the desktop, which keeps failures out of the
// toolkit's event dispatch and shows afterwards what the handler changed.
#pragma once

#include <functional>

namespace platform {

using Handler = std::function<void()>;

// Runs the handler. It takes a copy, for the form that owns the handler may be gone before the handler ends.
using Deliver = std::function<void(Handler)>;

} // namespace platform
