// The one serial port: opening, closing, and the way in which all other routines reach it.
#pragma once

#include "platform/serialPort.h"

#include <cstdint>
#include <string>

namespace CommonComm {

// The bound port. Fails with failureNumber::objectNotSet while none is bound.
platform::SerialPort& serialPort();

// Binds the port and opens COM `portNumber` with settings of the form 38400,n,8,1. True when it is open and ready; else
// False after a message of its own, and the port is not open. A port that was open already stays as it was.
bool fncOpenPort(std::int16_t portNumber, const std::string& settings);

// Closes the port if it is open and unbinds it. Never fails.
void subClosePort();

// Throws away what has been received so far. Never fails.
void subClearInput();

// True when a port is bound, open, and its device still there.
bool linkAlive();

} // namespace CommonComm
