#include "transfer/rawWrite.h"

#include "link/commPort.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/blockReader.h"
#include "transfer/outcome.h"

#include <utility>

std::int32_t writeShowingFailure(const Bytes& bytes) {
    try {
        CommonComm::serialPort().clearReceived();
        CommonComm::serialPort().write(bytes);
        return 0;
    } catch (const std::exception&) {
        const FailureReport failure = currentFailure();
        if (!std::exchange(FirmComm::lossShown, true)) {
            showText(textId::rawWriteFailed, platform::boxStyle::critical, failure.description,
                     selectedText(textId::rawWriteFailed));
        }
        return failure.number;
    }
}

namespace FirmComm {

std::int32_t subSendRaw(const std::string& text) {
    const std::int32_t failure = writeShowingFailure(Bytes(text.begin(), text.end()));
    reader.lastActivityAt = platform::host().timeGetTime();
    return failure;
}

std::int32_t subSendRaw(std::uint8_t controlByte) {
    return subSendRaw(std::string(1, static_cast<char>(controlByte)));
}

} // namespace FirmComm
