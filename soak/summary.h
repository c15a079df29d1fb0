#pragma once

#include "soak/session.h"

#include <string>

namespace soak {

// The figures of many sessions.
class Summary {
  public:
    void add(const SessionResult& result);

    std::int64_t sessions() const { return sessions_; }
    std::int64_t violations() const { return violations_; }
    const FaultCounts& faults() const { return faults_; }
    const Tally& tally() const { return tally_; }

    // For reading, several lines.
    std::string text(double realSeconds) const;

  private:
    std::int64_t sessions_ = 0;
    std::int64_t violations_ = 0; // sessions with any
    Micros virtualTime_ = 0;
    FaultCounts faults_{};
    Tally tally_;
};

} // namespace soak
