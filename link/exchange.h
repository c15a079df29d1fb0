// Command frames: one request, one reply, with time limits, busy guard, link log and failure dialog.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace CommonComm {

// Writes the frame of a command text to the port: STX, "00000" and the text in upper case, ETX, block check.
void subSendFrame(const std::string& command);

// One exchange: sends the command once and polls the port until the reply is finished or `timeoutMs` have passed. No
// window event runs meanwhile. Gives the result code; the stored bytes of the reply are in shared.replyBytes, data as
// hexadecimal pairs or, with `rawData`, as they come. Failures of the port and of the reply leave it, and
// shared.commBusy standing.
std::string fncExchange(const std::string& command, bool rawData, std::int32_t timeoutMs);

// Waits up to `timeoutMs` for shared.commBusy to fall, letting window events run, and clears it in any case.
void subWaitLinkFree(std::int32_t timeoutMs);

// Appends date, time and the text to the link log beside the program.
void subWriteLog(const std::string& text);

// The entry for all commands: waits for the link, exchanges, copies shared.replyBytes to `reply` and, unless
// `suppressMessage`, shows the failure dialog when the unit gives "1234" on the third try of an operation or later.
std::string fncSendCommand(const std::string& command, bool rawData, Bytes& reply, std::int32_t timeoutMs,
                           bool suppressMessage);

} // namespace CommonComm
