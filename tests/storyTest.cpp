// Whole sessions: each script in tests/stories/ still plays as it is written there (story/stage.h). After a change that is
// wanted, `tarnbeacon-story` writes a file anew.
#include "story/stage.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

class Stories : public testing::TestWithParam<const char*> {};

TEST_P(Stories, PlayAsWritten) {
    std::stringstream file;
    file << std::ifstream(STORIES + std::string(GetParam()) + ".txt").rdbuf();
    EXPECT_EQ(story::play(file.str()), file.str());
}

INSTANTIATE_TEST_SUITE_P(Told, Stories, testing::Values("start", "load", "write", "save", "verification"),
                         [](const auto& test) { return test.param; });

} // namespace
