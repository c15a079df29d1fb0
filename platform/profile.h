// Reads values of INI files in UTF-8. The program reads its two files with it, the host the section [DEVICE].
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

// Longer values are cut to this number of bytes.
constexpr std::size_t profileValueLimit = 126;

// The value of `key` in `section` of the INI text, empty when there is none. Section and key are matched without
// regard to case (ASCII); blanks and tabs around section, key and value are ignored; lines end with LF or CRLF;
// a byte-order mark is skipped; lines without an equals sign or a key before it are skipped; quotes are ordinary
// characters; the first of two equal keys is used. A value is cut at profileValueLimit bytes, never within a character.
std::string profileValue(std::string_view text, std::string_view section, std::string_view key);

// A value without its comment, which begins at the first apostrophe; tabs become blanks, blanks at both ends are removed.
std::string cleanedValue(std::string_view value);

// profileValue of a file in UTF-8 or, after a byte-order mark, UTF-16; empty when it is missing or cannot be read.
std::string getPrivateProfileString(platform::Files& files, std::string_view section, std::string_view key,
                                    const std::string& path);
