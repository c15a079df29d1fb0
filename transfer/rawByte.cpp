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

std::int32_t subSendRaw(const std::string& text) {
    const std::int32_t failure = writeShowingFailure(platform::Bytes(text.begin(), text.end()));
    run.signOfLifeAt = platform::desktop().timeGetTime();
    return failure;
}

std::int32_t subSendRaw(std::uint8_t controlByte) {
    return subSendRaw(std::string(1, static_cast<char>(controlByte)));
}

} // namespace FirmComm
