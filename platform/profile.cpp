#include "platform/profile.h"

#include "base/failure.h"
#include "base/text.h"

#include <cstdint>
#include <locale>

namespace {

std::string_view trimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Removes the next line from `text` and returns it without its line end.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return trimBlanks(line);
}

// Stops at an unpaired surrogate.
std::string toUtf8(std::u16string_view text) {
    using Facet = std::codecvt<char16_t, char8_t, std::mbstate_t>;
    constexpr std::size_t longest = 3; // bytes of one unit
    std::u8string bytes(text.size() * longest, u8'\0');
    std::mbstate_t state{};
    const char16_t* rest = text.data();
    char8_t* end = bytes.data();
    std::use_facet<Facet>(std::locale::classic())
        .out(state, rest, rest + text.size(), rest, end, end + bytes.size(), end);
    return {bytes.data(), end};
}

// The file's text as UTF-8. Editors save UTF-16 too, which begins with a byte-order mark.
std::string decoded(std::string text) {
    constexpr std::string_view littleEndian = "\xFF\xFE", bigEndian = "\xFE\xFF";
    if (!text.starts_with(littleEndian) && !text.starts_with(bigEndian)) {
        return text;
    }
    const std::size_t high = text.starts_with(bigEndian) ? 0 : 1;
    std::u16string units;
    for (std::size_t at = littleEndian.size(); at + 1 < text.size(); at += 2) {
        const auto byte = [&](std::size_t place) { return static_cast<std::uint8_t>(text[at + place]); };
        units += static_cast<char16_t>(byte(high) << 8 | byte(1 - high));
    }
    return toUtf8(units);
}

} // namespace

std::string profileValue(std::string_view text, std::string_view section, std::string_view key) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    bool inSection = false;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.starts_with('[')) {
            const std::size_t end = line.find(']');
            inSection = end != std::string_view::npos &&
                        equalIgnoringCase(trimBlanks(line.substr(1, end - 1)), trimBlanks(section));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (inSection && equals != std::string_view::npos && equals > 0 &&
            equalIgnoringCase(trimBlanks(line.substr(0, equals)), trimBlanks(key))) {
            return std::string(truncateText(trimBlanks(line.substr(equals + 1)), profileValueLimit));
        }
    }
    return {};
}

std::string cleanedValue(std::string_view value) {
    return trim(replaceAll(value.substr(0, value.find('\'')), '\t', ' '));
}

std::string getPrivateProfileString(platform::Files& files, std::string_view section, std::string_view key,
                                    const std::string& path) {
    try {
        return files.exists(path) ? profileValue(decoded(files.readAll(path)), section, key) : std::string();
    } catch (const Failure&) {
        return {};
    }
}
