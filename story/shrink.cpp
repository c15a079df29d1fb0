#include "story/shrink.h"

#include "story/player.h"
#include "story/record/recording.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace story {

namespace {

using Parts = std::vector<std::string>;

// Splits a text before each line that begins with one of the marks.
Parts split(const std::string& text, const std::vector<std::string>& marks) {
    Parts parts(1);
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (std::ranges::any_of(marks, [&](const std::string& mark) { return line.starts_with(mark); })) {
            parts.emplace_back();
        }
        parts.back() += line + '\n';
    }
    return parts;
}

std::string join(const Parts& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += part;
    }
    return text;
}

std::string firstViolation(const std::string& played) {
    const std::size_t at = played.find("\nVIOLATION: ");
    return at == std::string::npos ? "" : played.substr(at + 1, played.find('\n', at + 1) - at - 1);
}

// The first line that differs, as it is written and as it plays.
std::string firstDifference(const std::string& written, const std::string& played) {
    std::istringstream before(written), now(played);
    std::string one, other;
    while (one == other && (before || now)) {
        one = std::getline(before, one) ? one : "";
        other = std::getline(now, other) ? other : "";
    }
    return one == other ? "" : one + '\n' + other;
}

// Delta debugging: takes out ever smaller runs of parts as long as the rest shows the failure.
Parts fewest(Parts parts, const std::function<bool(const Parts&)>& fails) {
    for (std::size_t length = parts.size(); length > 0;) {
        bool removed = false;
        for (std::size_t end = parts.size(); end > 0; end = end > length ? end - length : 0) {
            Parts rest = parts;
            rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(end - std::min(end, length)),
                       rest.begin() + static_cast<std::ptrdiff_t>(end));
            if (fails(rest)) {
                parts = std::move(rest);
                removed = true;
            }
        }
        length = removed ? std::min(length, parts.size()) : length / 2;
    }
    return parts;
}

} // namespace

std::string shrink(const std::string& file) {
    const Parts stories = split(file, {"== "});
    const Parts preamble = split(stories.front(), {":= "});
    const std::string blocks = join({preamble.begin() + 1, preamble.end()});
    for (const auto& failure :
         {std::function([](const std::string&, const std::string& played) { return firstViolation(played); }),
          std::function(firstDifference)}) {
        for (std::size_t number = 1; number < stories.size(); ++number) {
            const std::string& script = stories[number];
            const std::string name = script.substr(0, script.find('\n') + 1);
            if (script.substr(name.size()).starts_with(recordedMark)) {
                continue;
            }
            const auto written = [&](const Parts& parts) { return blocks + name + join(parts); };
            const auto failureOf = [&](const Parts& parts) {
                const std::string text = written(parts);
                return failure(text, play(text));
            };
            Parts lines = split(preamble.front() + script.substr(name.size()), {"* ", ". "});
            const std::string first = failureOf(lines);
            if (!first.empty()) {
                lines = fewest(lines, [&](const Parts& parts) { return failureOf(parts) == first; });
                return first.starts_with("VIOLATION") ? play(written(lines)) : written(lines);
            }
        }
    }
    throw std::invalid_argument("No story of the file violates a rule or plays differently");
}

} // namespace story
