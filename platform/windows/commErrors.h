// What the system's errors mean for a serial line.
#pragma once

namespace platform {

// The failureNumber of an open that has failed with that error.
int openFailureNumber(unsigned long systemError);

// True when the error says that the device is not there any more.
bool isGone(unsigned long systemError);

} // namespace platform
