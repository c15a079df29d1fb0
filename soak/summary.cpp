#include "soak/summary.h"

#include <array>
#include <cstdio>

namespace soak {

namespace {

template <class... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 200> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    return line.data();
}

std::string countLine(std::int64_t count, std::string_view what) {
    return formatted("%10lld  ", static_cast<long long>(count)) + std::string(what) + '\n';
}

} // namespace

void Summary::add(const SessionResult& result) {
    ++sessions_;
    violations_ += result.violations.empty() ? 0 : 1;
    virtualTime_ += result.virtualTime;
    for (std::size_t kind = 0; kind < faults_.size(); ++kind) {
        faults_[kind] += result.faults[kind];
    }
    tally_.upgrades += result.tally.upgrades;
    tally_.saves += result.tally.saves;
    for (std::size_t spot = 0; spot < blindSpotNames.size(); ++spot) {
        tally_.blindSpotsMet[spot] += result.tally.blindSpotsMet[spot];
    }
    for (const auto& [outcome, count] : result.tally.outcomes) {
        tally_.outcomes[outcome] += count;
    }
}

std::string Summary::text(double realSeconds) const {
    constexpr double microsOfHour = 3.6e9;
    std::string text = "Faults:\n";
    for (std::size_t kind = 0; kind < faults_.size(); ++kind) {
        text += countLine(faults_[kind], faultRows[kind].name);
    }
    text += "Outcomes:\n";
    for (const auto& [outcome, count] : tally_.outcomes) {
        text += countLine(count, outcome);
    }
    text += "Blind spots of the protocols met:\n";
    for (std::size_t spot = 0; spot < blindSpotNames.size(); ++spot) {
        text += countLine(tally_.blindSpotsMet[spot], blindSpotNames[spot]);
    }
    text += "In all:\n" + countLine(sessions_, "sessions");
    text += countLine(tally_.upgrades, "upgrades that left the file in the unit");
    text += countLine(tally_.saves, "saves that hold the unit's image");
    text += formatted("%10.1f  virtual hours\n%10.1f  real seconds, %.0f sessions and %.0f upgrades a minute\n",
                      static_cast<double>(virtualTime_) / microsOfHour, realSeconds,
                      static_cast<double>(sessions_) * 60 / realSeconds,
                      static_cast<double>(tally_.upgrades) * 60 / realSeconds);
    return text + countLine(violations_, "sessions with a violation");
}

} // namespace soak
