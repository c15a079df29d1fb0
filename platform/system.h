// The services of the system, except the windows on the screen. platform/linux and platform/windows each define all of
// them; the build compiles the folder of its target.
#pragma once

#include "platform/files.h"
#include "platform/lineDevice.h"

#include <memory>
#include <string>

namespace platform {

std::unique_ptr<LineDevice> makeLineDevice();

// Path of the device of a COM port if Setting.INI assigns none; empty: there is none.
std::string defaultDevice(int number);

std::unique_ptr<Files> makeFiles();

// Takes the instance lock: one for each user, on Windows for each logged-in session. It is released at the end of the
// process. Returns false when another process holds it.
bool takeInstanceLock();

// Blocks or allows idle suspend, sleep and lid suspend; the lock also ends with the process. Does not wait, never asks
// for a password, and has no effect where the system offers no such lock.
void keepAwake(bool on);

// Folder of the program's file, with a separator at its end.
std::string programDirectory();

// Makes the system's error texts English in every locale.
void setEnglishErrors();

// Ends the process at once; no exit handler runs.
[[noreturn]] void stopProcess(int exitCode);

} // namespace platform
