#include "platform/profile.h"

#include "base/failure.h"
#include "base/text.h"

namespace {

std::string_view trimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Removes the next line from `text` and gives it without its line end.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return trimBlanks(line);
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
            return std::string(cutText(trimBlanks(line.substr(equals + 1)), profileValueLimit));
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
        return files.exists(path) ? profileValue(files.readAll(path), section, key) : std::string();
    } catch (const Failure&) {
        return {};
    }
}
