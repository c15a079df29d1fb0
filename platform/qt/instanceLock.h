// Tells whether another instance of the program runs for the same user.
#pragma once

namespace platform {

// Takes a lock that the system drops when the process ends, however it ends. False when another process holds it.
bool becomeOnlyInstance();

} // namespace platform
