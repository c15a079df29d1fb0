// What the system below the real desktop has beyond the contract of all desktops: its terminals and its locks.
#include "platform/clock.h"
#include "platform/devicePort.h"
#include "platform/system.h"
#include "tests/failureOf.h"
#include "tests/posix.h"

#include <asm/ioctls.h>
#include <cstdarg>
#include <ctime>
#include <fstream>
#include <linux/serial.h>
#include <termios.h>

using namespace platform;

namespace {

// A driver below the terminal: what a pseudo terminal does not have, and errors that it does not give.
struct {
    bool present = false;
    int latencyAnswer = 0;
    int flags = 0;
    int error = 0; // of any transfer
    bool exclusive = false;
} driver;

template <class... Arguments>
long transfer(long number, Arguments... arguments) {
    errno = driver.error;
    return driver.error != 0 ? -1 : ::syscall(number, arguments...);
}

} // namespace

extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    driver.exclusive = driver.exclusive || request == TIOCEXCL;
    if (driver.present && request == TIOCGSERIAL) {
        static_cast<serial_struct*>(argument)->flags = driver.flags;
        return 0;
    }
    if (driver.present && request == TIOCSSERIAL) {
        driver.flags = static_cast<serial_struct*>(argument)->flags;
        return driver.latencyAnswer;
    }
    return static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
}

extern "C" ssize_t read(int fd, void* buf, std::size_t nbytes) {
    return transfer(SYS_read, fd, buf, nbytes);
}

extern "C" ssize_t write(int fd, const void* buf, std::size_t n) {
    return transfer(SYS_write, fd, buf, n);
}

extern "C" int tcflush(int fd, int selector) noexcept {
    return static_cast<int>(transfer(SYS_ioctl, fd, TCFLSH, selector));
}

namespace {

class TerminalTest : public testing::Test {
  protected:
    ~TerminalTest() override {
        port_.close();
        std::filesystem::remove_all(folder_);
        driver = {};
    }

