// The texts of a session's lines (docs/SESSIONS.md): bytes, contents of files, names. Each of them can be read back; the
// programs only write them, story/ reads them.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace story {

// A text on one line: "\n" is a line feed, "\\" a backslash, "\1F" another control character or a byte that is not UTF-8.
std::string escaped(std::string_view text);
// Reads it back. Fails with std::invalid_argument if the text ends within an escape.
std::string unescaped(std::string_view line);

// The byte of two hexadecimal digits at the start of the text. Fails with std::invalid_argument without them.
std::uint8_t hexByte(std::string_view text);

// Bytes of the line: control characters by name, printable text in quotes, others as "\1F"; more than 48 bytes as "="
// and base 85.
std::string bytesText(std::span<const std::uint8_t> bytes);
Bytes bytesOfText(std::string_view text);

// The content of a file, in rows that begin with a blank: a line of text after a quote, a run of equal bytes as ":FF 3840",
// or up to 96 bytes in base 85. Each row ends with a line feed.
std::string rowsOf(std::string_view content);
std::string contentOfRows(std::string_view rows);

// Base 85 with the alphabet of RFC 1924: five characters for four bytes, n + 1 for a rest of n.
std::string base85(std::span<const std::uint8_t> bytes);
Bytes bytesOfBase85(std::string_view text);

// FNV-1a, 64 bits, as 16 hexadecimal digits.
std::string digestOf(std::span<const std::uint8_t> bytes);

} // namespace story
