#include "story/record/sessionLines.h"

#include <charconv>

namespace story {

namespace {

void addNumber(std::string& text, char sign, std::int64_t number) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    text += sign;
    text.append(digits.data(), static_cast<std::size_t>(end - digits.begin()));
}

} // namespace

SessionLines::SessionLines(SessionSink& sink, std::function<std::int64_t()> clock)
    : sink_(sink), clock_(std::move(clock)), known_(clock_()) {}

void SessionLines::did(std::string_view line) {
    line_.clear();
    add(line, false);
}

void SessionLines::given(std::string_view line, std::int64_t without) {
    given(line, without, clock_());
}

void SessionLines::given(std::string_view line, std::int64_t without, std::int64_t now) {
    line_.clear();
    if (now != known_) {
        addNumber(line_, '+', now - known_);
        known_ = now;
    }
    if (without > 0) {
        addNumber(line_, '/', without);
    }
    line_ += line_.empty() ? "" : " ";
    add(line, true);
}

bool SessionLines::onlyWaitedSince(std::int64_t line) const {
    std::int64_t others = number_ - line;
    for (const std::int64_t calls : calls_) {
        others += calls;
    }
    return others == emptyPolls() + without(Call::wait);
}

void SessionLines::add(std::string_view line, bool given) {
    line_.append(static_cast<std::size_t>(cleared_), '-');
    line_ += line;
    line_ += '\n';
    ++number_;
    cleared_ = 0;
    calls_ = {};
    sink_.add(line_, given);
}

} // namespace story
