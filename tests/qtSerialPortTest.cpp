// The real serial port on a pseudo terminal: the test holds the far end.
#include "platform/qt/qtSerialPort.h"

#include "platform/failure.h"
#include "platform/qt/diskFiles.h"
#include "platform/qt/portDevice.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using namespace platform;

namespace {

constexpr Micros second = 1'000'000;

Bytes bytesFrom(int first, int count) {
    Bytes bytes;
    for (int at = 0; at < count; ++at) {
        bytes.push_back(static_cast<std::uint8_t>(first + at));
    }
    return bytes;
}

template <class Action>
int failureOf(Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        EXPECT_FALSE(failure.description().empty());
        return failure.number();
    }
    return 0;
}

Micros processorTime() {
    return Micros{std::clock()} * second / CLOCKS_PER_SEC;
}

class QtSerialPortTest : public testing::Test {
  protected:
    QtSerialPortTest() {
        far_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        ::grantpt(far_);
        ::unlockpt(far_);
        device_ = ::ptsname(far_);
        termios raw{};
        ::tcgetattr(far_, &raw);
        ::cfmakeraw(&raw); // or the terminal echoes what comes before the port is open
        ::tcsetattr(far_, TCSANOW, &raw);
        folder_ = std::filesystem::temp_directory_path() / ("qtSerialPortTest" + std::to_string(::getpid()));
        std::filesystem::create_directory(folder_);
        // Links are followed, so that every program knows the device by one name.
        std::filesystem::create_symlink(device_, folder_ / "unit");
        std::ofstream(folder_ / "Setting.INI") << "[DEVICE]\r\nCOM3 = " << (folder_ / "unit").string()
                                               << "\t' the unit\r\nCOM4=/nowhere/tty\r\nCOM5=/etc/passwd\r\n";
    }

    ~QtSerialPortTest() override {
        ::close(far_);
        std::filesystem::remove_all(folder_);
        std::filesystem::remove(lockFile());
    }

    std::string lockFile() const { return "/var/lock/LCK..pts_" + device_.substr(device_.rfind('/') + 1); }

    QtSerialPort makePort() { return {files_, (folder_ / "Setting.INI").string()}; }

    void open(QtSerialPort& port, std::int16_t number = 3) {
        port.choosePort(number);
        port.setSettings("38400,n,8,1");
        port.open();
    }

