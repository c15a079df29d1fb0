// The one serial port: opening, closing, and access for all other routines.
#pragma once

#include "platform/serialPort.h"

#include <cstdint>
#include <string>

namespace CommonComm {

// The port of the last fncOpenPort. Fails with failureNumber::objectNotSet before it and after subClosePort.
platform::SerialPort& serialPort();

// Opens COM `portNumber` with settings of the form 38400,n,8,1. True when it is open and ready. Otherwise shows a message
// and returns False; the port is then not open, but a port that was open before stays open.
bool fncOpenPort(std::int16_t portNumber, const std::string& settings);

// Closes the port if it is open and drops the reference to it. Never fails.
void subClosePort();

// Opens the device of the open port again if it was pulled out and is back. Never fails.
void subReopenPort();

// Discards pending input. Never fails.
void subClearInput();

} // namespace CommonComm
