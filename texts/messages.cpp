#include "texts/messages.h"

#include "base/exitCode.h"
#include "base/failure.h"
#include "platform/host.h"
#include "texts/language.h"
#include "texts/stringTable.h"

#include <exception>

using platform::host;

namespace {

// The English row of a Japanese id with English selected; an English id stays.
std::int32_t languageRow(std::int32_t id) {
    return id % 1000 < englishOffset ? id + languageOffset() : id;
}

constexpr std::int32_t japaneseRow(std::int32_t row) {
    return row % 1000 < englishOffset ? row : row - englishOffset;
}

std::string boxText(std::int32_t row, const std::string& msg1) {
    const std::string text = loadText(row);
    switch (japaneseRow(row)) {
    case textId::receiveTimeout:
    case textId::shutDownByCancel: return msg1 + text;
    case textId::applicationError: return text + msg1;
    case textId::portNotEffective1: // Japanese in both languages
        return loadText(textId::portNotEffective1) + msg1 + loadText(textId::portNotEffective2);
    default: return text;
    }
}

} // namespace

int fncMsgBox(std::int32_t id, std::int32_t style, const std::string& msg1) {
    return showMessage(id, style, messageText::title, msg1);
}

int showMessage(std::int32_t id, std::int32_t style, const std::string& title, const std::string& msg1) {
    try {
        return showText(japaneseRow(id), style, boxText(languageRow(id), msg1), title);
    } catch (const std::exception&) {
        const FailureReport failure = currentFailure();
        showText(japaneseRow(id), platform::boxStyle::ok,
                 loadText(textId::failureNumber) + std::to_string(failure.number) + "\r\n" +
                     loadText(textId::failureContent) + failure.description,
                 loadText(textId::boxFailed));
        return 0;
    }
}

int showText(std::int32_t id, std::int32_t style, const std::string& text, const std::string& title) {
    return host().msgBox({id, text, style, title});
}

void subReportError() {
    const std::string description = currentFailure().description;
    fncMsgBox(textId::applicationError, platform::boxStyle::critical, description);
    if (description == loadText(textId::unexpected)) {
        host().endProgram(exitCode::failed);
    }
}

FailureReport currentFailure() {
    const std::exception_ptr failure = std::current_exception();
    if (!failure) {
        return {};
    }
    try {
        std::rethrow_exception(failure);
    } catch (const Failure& known) {
        return {known.number(), known.description()};
    } catch (const std::exception&) {
        return {failureNumber::unexpected, loadText(textId::unexpected)};
    }
}
