#include "link/exchange.h"

#include "base/exitCode.h"
#include "base/text.h"
#include "link/commPort.h"
#include "link/replyReceiver.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"

#include <array>

using platform::host;

namespace CommonComm {

namespace {

constexpr const char* addressAndService = "00000"; // node number, sub-address, service id
constexpr std::int32_t linkFreeLimit = 5000;
constexpr int pollsAfterBadFrame = 3;
constexpr std::int16_t reportedTry = 3;

// Polls the port until the reply is finished or until timeGetTime() > deadline.
void receiveReply(ReplyReceiver& receiver, std::int64_t deadline) {
    int passes = 0; // polls since a bad frame finished
    do {
        if (serialPort().countReceived() > 0) {
            if (receiver.take(serialPort().read())) {
                subClearInput();
            }
        } else if (!receiver.frameDone()) { // after a bad frame the next poll comes without delay
            host().waitForBytes(deadline + 1);
        }
        if (receiver.frameGood() || (receiver.frameDone() && ++passes == pollsAfterBadFrame)) {
            return;
        }
    } while (host().timeGetTime() <= deadline);
}

void subLinkFailure(const std::string& text) {
    if (fncMsgBox(textId::shutDownByCancel, platform::boxStyle::critical + platform::boxStyle::okCancel, text) ==
        platform::boxAnswer::cancel) {
        host().endProgram(exitCode::failed);
    }
}

std::string fncCheckResult(const std::string& result) {
    subLinkFailure(loadText(textId::communicationError)); // Japanese in both languages
    return result;
}

} // namespace

void subSendFrame(const std::string& command) {
    const std::string text = addressAndService + upperCase(command);
    std::uint8_t blockCheck = etx;
    for (const char character : text) {
        blockCheck ^= static_cast<std::uint8_t>(character);
    }
    platform::SerialPort& port = serialPort();
    port.write(std::array{stx});
    port.write(Bytes(text.begin(), text.end()));
    port.write(std::array{etx});
    port.write(std::array{blockCheck});
}

std::string fncExchange(const std::string& command, bool rawData, std::int32_t timeoutMs) {
    if (shared.commBusy) {
        return "9998";
    }
    shared.commBusy = true;
    const std::int64_t deadline = host().timeGetTime() + timeoutMs;
    subClearInput();
    subSendFrame(command);
    ReplyReceiver receiver(shared.replyBytes, rawData);
    receiveReply(receiver, deadline);
    shared.commBusy = false;
    if (receiver.brokenReply()) {
        subWriteLog(receiver.logText());
    }
    return receiver.result();
}

void subWaitLinkFree(std::int32_t timeoutMs) {
    const std::int64_t deadline = host().timeGetTime() + timeoutMs;
    while (shared.commBusy && host().timeGetTime() <= deadline) {
        host().waitForEvents(deadline + 1); // until timeGetTime() > deadline
    }
    shared.commBusy = false;
}

void subWriteLog(const std::string& text) {
    host().files().appendLine(host().programDirectory() + "KelpLog.txt", host().dateAndTime() + ' ' + text);
}

std::string fncSendCommand(const std::string& command, bool rawData, Bytes& reply, std::int32_t timeoutMs,
                           bool suppressMessage) {
    subWaitLinkFree(linkFreeLimit);
    const std::string result = fncExchange(command, rawData, timeoutMs);
    reply = shared.replyBytes;
    if (!suppressMessage && result == "1234" && shared.commRetry >= reportedTry) {
        return fncCheckResult(result);
    }
    return result;
}

} // namespace CommonComm
