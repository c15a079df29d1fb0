// One value of an INI file, UTF-8. The program reads its two files with it, the desktop the section of devices.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

// The most bytes of a value that are given.
constexpr std::size_t profileValueLimit = 126;

// The value of `key` in `section` of the INI text, empty when there is none. Section and key are matched without
// regard to case (ASCII); blanks and tabs around section, key and value do not count; lines end with LF or CRLF;
// a byte-order mark is skipped; lines without an equals sign or a key ahead of it are skipped; quotes are ordinary
// characters; the first of two equal keys wins. At most profileValueLimit bytes are given, never half a character.
std::string profileValue(std::string_view text, std::string_view section, std::string_view key);

// A value as the program takes it: ahead of the first apostrophe, tabs as blanks, without blanks at both ends.
std::string cleanedValue(std::string_view value);

// profileValue of a file; empty when the file is missing or cannot be read.
std::string getPrivateProfileString(platform::Files& files, std::string_view section, std::string_view key,
                                    const std::string& path);
