// Some sessions of the soak. Each is a story that plays to the same lines, and the rules detect a unit that misbehaves.
#include "soak/session.h"
#include "story/player.h"
#include "story/shrink.h"

#include <array>
#include <gtest/gtest.h>

namespace {

TEST(Soak, FindsNoViolation) {
    const std::uint64_t sessions = THINNED ? 40 : 200;
    for (std::uint64_t seed = 1; seed <= sessions; ++seed) {
        const soak::Result result = soak::runSession(seed);
        ASSERT_EQ(result.violation, "") << ": tarnbeacon-soak --trace " << seed;
    }
}

TEST(Soak, DrawsStories) {
    for (const std::uint64_t seed : {2, 12, 22}) {
        const std::string story = soak::runSession(seed).story;
        EXPECT_EQ(story::play(story), story);
    }
}

TEST(Soak, DetectsAUnitThatMisbehaves) {
    std::string other = ". send 9 ";
    for (int byte = 0; byte < 132; ++byte) {
        other += "\\01";
    }
    const std::array<std::string, 3> rows[] = {
        // what it does, as lines, last operation
        {"drops a block", ". packets 7 7 lost", "write"},
        {"drops the end", ". packets 1921 1921 lost", "write"},
        {"sends another block", other, "save"},
        {"ends early", ". send 9 \\04\n. send 10 \\04", "save"},
    };
    for (const auto& [what, lines, last] : rows) {
        const std::string start = "== a unit\n. rules\n. controls\n. image 2\n* start\n",
                          end = "\n* finish " + last + '\n';
        EXPECT_NE(story::play(start + lines + end).find("VIOLATION"), std::string::npos) << what;
        EXPECT_EQ(story::play(start + end).find("VIOLATION"), std::string::npos) << what;
    }
}

TEST(Soak, CutsAStoryDown) {
    const std::string begin = "== a unit\n. rules\n";
    const std::string least = "* start\n. packets 7 7 lost\n";
    const std::string story = begin + ". reaction 2\n" + least + ". sendDelay 1\n* press cmdLoading\n* finish write\n";
    EXPECT_EQ(story::shrink(story), story::play(begin + least + "* finish write\n"));
}

} // namespace
