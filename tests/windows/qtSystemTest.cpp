// The system services on Windows that the contract of all hosts does not cover.
#include "platform/profile.h"
#include "platform/system.h"
#include "tests/realHost.h"

#include <cstdlib>
#include <fstream>
#include <windows.h>

using namespace platform;

namespace {

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

TEST(Disk, SupportsLongPathsAndKeepsAttributes) {
    const std::filesystem::path folder = makeTestFolder();
    std::filesystem::path deep = folder / u8"道具 😀";
    std::filesystem::create_directory(deep);
    for (int depth = 0; depth < 4; ++depth) {
        deep /= std::string(100, 'x');
        std::filesystem::create_directory(LR"(\\?\)" + deep.wstring());
    }
    const std::string path = utf8(deep) + "/../" + std::string(100, 'x') + "/鍵.bin";
    const auto files = makeFiles();
    const auto write = [&](const Bytes& bytes) {
        const auto file = files->openBinary(path, FileAccess::write);
        file->write(0, bytes);
        file->close();
    };
    const std::wstring name = LR"(\\?\)" + (deep / u8"鍵.bin").wstring();
    write({'a', 'b'});
    ::SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_HIDDEN);
    write({'c'});
    EXPECT_EQ(files->readAll(path), "cb");
    EXPECT_TRUE((::GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
    for (deep /= u8"鍵.bin"; deep != folder; deep = deep.parent_path()) {
        std::filesystem::remove(LR"(\\?\)" + deep.wstring()); // remove_all() does not support long paths
    }
}

TEST(Disk, ConvertsTheSystemCodePage) {
    const std::string path = utf8(makeTestFolder() / "x.ini");
    std::ofstream(path, std::ios::binary) << "[a]\r\nb=\xE9\r\n"; // that of western Europe, under the emulator
    EXPECT_EQ(getPrivateProfileString(*makeFiles(), "a", "b", path), "é");
}

TEST(Process, AllowsOneInstance) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(takeInstanceLock() ? 0 : 1), testing::ExitedWithCode(0), "");
    const bool free = takeInstanceLock();
    EXPECT_EXIT(std::_Exit(takeInstanceLock() ? 1 : 0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free && takeInstanceLock());
}

TEST(Process, StopsWithoutExitHandlers) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] {
        std::atexit([] { std::_Exit(1); });
        stopProcess(3);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(3), "");
}

TEST(Process, KeepsTheSystemAwake) {
    keepAwake(true);
    EXPECT_EQ(::SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED), ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
    keepAwake(false);
    EXPECT_EQ(::SetThreadExecutionState(ES_CONTINUOUS), ES_CONTINUOUS);
}

TEST(Process, KnowsTheMessagesThatBeginALoopOfTheSystem) {
    const auto begins = [](UINT message, WPARAM parameter) {
        const MSG received{.hwnd = nullptr, .message = message, .wParam = parameter, .lParam = 0, .time = 0, .pt = {}};
        return beginsSystemLoop(&received);
    };
    for (const WPARAM command : {SC_MOVE, SC_MOVE + 2, SC_SIZE, SC_MOUSEMENU, SC_KEYMENU}) {
        EXPECT_TRUE(begins(WM_SYSCOMMAND, command));
    }
    EXPECT_TRUE(begins(WM_NCLBUTTONDOWN, HTCAPTION) && begins(WM_NCRBUTTONUP, HTCAPTION));
    EXPECT_TRUE(begins(WM_SYSKEYDOWN, VK_SPACE) && begins(WM_SYSCHAR, VK_SPACE));
    EXPECT_FALSE(begins(WM_SYSCOMMAND, SC_CLOSE) || begins(WM_SYSKEYDOWN, VK_F4) || begins(WM_LBUTTONDOWN, 0));
}

} // namespace
