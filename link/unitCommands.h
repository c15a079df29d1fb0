// The commands of the unit. Each is sent once per call and returns its result code. A run-time failure is shown in a box and
// returns "9999". `reply` receives shared.replyBytes, whatever the result; a run-time failure during the exchange leaves it
// unchanged.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace Common {

constexpr std::int32_t commandTimeout = 5000; // milliseconds

// Sends `command` with raw data and the limit commandTimeout.
std::string fncCommand(const std::string& command, Bytes& reply);

// The same for "0601"; also sets shared.unitStateText and shared.sensorCount from the reply, to empty and 0 if the result
// is not "0000".
std::string fncReadUnitState(const std::string& command, Bytes& reply);

// Reads `count` elements of the area "D4" or "D5" from `address` on; hexadecimal data.
std::string fncReadArea(const std::string& area, std::int16_t address, std::int32_t count, Bytes& reply,
                        std::int32_t timeoutMs, bool suppressMessage);

// Sends an operation ("50" to "54") for the unit 1 (amplifier) or 0 (interface unit); limit 10000 ms.
std::string fncOperation(const std::string& operation, std::int16_t unit);

} // namespace Common

namespace FirmComm {

// Checks that the unit answers. Returns the result code as a number, 0 for success; 8 for a code that is no decimal number.
std::int32_t fncCheckTarget();

} // namespace FirmComm
