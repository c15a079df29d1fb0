// Converts between the system's UTF-16 and the program's UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace platform {

constexpr unsigned utf8 = 65001; // code page number
std::wstring toWide(std::string_view text, unsigned codePage = utf8);
std::string fromWide(std::wstring_view text);
bool isUtf8(std::string_view text);

// The system's code page, in which editors save text that is not Unicode. It is not CP_ACP: the program's own is UTF-8.
unsigned systemCodePage();

// The system's text for an error number of GetLastError(): English if the system has it, else in the system's language.
std::string causeText(unsigned long systemError);

} // namespace platform
