// The write and the read procedure: state machines on run.programState, stepped by the ticks of CommTimer.
#pragma once

#include <cstdint>
#include <string>

namespace FirmComm {

// Values of run.programState. 3 and 8 to 11 are not used.
namespace programState {
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
} // namespace programState

// Does the work of one state and gives the next. Acts on writeTransfer and writeClosing; gives any other value back.
// Gives 0 and does nothing while a step is running.
std::int32_t fncWriteStep(std::int32_t state);

// The same for readStart, readBlocks, readEnd and readClosing.
std::int32_t fncReadStep(std::int32_t state);

// Takes the unit into its transfer mode by operation "51" or "52", three tries, "51" behind a "50" with three tries of its
// own; shows the progress dialog and starts CommTimer. Gives the last result code, or an empty text behind a report.
std::string fncStartTransfer(const std::string& operation);

// Takes the unit out of its transfer mode ("54", and "53" unless a verification follows), the progress dialog away, and
// enables the main window. Sends nothing when the port is gone.
void subEndTransfer();

// How a write ends that never began or broke off: subEndTransfer and the "Failed" box. Gives the next state.
std::int32_t endFailedWrite();

// 0 when run.readBackImage equals run.firmwareImage in all elements, else 1.
std::int32_t fncCompareImage();

// Reads the unit back behind a write, compares and says how it went; closes the port. Runs inside one tick; window events,
// further ticks among them, run meanwhile.
void runVerification();

bool verificationSelected();

} // namespace FirmComm
