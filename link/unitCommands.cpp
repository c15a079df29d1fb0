#include "link/unitCommands.h"

#include "base/checked.h"
#include "base/failure.h"
#include "base/text.h"
#include "link/exchange.h"
#include "link/replyReceiver.h"
#include "link/resultCodes.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"

#include <algorithm>

using CommonComm::fncSendCommand;
using CommonComm::replyData;

namespace Common {

namespace {

constexpr std::int32_t operationTimeout = 10000;

// Runs a command routine and shows its failure. `command` sets `result` as soon as it has one.
template <class Command>
std::string commandRoutine(Command command) {
    std::string result;
    try {
        command(result);
        return result;
    } catch (const std::exception&) {
        fncMsgBox(trim(result).empty() ? textId::receiveTimeout : textId::applicationError,
                  platform::boxStyle::critical, result);
        return "9999";
    }
}

std::string twoCharacters(const Bytes& reply, std::int32_t index) {
    const std::string bytes{static_cast<char>(at(reply, index)), static_cast<char>(at(reply, index + 1))};
    return latin1ToUtf8(bytes);
}

std::int32_t wholeNumber(const std::string& text) {
    const auto number = parseNumber(text);
    if (!number) {
        throw Failure(failureNumber::typeMismatch, "\"" + text + "\" is not a number.");
    }
    return roundToWhole(*number);
}

} // namespace

std::string fncCommand(const std::string& command, Bytes& reply) {
    return commandRoutine(
        [&](std::string& result) { result = fncSendCommand(command, true, reply, commandTimeout, false); });
}

std::string fncReadUnitState(const std::string& command, Bytes& reply) {
    return commandRoutine([&](std::string& result) {
        shared.unitStateText.clear();
        shared.sensorCount = 0;
        result = fncSendCommand(command, true, reply, commandTimeout, false);
        if (result == "0000") {
            shared.unitStateText = twoCharacters(reply, replyData);
            shared.sensorCount = wholeNumber(twoCharacters(reply, replyData + 2));
        }
    });
}

std::string fncReadArea(const std::string& area, std::int16_t address, std::int32_t count, Bytes& reply,
                        std::int32_t timeoutMs, bool suppressMessage) {
    return commandRoutine([&](std::string& result) {
        const std::string text = "0101" + area + hexText(static_cast<std::uint32_t>(address), 4) + "00" +
                                 hexText(static_cast<std::uint32_t>(count), 4);
        result = fncSendCommand(text, false, reply, timeoutMs, suppressMessage);
    });
}

std::string fncOperation(const std::string& operation, std::int16_t unit) {
    return commandRoutine([&](std::string& result) {
        const bool startsTransfer = operation == "51" || operation == "52";
        const std::string text =
            "3005" + operation + hexText(static_cast<std::uint32_t>(unit), 2) + (startsTransfer ? "0C00" : "0000");
        Bytes reply;
        result = fncSendCommand(text, false, reply, operationTimeout, false);
    });
}

} // namespace Common

namespace FirmComm {

std::int32_t fncCheckTarget() {
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    Bytes reply;
    const std::string code = Common::fncCommand("0101D40001000001", reply);
    return code.size() == 4 && std::ranges::all_of(code, isDigit) ? std::stoi(code) : resultOther;
}

} // namespace FirmComm
