// Which device of this system a COM port number stands for, and whether it can be opened.
#pragma once

#include "platform/files.h"

#include <string>

namespace platform {

// Path of the device of that COM port, with links followed where it exists: the value of the key COM<number> in
// section DEVICE of the INI file, else COM1 to 4 are /dev/ttyS0 to 3, COM5 to 12 /dev/ttyUSB0 to 7 and COM13 to 16
// /dev/ttyACM0 to 3. Empty for any other number.
std::string portDevice(int number, Files& files, const std::string& iniPath);

// The lock file that serial programs share for the device. It counts while its owner lives; a dead owner's is
// removed. Gives the name under which the toolkit opens the device: its path, or another path of the same device
// where a dead owner's lock file cannot be removed. Fails with failureNumber::portHeld while the owner lives; the
// description calls the port by `shownName`.
std::string passPortLock(const std::string& device, const std::string& shownName);

// Removes this program's own lock file of the device: the toolkit leaves it behind when the process stops at once.
void removePortLock(const std::string& portName);

} // namespace platform
