// The system's texts are UTF-16, the program's UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace platform {

constexpr unsigned utf8 = 65001; // its number as a code page
std::wstring toWide(std::string_view text, unsigned codePage = utf8);
std::string fromWide(std::wstring_view text);
bool isUtf8(std::string_view text);

// The code page in which the system's editors save what is not Unicode; the program's own is UTF-8.
unsigned systemCodePage();

// The system's text of an error (GetLastError): in English where the system has that, else in its own language.
std::string causeText(unsigned long systemError);

} // namespace platform
