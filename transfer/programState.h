// Values of shared.programState, the state of the transfer procedures.
#pragma once

#include <cstdint>

namespace FirmComm {

// A read has the numbers 1 to 5, a write 6 to 12. They need no states 3 and 8 to 11: state 7 is the whole transfer.
namespace state {
constexpr std::int32_t idle = 0; // at program start, and after a read
constexpr std::int32_t readStart = 1;
constexpr std::int32_t readBlocks = 2;
constexpr std::int32_t readEnd = 4; // first EOT answered, waiting for the second
constexpr std::int32_t readClosing = 5;
constexpr std::int32_t idleAfterWrite = 6; // after a write without verification, or one that failed
constexpr std::int32_t writeTransfer = 7;  // start and the whole XMODEM transfer
constexpr std::int32_t writeClosing = 12;
constexpr std::int32_t verificationDue = 13;
constexpr std::int32_t verified = 14; // the port is closed
} // namespace state

} // namespace FirmComm
