// The locks of a POSIX system.
#include "tests/realHost.h"

#include <QTest>

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;

namespace {

TEST(System, AllowsOneInstance) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* own = ::getenv("OWN_FOLDER"); // the other process runs this test again, in the same folder
    const std::string folder = own != nullptr ? own : makeTestFolder().string();
    ::setenv("OWN_FOLDER", folder.c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    EXPECT_EXIT(::_exit(realHost->previousInstance() ? 1 : 0), testing::ExitedWithCode(0), "");
    const bool free = !realHost->previousInstance();
    EXPECT_EXIT(::_exit(realHost->previousInstance() ? 0 : 1), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free);
    std::filesystem::remove_all(folder);
}

// Without a runtime folder each user has a lock file in /tmp; without any file there is no lock.
TEST(System, StartsWithoutARuntimeFolder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string file = "/tmp/TarnBeacon-" + std::to_string(::getuid()) + ".lock";
    std::filesystem::remove(file);
    for (const std::string folder : {"/dev/null", ""}) {
        ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        EXPECT_EXIT(::_exit(realHost->previousInstance() ? 1 : 0), testing::ExitedWithCode(0), "");
        EXPECT_EQ(std::filesystem::exists(file), folder.empty());
    }
}

TEST(System, HoldsTheSleepLockInAChildProcess) {
    const std::string folder = makeTestFolder();
    std::ofstream(folder + "/systemd-inhibit")
        << "cd " << folder << "\necho $1 $3 >>held\n"
        << "[ $1 = --what=idle ] || exit 1\nread -r line\nmv held over\nexec sleep 2\n";
    ::chmod((folder + "/systemd-inhibit").c_str(), 0700);
    ::setenv("PATH", (folder + ':' + ::getenv("PATH")).c_str(), 1);
    for (const bool on : {true, true, false, true, false}) { // only a change has an effect
        const std::int64_t before = realHost->timeGetTime();
        realHost->keepAwake(on);
        EXPECT_LT(realHost->timeGetTime(), before + 1000); // it does not wait for the child
        const std::string file = folder + (on ? "/held" : "/over");
        const auto request = [&] {
            std::stringstream text;
            text << std::ifstream(file).rdbuf();
            return text.str();
        };
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return request() ==
                       "--what=shutdown:sleep:idle:handle-lid-switch --mode=block\n--what=idle --mode=block\n";
            },
            10'000));
    }
    std::filesystem::remove_all(folder);
}

TEST(System, HoldsARequestToEndTheProgramWhileItKeepsAwake) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ::setenv("PATH", "/nowhere", 1);                                                             // no real lock
    realHost->endRequested = [] { ::_exit(realHost->msgBox({}) == boxAnswer::cancel ? 5 : 1); }; // without a box
    const auto keepAwake = [](bool on) { return realHost->keepAwake(on), true; };
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        EXPECT_EXIT(keepAwake(true) && std::raise(signal) == 0 && QTest::qWaitFor([] { return false; }, 10'000),
                    testing::ExitedWithCode(5), "");
    }
    const auto killed = testing::KilledBySignal(SIGTERM);
    EXPECT_EXIT(keepAwake(true) && std::raise(SIGTERM) == 0 && std::raise(SIGTERM), killed, "");
    EXPECT_EXIT(keepAwake(true) && std::raise(SIGTERM) == 0 && keepAwake(false), killed, "");
    EXPECT_EXIT(keepAwake(true) && keepAwake(false) && std::raise(SIGTERM), killed, "");
}

} // namespace
