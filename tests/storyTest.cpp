// Whole sessions: each story in tests/stories/ plays as it is written there (story/player.h). After an intended change
// `tarnbeacon-story` prints the new file.
#include "story/player.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

class Stories : public testing::TestWithParam<const char*> {};

TEST_P(Stories, MatchTheirFile) {
    std::stringstream file;
    file << std::ifstream(STORIES + std::string(GetParam()) + ".txt").rdbuf();
    EXPECT_EQ(story::play(file.str()), file.str());
}

INSTANTIATE_TEST_SUITE_P(All, Stories, testing::Values("start", "load", "write", "save", "verification", "recorded"),
                         [](const auto& test) { return test.param; });

} // namespace
