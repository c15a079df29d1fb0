#include "soak/log.h"

#include <array>
#include <cstdio>

namespace soak {

namespace {

constexpr std::size_t mostViolations = 10; // of a session; what follows the first is seldom news

} // namespace

void Log::note(std::string_view text) {
    if (!story_) {
        return;
    }
    std::array<char, 32> time{};
    std::snprintf(time.data(), time.size(), "%13.6f ", static_cast<double>(clock_.now()) / 1e6);
    lines_.push_back(time.data() + std::string(text));
}

void Log::violation(const std::string& text) {
    if (violations_.size() == mostViolations) {
        return;
    }
    note("VIOLATION: " + text);
    if (violations_.empty()) {
        violatedAt_ = lines_.size();
    }
    violations_.push_back(text);
}

} // namespace soak