    void giveFar(const Bytes& bytes) const {
        ASSERT_EQ(::write(far_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // What has come out at the far end, once `count` bytes are there or none came for `patience` milliseconds.
    Bytes takeFar(std::size_t count, int patience = 1000) const {
        Bytes bytes;
        while (bytes.size() < count) {
            std::uint8_t part[256];
            pollfd look{.fd = far_, .events = POLLIN, .revents = 0};
            ::poll(&look, 1, patience);
            const ssize_t taken = ::read(far_, part, sizeof part);
            if (taken <= 0) {
                break;
            }
            bytes.insert(bytes.end(), part, part + taken);
        }
        return bytes;
    }

    // The bytes that came within a second, once `count` of them wait.
    static std::int16_t awaited(QtSerialPort& port, std::int16_t count) {
        const Micros limit = clockMicros() + second;
        while (port.countReceived() < count && clockMicros() < limit) {
            port.waitForNews(limit);
        }
        return port.countReceived();
    }

    // A process that opens the port and holds it; it is gone when its end is awaited.
    pid_t startHolder() {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        const pid_t holder = ::fork();
        if (holder == 0) {
            QtSerialPort port = makePort();
            open(port);
            EXPECT_EQ(::write(ready[1], "x", 1), 1);
            ::pause();
            ::_exit(0);
        }
        char opened;
        EXPECT_EQ(::read(ready[0], &opened, 1), 1);
        return holder;
    }

    int far_ = -1;
    std::string device_;
    std::filesystem::path folder_;
    DiskFiles files_;
};

TEST_F(QtSerialPortTest, BytesKeepValueAndOrderBothWaysWithoutAnEventLoop) {
    QtSerialPort port = makePort();
    giveFar(bytesFrom(0x30, 5)); // waits before the open; the program throws it away
    open(port);
    awaited(port, 5);
    EXPECT_EQ(port.read().size(), 5U);
    const Bytes all = bytesFrom(0, 256);
    giveFar(all);
    EXPECT_EQ(awaited(port, 256), 256);
    port.setReadLimit(1);
    EXPECT_EQ(port.read(), Bytes{0});
    port.setReadLimit(0);
    EXPECT_EQ(port.read(), bytesFrom(1, 255));
    EXPECT_TRUE(port.read().empty());
    port.write(all);
    EXPECT_EQ(takeFar(256), all);
}

TEST_F(QtSerialPortTest, ClearingReachesTheSystemsQueuesToo) {
    QtSerialPort port = makePort();
    open(port);
    giveFar(bytesFrom(1, 4));
    awaited(port, 4); // in the port's own queue
    giveFar(bytesFrom(5, 4));
    ::usleep(2000); // in the system's
    port.clearReceived();
    giveFar(bytesFrom(0x41, 2));
    EXPECT_EQ(awaited(port, 2), 2);
    EXPECT_EQ(port.read(), bytesFrom(0x41, 2));

    const Bytes much(100'000, 0x55); // more than the system takes while the far end does not read
    const Micros start = clockMicros();
    port.write(much);
    EXPECT_LT(clockMicros() - start, second / 2);
    port.clearUnsent();
    takeFar(much.size(), 20);
    port.write(bytesFrom(0x61, 3));
    EXPECT_EQ(takeFar(3), bytesFrom(0x61, 3));
}

TEST_F(QtSerialPortTest, UnsentBytesLeaveWhileThePortIsWaitedFor) {
    QtSerialPort port = makePort();
    open(port);
    Bytes much = bytesFrom(0, 20'000);
    port.write(much);
    Bytes out;
    while (out.size() < much.size()) {
        const Bytes part = takeFar(1);
        ASSERT_FALSE(part.empty()) << out.size();
        out.insert(out.end(), part.begin(), part.end());
        port.waitForNews(clockMicros() + 1000);
    }
    EXPECT_EQ(out, much);
}

TEST_F(QtSerialPortTest, OpenTellsTheReasonsOfItsFailures) {
    QtSerialPort port = makePort();
    EXPECT_EQ(failureOf([&] { port.countReceived(); }), failureNumber::portNotOpen);
    struct Row {
        std::int16_t number;
        int failure;
    };
    // COM4 and COM6 do not exist, COM5 is no serial device, COM17 stands for no device.
    for (const Row& row : {Row{4, failureNumber::portMissing}, Row{6, failureNumber::portMissing},
                           Row{5, failureNumber::portRefused}, Row{17, failureNumber::portMissing}}) {
        EXPECT_EQ(failureOf([&] { open(port, row.number); }), row.failure) << "COM" << row.number;
        EXPECT_FALSE(port.isOpen());
    }
    for (const char* settings : {"", "38400", "38400,n,8", "38400,n,8,1,", "38400,x,8,1", "0,n,8,1", " 38400,n,8,1"}) {
        EXPECT_EQ(failureOf([&] { port.setSettings(settings); }), failureNumber::invalidProperty) << settings;
    }
    open(port);
    EXPECT_EQ(failureOf([&] { port.open(); }), failureNumber::portHeld);
    port.close();
    port.close();
    open(port);
    EXPECT_TRUE(port.isOpen());
}

TEST_F(QtSerialPortTest, APortIsHeldWhileItsHolderLivesAndFreeHoweverItDied) {
    QtSerialPort port = makePort();
    const pid_t holder = startHolder();
    EXPECT_EQ(failureOf([&] { open(port); }), failureNumber::portHeld);
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_TRUE(std::filesystem::exists(lockFile())); // left behind
    open(port);
    port.leaveLockFree();
    EXPECT_FALSE(std::filesystem::exists(lockFile()));
    port.close();

    std::ofstream(lockFile()) << "      " << ::getppid() << '\n'; // as other serial programs write it
    EXPECT_EQ(failureOf([&] { open(port); }), failureNumber::portHeld);
    for (const char* left : {"", "   4194304\n"}) { // no process, one that cannot exist
        std::ofstream(lockFile()) << left;
        open(port);
        port.close();
    }
}

TEST_F(QtSerialPortTest, APortThatGoesAwayIsToldOnceItsBytesAreRead) {
    QtSerialPort port = makePort();
    open(port);
    giveFar(bytesFrom(1, 3));
    awaited(port, 3);
    ::close(far_);
    far_ = -1;
    const Micros used = processorTime();
    for (const Micros limit = clockMicros() + second / 5; clockMicros() < limit;) { // an idle program sleeps
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        port.waitForNews(clockMicros() + 10'000);
    }
    EXPECT_LT(processorTime() - used, second / 20);
    EXPECT_EQ(port.read(), bytesFrom(1, 3));
    EXPECT_EQ(failureOf([&] { port.countReceived(); }), failureNumber::portLost);
    EXPECT_EQ(failureOf([&] { port.write(bytesFrom(1, 1)); }), failureNumber::portLost);
    EXPECT_EQ(failureOf([&] { port.clearReceived(); }), failureNumber::portLost);
    EXPECT_EQ(failureOf([&] { port.clearUnsent(); }), failureNumber::portLost);
    EXPECT_TRUE(port.isOpen());
    EXPECT_TRUE(port.hasNews()); // once for each use
    EXPECT_FALSE(port.hasNews());
    port.close();
    EXPECT_EQ(failureOf([&] { port.read(); }), failureNumber::portNotOpen);
}

TEST_F(QtSerialPortTest, AWriteNoticesALossAsWell) {
    QtSerialPort port = makePort();
    open(port);
    ::close(far_);
    far_ = -1;
    EXPECT_EQ(failureOf([&] { port.write(bytesFrom(1, 1)); }), failureNumber::portLost);
}

TEST_F(QtSerialPortTest, AWaitEndsWithAByteOrOnTimeAndSleepsBetween) {
    QtSerialPort port = makePort();
    open(port);
    const Micros used = processorTime();
    for (const Micros length : {Micros{0}, Micros{1000}, Micros{200'000}}) {
        const Micros until = clockMicros() + length;
        port.waitForNews(until);
        EXPECT_GE(clockMicros(), until);
        EXPECT_LT(clockMicros(), until + second / 10);
    }
    EXPECT_LT(processorTime() - used, second / 50);

    const pid_t child = ::fork();
    if (child == 0) {
        ::usleep(50'000);
        EXPECT_EQ(::write(far_, "a", 1), 1);
        ::_exit(0);
    }
    const Micros start = clockMicros();
    port.waitForNews(start + 5 * second);
    EXPECT_LT(clockMicros(), start + second);
    EXPECT_EQ(port.countReceived(), 1);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(port.hasNews());  // nobody has read it yet
    EXPECT_FALSE(port.hasNews()); // nor asked for it since
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
