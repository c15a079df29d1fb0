// The message boxes: texts of the string table, and the report of run-time failures.
#pragma once

#include <cstdint>
#include <string>

namespace messageText {
constexpr const char* title = "Tarn Beacon"; // of nearly every box
} // namespace messageText

// Shows the text of `id` under the title "Tarn Beacon"; with English selected, the English text of a Japanese `id`. `msg1`
// goes in front of receiveTimeout and shutDownByCancel, after applicationError and into portNotEffective1. Returns 1 for OK,
// 2 for Cancel; 0 after a failure of its own, which it has shown in a box.
int fncMsgBox(std::int32_t id, std::int32_t style, const std::string& msg1 = {});

// The same under another title.
int showMessage(std::int32_t id, std::int32_t style, const std::string& title, const std::string& msg1 = {});

// The same with a text that is not the row of the selected language alone: a composed one, or one that is Japanese in both
// languages. Returns 1 for OK, 2 for Cancel.
int showText(std::int32_t id, std::int32_t style, const std::string& text,
             const std::string& title = messageText::title);

// Shows applicationError and the description of the current exception, which is empty when there is none. An exception
// other than Failure counts as unexpected and ends the program after the box.
void subReportError();

// The current exception, of any type; number 0 and no text when there is none.
struct FailureReport {
    int number = 0;
    std::string description;
};
FailureReport currentFailure();
