#include "startup/identification.h"

#include "base/checked.h"
#include "base/exitCode.h"
#include "base/text.h"
#include "configuration/iniFiles.h"
#include "link/replyReceiver.h"
#include "link/unitCommands.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "texts/stringTable.h"

using CommonComm::replyData;
using platform::host;
namespace boxStyle = platform::boxStyle;

namespace StartUpWindow {

namespace {

constexpr std::int32_t firstVersionByte = replyData + 2; // of the area D4, to its end
constexpr std::int32_t typeKeyByte = replyData + 3;      // of the area D5
constexpr std::size_t modelLength = 16;                  // characters of the identification text
constexpr std::size_t versionLength = 6;

// Ends the program after the box, whatever the answer.
void refuseUnit(std::int32_t id, std::int32_t style) {
    fncMsgBox(id, style);
    host().endProgram(exitCode::unitNotReady);
}

// Ends the program without a box. A host without windows says why.
void refuseSilently(const std::string& command, const std::string& result) {
    shared.refusal = {command, result};
    host().endProgram(exitCode::unitNotReady);
}

void requireOneSensor() {
    if (shared.unitStateText == "01" || shared.sensorCount == 0) {
        refuseUnit(textId::unitNotConnected, boxStyle::critical);
    } else if (shared.sensorCount != 1) {
        refuseUnit(textId::notOnlyOneSensor,
                   boxStyle::question + (japaneseSelected() ? boxStyle::ok : boxStyle::okCancel));
    }
}

// Most significant byte first.
std::int32_t rawVersionOf(const Bytes& reply) {
    double value = 0;
    for (std::size_t index = firstVersionByte; index < reply.size(); ++index) {
        value = value * 256 + reply[index];
    }
    return roundToWhole(value);
}

void takeAmplifier(std::int32_t rawVersion, const Bytes& typeReply) {
    std::int32_t version = 0;
    if (typeReply.size() > typeKeyByte) {
        const std::string typeKey = hexText(typeReply[typeKeyByte], 2).substr(0, 1);
        Common::fncGetAmpType(typeKey, rawVersion, shared.ampTypeName, version);
    }
    shared.ampVersionText = thousandthsText(version);
}

void takeInterfaceUnit(const Bytes& reply) {
    const std::string idText = replaceAll(std::string(reply.begin() + replyData, reply.end()), '\0', ' ');
    const std::string_view model = std::string_view(idText).substr(0, modelLength);
    shared.ifuTypeName = trim(Common::fncGetIfuType(trim(latin1ToUtf8(model)), "IFU_TYPE"));
    const std::size_t v = idText.find('V', modelLength - 1);
    if (v != std::string::npos) {
        shared.ifuVersionText = latin1ToUtf8(std::string_view(idText).substr(v + 1, versionLength));
    }
    shared.ifuVersionText = trim(shared.ifuVersionText);
}

void identify() {
    Bytes reply;
    if (const std::string result = Common::fncReadUnitState("0601", reply); result != "0000") {
        if (result != "1004") {
            refuseSilently("0601", result);
        }
        shared.ifuVersionText.clear();
        return;
    }
    requireOneSensor();
    shared.targetUnit = 1;
    const auto readArea = [&](const char* area) {
        return Common::fncReadArea(area, shared.targetUnit, 1, reply, Common::commandTimeout, false);
    };
    if (const std::string result = readArea("D4"); result != "0000") {
        if (result != "2204") {
            refuseSilently("D4", result);
        }
        return;
    }
    const std::int32_t rawVersion = rawVersionOf(reply);
    if (const std::string result = readArea("D5"); result != "0000") {
        refuseSilently("D5", result);
    }
    takeAmplifier(rawVersion, reply);
    shared.ifuVersionText.clear();
    shared.ifuTypeName.clear();
    if (const std::string result = Common::fncCommand("0501", reply); result != "0000") {
        refuseSilently("0501", result);
    }
    takeInterfaceUnit(reply);
}

} // namespace

void subIdentifyUnit() {
    try {
        identify();
    } catch (const std::exception&) {
        subReportError();
    }
}

} // namespace StartUpWindow
