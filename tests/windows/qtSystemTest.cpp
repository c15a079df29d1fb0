// What Windows gives below the real desktop, beyond the contract of all desktops.
#include "base/failure.h"
#include "platform/clock.h"
#include "platform/devicePort.h"
#include "platform/profile.h"
#include "platform/system.h"
#include "tests/failureOf.h"
#include "tests/windows/testSystem.h"

#include <cstdlib>
#include <numeric>

using namespace platform;

namespace {

DWORD callError = ERROR_SUCCESS; // of the next calls on an open device
DWORD openError = ERROR_SUCCESS;

BOOL WINAPI clearCommError(HANDLE handle, DWORD* errors, COMSTAT* status) {
    ::SetLastError(callError);
    return callError == ERROR_SUCCESS && systemsOwn<decltype(clearCommError)>("ClearCommError")(handle, errors, status);
}

BOOL WINAPI getCommState(HANDLE handle, DCB* line) {
    ::SetLastError(openError);
    return openError == ERROR_SUCCESS && systemsOwn<decltype(getCommState)>("GetCommState")(handle, line);
}

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

class CommTest : public testing::Test {
  protected:
    ~CommTest() override {
        port_.close();
        callError = openError = ERROR_SUCCESS;
    }

    static std::int64_t processorTime() { // microseconds
        FILETIME created, ended, kernel, user;
        ::GetProcessTimes(::GetCurrentProcess(), &created, &ended, &kernel, &user);
        return (kernel.dwLowDateTime + user.dwLowDateTime) / 10;
    }

