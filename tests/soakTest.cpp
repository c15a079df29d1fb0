// Some sessions of the soak. They depend on the seed alone, and the soak detects a unit that misbehaves.
#include "soak/session.h"

#include <gtest/gtest.h>

namespace {

TEST(Soak, FindsNoViolation) {
    const std::uint64_t sessions = THINNED ? 40 : 300;
    for (std::uint64_t seed = 1; seed <= sessions; ++seed) {
        const soak::Result result = soak::runSession(seed, false);
        ASSERT_TRUE(result.violations.empty()) << result.violations.front() << ": tarnbeacon-soak --trace " << seed;
    }
}

TEST(Soak, IsReproducible) {
    for (const std::uint64_t seed : {2, 12, 22}) {
        const soak::Result first = soak::runSession(seed, true);
        soak::runSession(seed + 1, false);
        EXPECT_EQ(first.trace, soak::runSession(seed, true).trace);
        EXPECT_GT(first.trace.size(), 10u);
    }
}

TEST(Soak, DetectsAUnitThatMisbehaves) {
    using simulator::PacketAnswer;
    const PacketAnswer ignored{.handling = PacketAnswer::Handling::ignored, .bytes = Bytes{simulator::ack}};
    constexpr std::uint64_t write = 2, save = 1; // the parity of the seed chooses the last operation
    struct Row {
        const char* what;
        std::uint64_t seed;
        std::function<void(simulator::UnitOptions&)> tamper;
    };
    const Row rows[] = {
        {"drops a block", write, [&](auto& unit) { unit.packetAnswers[7] = ignored; }},
        {"drops the end", write, [&](auto& unit) { unit.packetAnswers[1921] = ignored; }},
        {"sends another block", save, [](auto& unit) { unit.sentInstead[9] = Bytes(132, 1); }},
        {"ends early", save, [](auto& unit) { unit.sentInstead[9] = unit.sentInstead[10] = Bytes{simulator::eot}; }},
    };
    for (const Row& row : rows) {
        const auto tamper = [&](platform::World& world) { row.tamper(world.unit.options()); };
        EXPECT_FALSE(soak::runSession(row.seed, false, tamper).violations.empty()) << row.what;
        EXPECT_TRUE(soak::runSession(row.seed, false, [](platform::World&) {}).violations.empty()) << row.what;
    }
}

} // namespace
