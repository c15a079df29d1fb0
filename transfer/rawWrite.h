// Bytes that go to the unit outside the command frames.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

// Throws away what has been received and writes the bytes. Gives 0, or the number of the port's failure, shown in a box
// with its description.
std::int32_t writeShowingFailure(const Bytes& bytes);

namespace FirmComm {

// Sends raw characters, one control byte as a rule, and notes the moment as a sign of life of the transfer. Gives 0, or
// the number of a failure that has been shown; callers go on all the same.
std::int32_t subSendRaw(const std::string& text);
std::int32_t subSendRaw(std::uint8_t controlByte);

} // namespace FirmComm
