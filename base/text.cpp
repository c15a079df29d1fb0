#include "base/text.h"

#include "base/failure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

char upper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 32) : character;
}

std::size_t skipDigits(std::string_view text, std::size_t from) {
    while (from < text.size() && isDigit(text[from])) {
        ++from;
    }
    return from;
}

// Length of the number at the start of `text`: sign, digits with a decimal point, exponent; 0 when there is none.
std::size_t numberLength(std::string_view text) {
    const std::size_t start = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    std::size_t end = skipDigits(text, start);
    std::size_t digits = end - start;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = skipDigits(text, end + 1);
        digits += fraction - (end + 1);
        end = fraction;
    }
    if (digits == 0) {
        return 0;
    }
    if (end < text.size() && upper(text[end]) == 'E') {
        const bool sign = end + 1 < text.size() && (text[end + 1] == '+' || text[end + 1] == '-');
        const std::size_t first = end + (sign ? 2 : 1);
        const std::size_t exponent = skipDigits(text, first);
        if (exponent > first) {
            end = exponent;
        }
    }
    return end;
}

double parse(std::string_view number) {
    if (number.starts_with('+')) {
        number.remove_prefix(1);
    }
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    const bool tooSmall = number.find("e-") != std::string_view::npos || number.find("E-") != std::string_view::npos;
    if (result.ec == std::errc::result_out_of_range && !tooSmall) {
        throw Failure(failureNumber::overflow, "Overflow");
    }
    return value;
}

} // namespace

std::string trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), upper);
    return result;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char left, char right) { return upper(left) == upper(right); });
}

std::string replaceAll(std::string_view text, char from, char to) {
    std::string result(text);
    std::ranges::replace(result, from, to);
    return result;
}

std::string hexText(std::uint32_t value, std::size_t digits) {
    std::string text(digits, '0');
    for (std::size_t place = digits; place-- > 0; value >>= 4) {
        text[place] = "0123456789ABCDEF"[value & 0xF];
    }
    return text;
}

std::optional<std::uint8_t> hexDigit(char character) {
    const char c = upper(character);
    if (isDigit(c)) {
        return static_cast<std::uint8_t>(c - '0');
    }
    if (c >= 'A' && c <= 'F') {
        return static_cast<std::uint8_t>(c - 'A' + 10);
    }
    return std::nullopt;
}

std::optional<double> parseNumber(std::string_view text) {
    const std::string number = trim(text);
    if (number.empty() || numberLength(number) != number.size()) {
        return std::nullopt;
    }
    return parse(number);
}

double leadingNumber(std::string_view text) {
    const std::string trimmed = trim(text);
    const std::size_t length = numberLength(trimmed);
    return length == 0 ? 0 : parse(std::string_view(trimmed).substr(0, length));
}

std::int32_t roundToWhole(double number) {
    const double whole = std::nearbyint(number); // the default rounding mode: to nearest, ties to even
    if (!(whole >= std::numeric_limits<std::int32_t>::min() && whole <= std::numeric_limits<std::int32_t>::max())) {
        throw Failure(failureNumber::overflow, "Overflow");
    }
    return static_cast<std::int32_t>(whole);
}

std::string thousandthsText(std::int32_t thousandths) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%d.%03d", thousandths / 1000, thousandths % 1000);
    return text.data();
}

std::string latin1ToUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char character : bytes) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            text += character;
        } else {
            text += static_cast<char>(0xC0 | (code >> 6));
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

std::string_view truncateText(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    const auto continues = [](char character) { return (static_cast<unsigned char>(character) & 0xC0) == 0x80; };
    // At most three bytes follow the first one of a character; a longer run is not UTF-8 and is cut at the limit.
    std::size_t end = limit;
    while (end > 0 && limit - end < 3 && continues(text[end])) {
        --end;
    }
    return text.substr(0, continues(text[end]) ? limit : end);
}
