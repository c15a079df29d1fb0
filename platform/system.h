// The services of the system beside the windows. platform/posix and platform/windows each define all of them; the build
// takes the folder of its target.
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

// Takes a lock that belongs to the user, or to the logged-in session where the system separates sessions. The lock ends
// with the process. Returns false when another process holds it.
bool becomeOnlyInstance();

// Blocks or allows idle suspend, sleep and lid suspend; the lock also ends with the process. Does not wait, never asks
// for a password, and has no effect where the system offers no such lock.
void keepAwake(bool on);

// The texts of the system's errors read the same under every locale from now on.
void keepErrorsInEnglish();

// Ends the process at once; no exit handler runs.
[[noreturn]] void stopProcess();

} // namespace platform
