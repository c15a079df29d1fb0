// Texts: trimming, hexadecimal, numbers in texts. Nothing here depends on the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Removes the blanks at both ends. Only the character 0x20 counts as a blank.
std::string trim(std::string_view text);

std::string upperCase(std::string_view text);                   // ASCII letters only
bool equalIgnoringCase(std::string_view a, std::string_view b); // ASCII letters only

std::string replaceAll(std::string_view text, char from, char to);

// The last `digits` upper-case hexadecimal digits of a number, padded with "0".
std::string hexText(std::uint32_t value, std::size_t digits);

// Value of one hexadecimal digit, upper or lower case; nullopt for any other character.
std::optional<std::uint8_t> hexDigit(char character);

// Parses the whole text as a number, blanks at both ends allowed: sign, digits, decimal point, exponent. Returns nullopt
// when it is not a number. Fails with failureNumber::overflow for a number too large for a double, as the next routine does.
std::optional<double> parseNumber(std::string_view text);

// Parses the number at the beginning of the text; 0 when there is none.
double leadingNumber(std::string_view text);

// The nearest whole number, ties to even. Fails with failureNumber::overflow outside 32 bits.
std::int32_t roundToWhole(double number);

// A number of thousandths, not negative, as text in the format "0.000".
std::string thousandthsText(std::int32_t thousandths);

// Converts Latin-1 to UTF-8: one character (U+0000 to U+00FF) for each byte.
std::string latin1ToUtf8(std::string_view bytes);

// The first `limit` bytes of a UTF-8 text at most; does not cut within a character.
std::string_view truncateText(std::string_view text, std::size_t limit);
