// The program without a screen against the simulated unit on a pseudo terminal: tests/stories/cli.txt. Each line that
// begins with "$ " is a command of the shell, below it is what it prints.
#include "tests/storyFile.h"
#include "tests/testFolder.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

// Performs the commands in a new folder and returns them with what they print.
std::string perform(const std::string& story, const fs::path& folder) {
    std::ofstream script(folder / "script");
    script << "exec 2>&1\n. " SOURCES "tests/linux/cliSession.sh\n";
    std::istringstream lines(story);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("$ ")) {
            script << "cat <<'END'\n" << line << "\nEND\n" << line.substr(2) << '\n';
        }
    }
    script.close();
    const std::string command = "cd '" + folder.string() +
                                "' && SOURCE=" SOURCES " CLI_PROGRAM=" CLI_PROGRAM " STORY_PROGRAM=" STORY_PROGRAM
                                " UNIT_PROGRAM=" UNIT_PROGRAM " bash script";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string printed;
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, pipe)) {
        printed.append(part, count);
    }
    ::pclose(pipe);
    return printed;
}

class Cli : public testing::TestWithParam<Section> {};

TEST_P(Cli, DoesWhatTheStorySays) {
    const fs::path folder = makeTestFolder();
    expectStory("cli.txt", GetParam().name, perform(GetParam().text, folder));
    fs::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(Story, Cli, testing::ValuesIn(sectionsOf("cli.txt")), [](const auto& section) {
    std::string name = section.param.name;
    std::erase_if(name, [](char sign) { return !std::isalnum(static_cast<unsigned char>(sign)); });
    return name;
});

} // namespace
