// A share of the soak, and what makes its silence worth something: it is the same for the same seed, every kind of
// fault strikes, and the monitor finds what is wrong.
#include "soak/summary.h"
#include "tests/thinned.h"

#include <gtest/gtest.h>

using namespace soak;

namespace {

TEST(Soak, ViolatesNothing) {
    const std::uint64_t sessions = thinned ? 60 : 1000;
    Summary summary;
    for (std::uint64_t seed = 1; seed <= sessions; ++seed) {
        const SessionResult result = runSession(planOf(seed), false);
        summary.add(result);
        ASSERT_TRUE(result.violations.empty()) << result.violations.front() << ": tarnbeacon-soak --trace " << seed;
    }
    for (std::size_t kind = 0; kind < faultKindCount && !thinned; ++kind) {
        EXPECT_GT(summary.faults()[kind], 0) << faultRows[kind].name;
    }
    EXPECT_GT(summary.tally().upgrades, summary.sessions() / 2);
}

TEST(Soak, IsTheSameForTheSameSeed) {
    for (const std::uint64_t seed : {2, 12, 22, 32, 42}) {
        const Plan plan = planOf(seed);
        const SessionResult first = runSession(plan, true);
        runSession(planOf(seed + 1), false);
        EXPECT_EQ(first.story, runSession(plan, true).story);
        EXPECT_GT(first.story.size(), 40u);
    }
}

// Units that lie while nothing touches the line.
TEST(Soak, FindsALyingUnit) {
    using simulator::PacketAnswer;
    struct Row {
        const char* what;
        std::function<void(simulator::UnitOptions&)> lie;
        JobKind job;
        const char* found;
    };
    const PacketAnswer ignored{.fate = PacketAnswer::Fate::ignored, .bytes = Bytes{simulator::ack}};
    const Row rows[] = {
        {"drops a block", [&](auto& unit) { unit.packetAnswers[7] = ignored; }, JobKind::write,
         "the tool took an ACK for what the unit had not accepted"},
        {"drops the end", [&](auto& unit) { unit.packetAnswers[1921] = ignored; }, JobKind::write,
         "the tool took an ACK for what the unit had not accepted"},
        {"sends another block", [](auto& unit) { unit.sentInstead[9] = Bytes(132, 1); }, JobKind::save,
         "the file is not what the unit sent"},
        {"ends early", [](auto& unit) { unit.sentInstead[9] = unit.sentInstead[10] = Bytes{simulator::eot}; },
         JobKind::save, "a save without faults does not succeed"},
    };
    for (const Row& row : rows) {
        Plan plan;
        row.lie(plan.world.unit);
        plan.jobs = {{JobKind::start}};
        plan.last = row.job;
        const std::vector<std::string> violations = runSession(plan, false).violations;
        EXPECT_TRUE(!violations.empty() && violations.front() == row.found)
            << row.what << ": " << testing::PrintToString(violations);
    }
}

} // namespace
