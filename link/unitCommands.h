// The commands that the unit knows. Each goes out once per call and gives its result code; none lets a failure out: a
// run-time failure is shown in a box and gives "9999". `reply` receives shared.replyBytes, whatever the unit answered; a
// run-time failure during the exchange leaves it.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace Common {

constexpr std::int32_t commandTimeout = 5000; // milliseconds

// Sends `command` with raw data and the limit commandTimeout.
std::string fncCommand(const std::string& command, Bytes& reply);

// The same for "0601", and takes shared.unitStateText and shared.sensorCount from the reply; without "0000" they are empty
// and 0.
std::string fncReadUnitState(const std::string& command, Bytes& reply);

// Reads `count` elements of the area "D4" or "D5" from `address` on; hexadecimal data.
std::string fncReadArea(const std::string& area, std::int16_t address, std::int32_t count, Bytes& reply,
                        std::int32_t timeoutMs, bool suppressMessage);

// Gives an operation ("50" to "54") to the unit 1 (amplifier) or 0 (interface unit); limit 10000 ms.
std::string fncOperation(const std::string& operation, std::int16_t unit);

} // namespace Common

namespace FirmComm {

// Asks whether the unit answers: the result code as a number, 0 for success; 8 for a code that is no decimal number.
std::int32_t fncCheckTarget();

} // namespace FirmComm
