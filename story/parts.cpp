#include "story/parts.h"

#include <algorithm>

namespace story {

Parts partsOf(std::string_view text, const std::function<bool(std::string_view line)>& begins) {
    Parts parts(1);
    for (; !text.empty(); text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1)) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (begins(line)) {
            parts.emplace_back();
        }
        parts.back() += text.substr(0, line.size() + 1);
    }
    return parts;
}

Parts partsOf(std::string_view text, std::string_view mark) {
    return partsOf(text, [mark](std::string_view line) { return line.starts_with(mark); });
}

Parts linesOf(std::string_view text) {
    Parts lines = partsOf(text, [](std::string_view) { return true; });
    lines.erase(lines.begin());
    return lines;
}

std::string join(const Parts& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += part;
    }
    return text;
}

} // namespace story
