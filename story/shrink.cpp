#include "story/shrink.h"

#include "story/parts.h"
#include "story/player.h"
#include "story/record/recording.h"
#include "story/record/text.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace story {

namespace {

using Kept = std::vector<std::size_t>; // numbers of the parts that stay

std::string lineAt(const std::string& text, std::size_t at) {
    return text.substr(at, text.find('\n', at) - at);
}

std::string firstViolation(const std::string&, const std::string& played) {
    const std::size_t at = played.find("\nVIOLATION: ");
    return at == std::string::npos ? "" : lineAt(played, at + 1);
}

// Where the first line that differs begins, in both texts.
std::size_t differingLine(const std::string& written, const std::string& played) {
    const auto same = std::ranges::mismatch(written, played).in1 - written.begin();
    return same == 0 ? 0 : written.rfind('\n', static_cast<std::size_t>(same) - 1) + 1;
}

// That line, as it is written and as it plays.
std::string firstDifference(const std::string& written, const std::string& played) {
    const std::size_t line = differingLine(written, played);
    return written == played ? "" : lineAt(written, line) + '\n' + lineAt(played, line);
}

// Delta debugging: takes out ever smaller runs of parts as long as the rest shows the failure.
Kept fewest(std::size_t count, const std::function<bool(const Kept&)>& fails) {
    Kept kept(count);
    std::iota(kept.begin(), kept.end(), std::size_t{0});
    for (std::size_t length = count; length > 0;) {
        bool removed = false;
        for (std::size_t end = kept.size(); end > 0; end = end > length ? end - length : 0) {
            Kept rest = kept;
            rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(end - std::min(end, length)),
                       rest.begin() + static_cast<std::ptrdiff_t>(end));
            if (fails(rest)) {
                kept = std::move(rest);
                removed = true;
            }
        }
        length = removed ? std::min(length, kept.size()) : length / 2;
    }
    return kept;
}

// Reduces the parts of a text: those that are not kept are replaced, by nothing or by something shorter.
std::string reduced(const Parts& parts, const std::function<bool(const std::string&)>& fails,
                    const std::function<std::string(const std::string&)>& replacement) {
    const auto textOf = [&](const Kept& kept) {
        std::string text;
        for (std::size_t number = 0; number < parts.size(); ++number) {
            text += std::ranges::binary_search(kept, number) ? parts[number] : replacement(parts[number]);
        }
        return text;
    };
    return textOf(fewest(parts.size(), [&](const Kept& kept) { return fails(textOf(kept)); }));
}

// "* press" or "+35 * press"
bool isAction(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of("+/0123456789 "), line.size())).starts_with("* ");
}

// Bytes of a file as zeros; any other line stays.
std::string blank(const std::string& line) {
    const bool row = line.starts_with(' ') && !line.starts_with(" \"");
    return row ? rowsOf(std::string(contentOfRows(line).size(), '\0')) : line;
}

// Joins the rows that can be one, as a player writes them.
std::string withFewRows(const std::string& text) {
    std::string result;
    for (const std::string& item : partsOf(text, [](std::string_view line) { return !line.starts_with(' '); })) {
        const std::size_t rows = item.find('\n') + 1;
        result += item.substr(0, rows) + rowsOf(contentOfRows(std::string_view(item).substr(rows)));
    }
    return result;
}

// A story and what to look for.
struct Case {
    std::string above; // what has to stay
    Parts steps;       // actions, events and settings, each with the lines below it
    bool recorded;
    std::string (*failureIn)(const std::string& written, const std::string& played);

    std::string failure(const std::string& below) const {
        try {
            return failureIn(above + below, play(above + below));
        } catch (const std::exception&) {
            return {}; // a line lacks what another one has made
        }
    }
};

// An action, an event or a setting, or the name of a block with one.
bool isStep(std::string_view line, const Parts& blocks) {
    const std::string begin = ":= " + std::string(line.substr(std::min<std::size_t>(3, line.size()))) + '\n';
    const auto block = std::ranges::find_if(blocks, [&](const std::string& text) { return text.starts_with(begin); });
    return line.starts_with("* ") || line.starts_with(". ") ||
           (line.starts_with(":: ") && block != blocks.end() &&
            std::ranges::any_of(linesOf(*block), [&](const auto& each) {
                return isStep(std::string_view(each).substr(0, each.size() - 1), blocks);
            }));
}

Case caseOf(const Parts& preamble, const std::string& story, decltype(Case::failureIn) failureIn) {
    const std::string name = linesOf(story).front();
    const std::string script = story.substr(name.size());
    if (!script.starts_with(recordedMark)) {
        return {join({preamble.begin() + 1, preamble.end()}) + name,
                partsOf(preamble.front() + script, [&](std::string_view line) { return isStep(line, preamble); }),
                false, failureIn};
    }
    Parts steps = partsOf(script, isAction);
    const std::string head = steps.front();
    steps.erase(steps.begin());
    return {name + head, steps, true, failureIn};
}

// Empty: the story does not fail.
std::string cutDown(const Case& story) {
    const std::string first = story.failure(join(story.steps));
    if (first.empty()) {
        return {};
    }
    const auto fails = [&](const std::string& below) { return story.failure(below) == first; };
    const std::string below = reduced(story.steps, fails, [](const std::string&) { return ""; });
    const std::string text = story.above + below, played = play(text);
    if (story.failureIn == firstViolation) {
        return played;
    }
    // The lines below the difference go. A record that ends there ends in a line that is not played.
    std::size_t end = differingLine(text, played) - story.above.size();
    std::string upTo;
    do {
        end = below.find('\n', end) + 1;
        upTo = below.substr(0, end);
    } while (end < below.size() && !fails(upTo));
    if (!story.recorded) {
        return story.above + upTo;
    }
    const auto failsWithFewRows = [&](const std::string& changed) { return fails(withFewRows(changed)); };
    return story.above + withFewRows(reduced(linesOf(upTo), failsWithFewRows, blank));
}

} // namespace

std::string shrink(const std::string& file) {
    const Parts stories = partsOf(file, "== ");
    const Parts preamble = partsOf(stories.front(), ":= ");
    for (const auto& failureIn : {firstViolation, firstDifference}) {
        for (std::size_t number = 1; number < stories.size(); ++number) {
            if (const std::string text = cutDown(caseOf(preamble, stories[number], failureIn)); !text.empty()) {
                return text;
            }
        }
    }
    throw std::invalid_argument("No story of the file violates a rule or plays differently");
}

} // namespace story
