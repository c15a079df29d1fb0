#include "platform/windows/commErrors.h"

#include "base/failure.h"

#include <algorithm>
#include <array>
#include <windows.h>

namespace platform {

int openFailureNumber(unsigned long systemError) {
    switch (systemError) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_UNIT:
    case ERROR_DEV_NOT_EXIST: return failureNumber::portMissing;
    case ERROR_ACCESS_DENIED: // another program has the port open
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY: return failureNumber::portHeld;
    default: return isGone(systemError) ? failureNumber::portMissing : failureNumber::portRefused;
    }
}

// Drivers report different errors after their adapter has been pulled out.
bool isGone(unsigned long systemError) {
    constexpr unsigned long noSuchDevice = 433; // ERROR_NO_SUCH_DEVICE; some headers lack it
    constexpr std::array<unsigned long, 12> errors{
        ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE,       ERROR_NOT_READY,
        ERROR_BAD_COMMAND,    ERROR_GEN_FAILURE,   ERROR_BROKEN_PIPE,          ERROR_OPERATION_ABORTED,
        ERROR_IO_DEVICE,      noSuchDevice,        ERROR_DEVICE_NOT_CONNECTED, ERROR_DEVICE_REMOVED,
    };
    return std::ranges::find(errors, systemError) != errors.end();
}

} // namespace platform