    std::optional<simulator::PseudoTerminal> end_{std::in_place, ""};
    std::string path_ = "COM3";
    DevicePort port_{makeLineDevice(), [this](int) { return path_; }};
};

TEST_F(CommTest, EveryByteOfALinePassesAndItsSettingsAreTheProgramsOwn) {
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    port_.setSettings("38400,n,8,1");
    port_.open();
    EXPECT_TRUE(lineSet.BaudRate == 38400 && lineSet.ByteSize == 8 && lineSet.Parity == NOPARITY &&
                lineSet.StopBits == ONESTOPBIT && lineSet.fBinary && !lineSet.fAbortOnError && !lineSet.fOutX &&
                !lineSet.fInX && !lineSet.fOutxCtsFlow && !lineSet.fOutxDsrFlow);
    port_.write(all);
    EXPECT_EQ(take(*end_, all.size()), all);
    end_->write(all);
    EXPECT_EQ(port_.read(), all);
}

TEST_F(CommTest, OpenTellsWhatIsNoPort) {
    const std::tuple<const char*, DWORD, int> rows[] = {
        {"C:\\windows\\win.ini", 0, failureNumber::portRefused},
        {"COM3", ERROR_GEN_FAILURE, failureNumber::portMissing}, // an adapter's port whose hardware has gone
        {"COM3", ERROR_NOT_SUPPORTED, failureNumber::portRefused},
    };
    for (const auto& [path, error, number] : rows) {
        path_ = path;
        openError = error;
        EXPECT_EQ(failureOf([&] { port_.open(); }), number) << path << ' ' << error;
        EXPECT_FALSE(isHeld(path));
    }
}

TEST_F(CommTest, AnyErrorOfACallIsALossInEnglish) {
    const std::pair<DWORD, std::string> rows[] = {
        {ERROR_ACCESS_DENIED, "COM3: the device has gone away (Access denied)"},
        {ERROR_DEVICE_NOT_CONNECTED, "COM3: the device has gone away (The device is not connected)"},
        {ERROR_NOT_ENOUGH_MEMORY, "COM3: Not enough memory"}};
    for (const auto& [error, text] : rows) {
        port_.choosePort(3);
        port_.open();
        callError = error;
        const Failure failure = failureIn([&] { port_.countReceived(); });
        EXPECT_EQ(failure.number(), failureNumber::portLost);
        EXPECT_EQ(failure.description(), text);
        callError = ERROR_SUCCESS;
        EXPECT_EQ(port_.countReceived(), 0); // opened anew
        port_.close();
    }
}

TEST_F(CommTest, UnsentBytesLeaveWhileThePortIsWaitedForAndCanBeDropped) {
    port_.open();
    const Bytes much(20'000, 0x11); // more than the system takes, of the character that stops a line with handshake
    port_.write(much);
    std::size_t out = 0;
    for (int patience = 100; out < much.size() && patience > 0; --patience) {
        port_.waitForNews(clockMicros() + 1000);
        out += take(*end_, 1000).size();
    }
    EXPECT_EQ(out, much.size());
    port_.write(Bytes(1'000'000, 0x55));
    port_.clearUnsent();
    out = 0;
    for (std::size_t part = 1; part > 0; out += part) {
        part = take(*end_, 1000).size();
    }
    EXPECT_LT(out, 500'000U);
    port_.write(Bytes{1, 2, 3});
    EXPECT_EQ(take(*end_, 3), (Bytes{1, 2, 3}));
}

TEST_F(CommTest, AWaitSleeps) {
    for (const bool gone : {false, true}) {
        port_.open();
        if (gone) {
            end_.reset();
            port_.waitForNews(never);
        }
        const Micros used = processorTime(), start = clockMicros();
        EXPECT_FALSE(port_.waitForNews(start + fromMilliseconds(200)));
        EXPECT_LT(processorTime() - used, fromMilliseconds(40));
        EXPECT_GE(clockMicros(), start + fromMilliseconds(200));
        port_.close();
    }
}

TEST(Disk, AFileUnderAnyPathIsReadWhileItIsWrittenAndWrittenByOneAlone) {
    std::filesystem::path deep = makeTestFolder() / u8"道具 😀";
    std::filesystem::create_directory(deep);
    for (int depth = 0; depth < 4; ++depth) {
        deep /= std::string(100, 'x');
        std::filesystem::create_directory(LR"(\\?\)" + deep.wstring());
    }
    const std::string path = utf8(deep) + "/../" + std::string(100, 'x') + "/鍵.bin";
    const auto files = makeFiles();
    const auto file = files->openBinary(path, FileAccess::write);
    file->write(0, Bytes{'a', 'b'});
    EXPECT_EQ(files->readAll(path), "ab");
    EXPECT_EQ(failureOf([&] { files->openBinary(path, FileAccess::write); }), failureNumber::fileRefused);
    file->close();
    for (deep /= u8"鍵.bin"; deep.filename() != "tarnbeaconTest"; deep = deep.parent_path()) {
        std::filesystem::remove(LR"(\\?\)" + deep.wstring()); // remove_all() knows no long paths
    }
}

TEST(Disk, AnIniFileInTheCodePageOfTheSystemReadsAsText) {
    const std::string path = utf8(makeTestFolder() / "x.ini");
    std::ofstream(path, std::ios::binary) << "[a]\r\nb=\xE9\r\n"; // that of western Europe, under the emulator
    EXPECT_EQ(getPrivateProfileString(*makeFiles(), "a", "b", path), "é");
}

TEST(Process, ASecondInstanceIsTheOneWhileTheFirstLives) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(becomeOnlyInstance() ? 0 : 1), testing::ExitedWithCode(0), "");
    const bool free = becomeOnlyInstance();
    EXPECT_EXIT(std::exit(becomeOnlyInstance() ? 1 : 0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free && becomeOnlyInstance());
}

TEST(Process, ItsEndRunsNothingMore) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] {
        std::atexit([] { std::_Exit(1); });
        stopProcess();
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

TEST(Process, TheSystemStaysAwakeForAsLongAsItIsAsked) {
    keepAwake(true);
    EXPECT_EQ(::SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED), ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
    keepAwake(false);
    EXPECT_EQ(::SetThreadExecutionState(ES_CONTINUOUS), ES_CONTINUOUS);
}

} // namespace

extern "C" { // NOLINTBEGIN: before the system's own
decltype(&clearCommError) __imp_ClearCommError = clearCommError;
decltype(&getCommState) __imp_GetCommState = getCommState;
} // NOLINTEND