    const std::filesystem::path folder_ = makeTestFolder();
    std::optional<simulator::PseudoTerminal> end_{folder_ / "unit"};
    std::string path_ = end_->device();
    DevicePort port_{makeLineDevice(), [this](int) { return path_; }};
};

TEST_F(TerminalTest, OpenAsksTheDriverForLowLatencyAndClosePutsItBack) {
    for (const int answer : {0, -1}) { // a refusal is no failure
        driver = {.present = true, .latencyAnswer = answer, .flags = ASYNC_SKIP_TEST};
        port_.open();
        EXPECT_EQ(driver.flags, ASYNC_SKIP_TEST | ASYNC_LOW_LATENCY);
        port_.close();
        EXPECT_EQ(driver.flags, answer == 0 ? ASYNC_SKIP_TEST : ASYNC_SKIP_TEST | ASYNC_LOW_LATENCY);
    }
}

TEST_F(TerminalTest, OpenMakesTheLineRawAndSetsItsSpeed) {
    termios line{};
    ::tcgetattr(end_->descriptor(), &line);
    line.c_lflag |= ICANON | ECHO | ISIG;
    line.c_iflag |= ICRNL | IXON;
    line.c_oflag |= OPOST | ONLCR;
    ::tcsetattr(end_->descriptor(), TCSANOW, &line);
    for (const auto& [settings, speed] : {std::pair("38400,n,8,1", B38400), {"9600,n,8,1", B9600}}) {
        port_.setSettings(settings);
        port_.open();
        ::tcgetattr(end_->descriptor(), &line);
        EXPECT_EQ(::cfgetospeed(&line), speed);
        end_->write(Bytes{'\r', 0x03, 0x11});
        port_.waitForNews(clockMicros() + fromSeconds(1));
        EXPECT_EQ(port_.read(), (Bytes{'\r', 0x03, 0x11}));
        port_.write(Bytes{'\n'});
        EXPECT_EQ(take(*end_, 2), Bytes{'\n'});
        port_.close();
    }
}

TEST_F(TerminalTest, OpenTellsWhatIsNoPort) {
    const std::pair<const char*, int> rows[] = {{"", failureNumber::portMissing},
                                                {"/nowhere/tty", failureNumber::portMissing},
                                                {"/etc/passwd", failureNumber::portRefused},
                                                {"/dev/null", failureNumber::portRefused}};
    for (const auto& [path, number] : rows) {
        path_ = path;
        EXPECT_EQ(failureOf([&] { port_.open(); }), number) << path;
    }
    EXPECT_EQ(usualDevice(4) + usualDevice(5) + usualDevice(16) + usualDevice(17),
              "/dev/ttyS3/dev/ttyUSB0/dev/ttyACM3");
}

TEST_F(TerminalTest, APortIsFreeHoweverItsHolderDied) {
    const auto die = [&] {
        port_.open();
        std::raise(SIGKILL);
    };
    EXPECT_EXIT(die(), testing::KilledBySignal(SIGKILL), "");
    port_.open();
    EXPECT_FALSE(driver.exclusive); // which would outlive the holder
}

TEST_F(TerminalTest, ADeviceThatIsGoneReadsTheSameAtAnyCallWhateverTheSystemSays) {
    const std::function<void()> calls[]{[&] { port_.countReceived(); }, [&] { port_.read(); },
                                        [&] { port_.write(Bytes{1}); }, [&] { port_.clearReceived(); },
                                        [&] { port_.clearUnsent(); }};
    for (const int error : {EIO, ENODEV, ENXIO, EBADF, 0}) { // 0: the far end hangs up, a read is at the file's end
        for (const auto& call : calls) {
            end_.emplace(folder_ / "unit");
            path_ = end_->device();
            port_.open();
            driver.error = error;
            if (error == 0) {
                end_.reset();
            }
            const Failure failure = failureIn(call);
            EXPECT_EQ(failure.number(), failureNumber::portLost);
            EXPECT_EQ(failure.description(), "COM1 (" + path_ + "): the device has gone away");
            driver.error = 0;
            port_.close();
        }
    }
}

TEST_F(TerminalTest, UnsentBytesLeaveWhileThePortIsWaitedForAndCanBeDropped) {
    port_.open();
    const Bytes much(20'000, 0x55); // more than the system takes
    port_.write(much);
    for (std::size_t out = 0, part = 1; out < much.size() && part > 0; out += part) {
        port_.waitForNews(clockMicros() + 1000);
        part = take(*end_, 1000).size();
        EXPECT_NE(part, 0U);
    }
    port_.write(much);
    port_.clearUnsent();
    EXPECT_LT(take(*end_, much.size()).size(), much.size() / 2);
    port_.write(Bytes{1, 2, 3});
    EXPECT_EQ(take(*end_, 3), (Bytes{1, 2, 3}));
}

TEST_F(TerminalTest, AWaitSleeps) {
    for (const bool gone : {false, true}) {
        port_.open();
        if (gone) {
            end_.reset();
            port_.waitForNews(never);
        }
        const std::clock_t used = std::clock();
        EXPECT_FALSE(port_.waitForNews(clockMicros() + fromMilliseconds(50)));
        EXPECT_LT(std::clock() - used, CLOCKS_PER_SEC / 100);
        port_.close();
    }
}

TEST(System, ASecondInstanceIsTheOneWhileTheFirstLives) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ::setenv("XDG_RUNTIME_DIR", testing::TempDir().c_str(), 1);
    EXPECT_EXIT(std::exit(becomeOnlyInstance() ? 0 : 1), testing::ExitedWithCode(0), "");
    const bool free = becomeOnlyInstance();
    EXPECT_EXIT(std::exit(becomeOnlyInstance() ? 1 : 0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free);
}

TEST(System, WhatHasNoDiskBelowNeedsNoneToClose) {
    const auto file = makeFiles()->openBinary("/dev/null", FileAccess::write);
    file->write(0, Bytes{1});
    EXPECT_EQ(failureOf([&] { file->close(); }), 0);
}

TEST(System, TheSleepLockIsAChildsAndEndsWithItsInput) {
    const std::filesystem::path folder = makeTestFolder();
    std::ofstream(folder / "systemd-inhibit") << "#!/bin/sh\ncd '" << folder.string() << "'\necho $1 >>held\n"
                                              << "[ $1 = --what=idle ] || exit 1\nread -r line\nmv held over\n";
    std::filesystem::permissions(folder / "systemd-inhibit", std::filesystem::perms::owner_all);
    ::setenv("PATH", (folder.string() + ':' + ::getenv("PATH")).c_str(), 1);
    const auto comes = [&](const char* name) {
        std::string text;
        for (int patience = 2000; text.find("=idle\n") == std::string::npos && patience > 0; --patience) {
            ::usleep(1000);
            std::ifstream file(folder / name);
            text.assign(std::istreambuf_iterator<char>(file), {});
        }
        EXPECT_EQ(text, "--what=sleep:idle:handle-lid-switch\n--what=idle\n"); // the second where the first is refused
    };
    keepAwake(true);
    keepAwake(true); // once
    comes("held");
    keepAwake(false);
    comes("over");
    std::filesystem::remove_all(folder);
}

} // namespace
