// Bytes that go to the unit outside the command frames.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

// Discards received bytes and writes the bytes. Returns 0, or the number of the port's failure. A box shows its
// description, unless one has in this operation.
std::int32_t writeShowingFailure(const Bytes& bytes);

namespace FirmComm {

// Sends raw characters, usually one control byte, and stores the time as the last activity of the transfer. Returns 0,
// or the number of a failure that has been shown.
std::int32_t subSendRaw(const std::string& text);
std::int32_t subSendRaw(std::uint8_t controlByte);

} // namespace FirmComm
