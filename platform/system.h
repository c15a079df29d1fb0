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

// Blocks or allows idle suspend, sleep, lid suspend and shutdown; the lock also ends with the process. Does not wait,
// never asks for a password, and has no effect where the system offers no such lock.
void keepAwake(bool on);

// While on, the first request of the system to end the process (on Linux SIGTERM, SIGHUP or SIGINT) is only noted.
// Turned off, it ends the process if there was one.
void holdTermination(bool on);
bool terminationRequested();

// Makes the system accept windows that do not answer for some seconds, as in a wait for a reply.
void allowSlowWindows();

// True for a message of the system to a window, in the toolkit's native form, at which the system runs a loop of its own
// while the program stands still: the title bar is held, or the system menu opens.
bool beginsSystemLoop(const void* message);

// Folder of the program's file, with a separator at its end.
std::string programDirectory();

// Makes the system's error texts English in every locale.
void setEnglishErrors();

// Name, version and processor of the system.
std::string systemName();

// Ends the process at once; no exit handler runs.
[[noreturn]] void stopProcess(int exitCode);

} // namespace platform
