#include "transfer/rawByte.h"

#include "common/variables.h"
#include "link/commPort.h"
#include "platform/desktop.h"
#include "ui/messages.h"

std::int32_t writeShowingFailure(const platform::Bytes& bytes) {
    try {
        CommonComm::serialPort().clearReceived();
        CommonComm::serialPort().write(bytes);
        return 0;
    } catch (const std::exception&) {
        const FailureReport failure = failureInFlight();
        platform::desktop().msgBox(failure.description, platform::boxStyle::critical, messageText::linkErrorTitle);
        return failure.number;
    }
}

namespace FirmComm {

void subSendRaw(const std::string& text) {
    writeShowingFailure(platform::Bytes(text.begin(), text.end()));
    run.signOfLifeAt = platform::desktop().timeGetTime();
}

void subSendRaw(std::uint8_t controlByte) {
    subSendRaw(std::string(1, static_cast<char>(controlByte)));
}

} // namespace FirmComm
