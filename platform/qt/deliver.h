// Windows and timers run the program's handlers through the host, which then shows what the handler has changed. No failure
// leaves a handler: a host is no place to report it.
#pragma once

#include <functional>

namespace platform {

using Handler = std::function<void()>;

// Runs the handler. It takes a copy, since the handler may destroy the form that owns it.
using Deliver = std::function<void(Handler)>;

} // namespace platform
