// Command frames: one request, one reply, with time limits, busy guard, link log and failure dialog.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace CommonComm {

// Writes the frame of a command text to the port: STX, "00000" and the text in upper case, ETX, block check.
void subSendFrame(const std::string& command);

// One exchange: sends the command once and polls the port until the reply is finished or `timeoutMs` have passed. No
// window event runs meanwhile. Returns the result code; the stored bytes of the reply are in shared.replyBytes, its data
// decoded from hexadecimal pairs or, with `rawData`, unchanged. Failures of the port and of the reply leave the routine
// and leave shared.commBusy set.
std::string fncExchange(const std::string& command, bool rawData, std::int32_t timeoutMs);

// Waits up to `timeoutMs` until shared.commBusy is clear, letting window events run; clears it in any case.
void subWaitLinkFree(std::int32_t timeoutMs);

// Appends date, time and the text to the link log in the program's directory.
void subWriteLog(const std::string& text);

// Sends any command: waits for the link, exchanges, copies shared.replyBytes to `reply` and, unless
// `suppressMessage`, shows the failure dialog when the unit replies "1234" on the third try of an operation or later.
std::string fncSendCommand(const std::string& command, bool rawData, Bytes& reply, std::int32_t timeoutMs,
                           bool suppressMessage);

} // namespace CommonComm
