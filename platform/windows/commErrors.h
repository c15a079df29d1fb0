// Classifies system errors of a serial line.
#pragma once

namespace platform {

// The failureNumber for an open that fails with this error.
int openFailureNumber(unsigned long systemError);

// True when the error means that the device has been removed.
bool isGone(unsigned long systemError);

} // namespace platform
