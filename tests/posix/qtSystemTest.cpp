// The locks that a POSIX system gives.
#include "platform/system.h"
#include "tests/realDesktop.h"

#include <QTest>

#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;

namespace {

TEST(System, TheSecondInstanceIsTheOneWhileTheFirstLives) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* own = ::getenv("OWN_FOLDER"); // the other process runs this test anew, in the same folder
    const std::string folder = own != nullptr ? own : makeTestFolder().string();
    ::setenv("OWN_FOLDER", folder.c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    EXPECT_EXIT(::_exit(takeInstanceLock() ? 0 : 1), testing::ExitedWithCode(0), "");
    const bool free = takeInstanceLock();
    EXPECT_EXIT(::_exit(takeInstanceLock() ? 1 : 0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free);
    std::filesystem::remove_all(folder);
}

TEST(System, TheSleepLockIsAChildsAndEndsWithItsInput) {
    const std::string folder = makeTestFolder();
    std::ofstream(folder + "/systemd-inhibit") << "cd " << folder << "\necho $1 >>held\n"
                                               << "[ $1 = --what=idle ] || exit 1\nread -r line\nmv held over\n";
    ::chmod((folder + "/systemd-inhibit").c_str(), 0700);
    ::setenv("PATH", (folder + ':' + ::getenv("PATH")).c_str(), 1);
    for (const bool on : {true, true, false}) { // once
        realDesktop->keepAwake(on);
        const std::string file = folder + (on ? "/held" : "/over");
        const auto request = [&] {
            std::string first, second;
            std::ifstream(file) >> first >> second;
            return first + ' ' + second;
        };
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return request() == "--what=sleep:idle:handle-lid-switch --what=idle"; }, 2000));
    }
    std::filesystem::remove_all(folder);
}

} // namespace
