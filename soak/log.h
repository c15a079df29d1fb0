#pragma once

#include "platform/simulated/virtualClock.h"

#include <string>
#include <string_view>
#include <vector>

namespace soak {

// What happens in a session, for reading, and what must not.
class Log {
  public:
    // Without `story` only violations are kept.
    Log(const platform::VirtualClock& clock, bool story) : clock_(clock), story_(story) {}

    bool story() const { return story_; }
    void note(std::string_view text);
    void violation(const std::string& text);

    const std::vector<std::string>& lines() const { return lines_; }
    const std::vector<std::string>& violations() const { return violations_; }
    // The line of the first violation.
    std::size_t violatedAt() const { return violatedAt_; }

  private:
    const platform::VirtualClock& clock_;
    bool story_;
    std::vector<std::string> lines_;
    std::vector<std::string> violations_;
    std::size_t violatedAt_ = 0;
};

} // namespace soak
