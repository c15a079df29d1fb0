#include "story/record/shortLines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <stdexcept>

namespace story {

namespace {

constexpr std::size_t fullLine = 100;   // characters, after which a block begins a new line
constexpr std::string_view mark = "| "; // before the words of a line
constexpr std::string_view again = "~ again\n";

struct Sign {
    char sign;
    std::string_view line;
};
constexpr std::array<Sign, 6> signs{{{'<', "<ACK"},
                                     {'>', "->ACK"},
                                     {'~', "~ tick CommTimer"},
                                     {'=', "~~ tick CommTimer"},
                                     {'*', "* tick CommTimer"},
                                     {'.', "time"}}};
constexpr std::array<Sign, 2> blockSigns{{{'<', "<block "}, {'>', "->block "}}}; // a number and the check bytes follow

using Number = std::uint32_t; // of a block

std::string_view withoutNumber(std::string_view text, Number& number) {
    const char* end = std::from_chars(text.data(), text.data() + text.size(), number).ptr;
    return text.substr(static_cast<std::size_t>(end - text.data()));
}

// Takes the time and the count from the beginning of a line or word.
std::string_view takePrefix(std::string_view& text) {
    const std::string_view prefix = text.substr(0, std::min(text.find_first_not_of("+/0123456789"), text.size()));
    text.remove_prefix(prefix.size());
    return prefix;
}

} // namespace

ShortLines::Change ShortLines::add(std::string_view line) {
    if (!again_.empty() && line == again_) {
        ++times_;
        text_ = std::to_string(times_);
        const std::size_t back = times_ == 2 ? 0 : std::to_string(times_ - 1).size();
        text_.insert(0, times_ == 2 ? " " : "");
        text_ += '\n';
        return {back + 1, text_};
    }
    times_ = 1;
    again_ = line.ends_with(again) ? line : "";
    if (addWord(line)) {
        return {length_ == text_.size() - 1 ? 0u : 1u, text_};
    }
    length_ = 0;
    return {0, line};
}

// False if the line has no word here. Else sets `text_` to what follows: a line, or a word of the last one.
bool ShortLines::addWord(std::string_view line) {
    line.remove_suffix(1);
    const std::string_view prefix = takePrefix(line);
    line.remove_prefix(prefix.empty() ? 0 : 1);
    const auto sign = std::ranges::find(signs, line, &Sign::line);
    const auto block =
        std::ranges::find_if(blockSigns, [&](const Sign& candidate) { return line.starts_with(candidate.line); });
    const bool begins = length_ == 0 || (sign == signs.end() && length_ >= fullLine);
    text_.assign(begins ? mark : " ");
    text_ += prefix;
    if (sign != signs.end() && !begins) {
        text_ += sign->sign;
    } else if (block != blockSigns.end()) {
        Number number = 0;
        const std::string_view check = withoutNumber(line.substr(block->line.size()), number);
        if (check.find(' ', 1) != std::string_view::npos) {
            return false;
        }
        text_ += block->sign;
        if (begins || number != block_ + 1) {
            text_ += std::to_string(number) + ':';
        }
        text_ += check.substr(1);
        block_ = number;
    } else {
        return false;
    }
    length_ = (begins ? 0 : length_) + text_.size();
    text_ += '\n';
    return true;
}

std::vector<std::string> longLines(const std::string& line) {
    if (!line.starts_with(mark)) {
        return {line};
    }
    std::vector<std::string> lines;
    Number number = 0;
    for (std::string_view rest = std::string_view(line).substr(mark.size()); !rest.empty(); rest.remove_prefix(1)) {
        std::string_view word = rest.substr(0, rest.find_first_of(" \n"));
        rest.remove_prefix(word.size());
        std::string text(takePrefix(word));
        const bool block = word.size() > 1;
        const std::span<const Sign> kinds = block ? std::span<const Sign>(blockSigns) : std::span<const Sign>(signs);
        const auto kind = std::ranges::find(kinds, word.empty() ? '\0' : word[0], &Sign::sign);
        if (kind == kinds.end() || rest.empty()) {
            throw std::invalid_argument("This cannot be read: " + line);
        }
        text += text.empty() ? "" : " ";
        text += kind->line;
        if (block) {
            ++number;
            const std::size_t colon = word.find(':');
            if (colon != std::string_view::npos) {
                withoutNumber(word.substr(1), number);
            }
            text += std::to_string(number) + ' ';
            text += word.substr(colon == std::string_view::npos ? 1 : colon + 1);
        }
        lines.push_back(text + '\n');
    }
    return lines;
}

} // namespace story
