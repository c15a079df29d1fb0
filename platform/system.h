// What the system gives beside the windows. platform/posix and platform/windows each define all of it; the build takes
// the folder of its target.
#pragma once

#include "platform/files.h"
#include "platform/lineDevice.h"

#include <memory>
#include <string>

namespace platform {

std::unique_ptr<LineDevice> makeLineDevice();

// Path of the device that a COM port number stands for when Setting.INI names none; empty: there is none.
std::string usualDevice(int number);

std::unique_ptr<Files> makeFiles();

// Takes a lock for the user that ends with the process, however it ends. False when another process holds it.
bool becomeOnlyInstance();

// Keeps the computer from going to sleep by itself, or no longer; ends with the process too. Does not wait, asks nobody,
// and does without where the system offers nothing of the kind.
void keepAwake(bool on);

// Ends the process at once; no exit handler runs.
[[noreturn]] void stopProcess();

} // namespace platform
