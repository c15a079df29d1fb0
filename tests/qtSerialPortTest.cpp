// The real serial port on a pseudo terminal: the test holds the far end.
#include "base/time.h"
#include "platform/clock.h"
#include "platform/devicePort.h"
#include "platform/system.h"
#include "tests/failureOf.h"
#include "tests/farEnd.h"
#include "tests/otherProcess.h"

#include <QCoreApplication>

#include <asm/ioctls.h>
#include <cstdarg>
#include <ctime>
#include <linux/serial.h>
#include <numeric>
#include <poll.h>
#include <sys/syscall.h>
#include <utility>

using namespace platform;

// The low-latency mode of a serial driver, which no pseudo terminal has.
struct {
    bool present = false;
    int answer = 0;
    int flags = 0;
} driver;

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (driver.present && request == TIOCGSERIAL) {
        static_cast<serial_struct*>(argument)->flags = driver.flags;
        return 0;
    }
    if (driver.present && request == TIOCSSERIAL) {
        driver.flags = static_cast<serial_struct*>(argument)->flags;
        return driver.answer;
    }
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}

namespace {

constexpr Micros second = seconds(1);

Bytes bytesFrom(std::uint8_t first, std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

Micros processorTime() {
    return Micros{std::clock()} * second / CLOCKS_PER_SEC;
}

class QtSerialPortTest : public testing::Test {
  protected:
    std::string pathOf(int number) const {
        switch (number) {
        case 3: return device_;
        case 4: return "/nowhere/tty";
        case 5: return "/etc/passwd";
        default: return usualDevice(number);
        }
    }

    ~QtSerialPortTest() override {
        port_.close();
        ::close(far_);
    }

    void open(std::int16_t number = 3) {
        port_.choosePort(number);
        port_.setSettings("38400,n,8,1");
        port_.open();
    }

    void closeFar() { ::close(std::exchange(far_, -1)); }

    void giveFar(const Bytes& bytes) const {
        ASSERT_EQ(::write(far_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // What has come out at the far end, once `count` bytes are there or none came for `patience` milliseconds.
    Bytes takeFar(std::size_t count, int patience = 1000) const {
        Bytes bytes;
        while (bytes.size() < count) {
            std::uint8_t part[256];
            pollfd look{.fd = far_, .events = POLLIN, .revents = 0};
            const ssize_t taken = ::poll(&look, 1, patience) > 0 ? ::read(far_, part, sizeof part) : 0;
            if (taken <= 0) {
                break;
            }
            bytes.insert(bytes.end(), part, part + taken);
        }
        return bytes;
    }

    // The bytes that came within a second, once `count` of them wait.
    std::int16_t awaited(std::int16_t count) {
        const Micros limit = clockMicros() + second;
        while (port_.countReceived() < count && clockMicros() < limit) {
            port_.waitForNews(limit);
        }
        return port_.countReceived();
    }

    int far_ = openFarEnd();
    const std::string device_ = ::ptsname(far_);
    DevicePort port_{makeLineDevice(), [this](int number) { return pathOf(number); }};
};

TEST_F(QtSerialPortTest, BytesKeepValueAndOrderBothWaysWithoutAnEventLoop) {
    open();
    const Bytes all = bytesFrom(0, 256);
    giveFar(all);
    EXPECT_EQ(awaited(256), 256);
    port_.setReadLimit(1);
    EXPECT_EQ(port_.read(), Bytes{0});
    port_.setReadLimit(0);
    EXPECT_EQ(port_.read(), bytesFrom(1, 255));
    EXPECT_TRUE(port_.read().empty());
    port_.write(all);
    EXPECT_EQ(takeFar(256), all);
}

TEST_F(QtSerialPortTest, ClearingReachesTheSystemsQueuesToo) {
    open();
    giveFar(bytesFrom(1, 4));
    awaited(4); // in the port's own queue
    giveFar(bytesFrom(5, 4));
    ::usleep(2000); // in the system's
    port_.clearReceived();
    giveFar(bytesFrom(0x41, 2));
    EXPECT_EQ(awaited(2), 2);
    EXPECT_EQ(port_.read(), bytesFrom(0x41, 2));

    const Bytes much(100'000, 0x55); // more than the system takes while the far end does not read
    const Micros start = clockMicros();
    port_.write(much);
    EXPECT_LT(clockMicros() - start, second / 2);
    port_.clearUnsent();
    takeFar(much.size(), 20);
    port_.write(bytesFrom(0x61, 3));
    EXPECT_EQ(takeFar(3), bytesFrom(0x61, 3));
}

TEST_F(QtSerialPortTest, UnsentBytesLeaveWhileThePortIsWaitedFor) {
    open();
    Bytes much = bytesFrom(0, 20'000);
    port_.write(much);
    Bytes out;
    while (out.size() < much.size()) {
        const Bytes part = takeFar(1);
        ASSERT_FALSE(part.empty()) << out.size();
        out.insert(out.end(), part.begin(), part.end());
        port_.waitForNews(clockMicros() + 1000);
    }
    EXPECT_EQ(out, much);
}

TEST_F(QtSerialPortTest, OpenTellsTheReasonsOfItsFailures) {
    EXPECT_EQ(failureOf([&] { port_.countReceived(); }), failureNumber::portNotOpen);
    // COM4 and COM6 do not exist, COM5 is no serial device, COM17 stands for no device.
    for (const auto& [number, failure] : {std::pair<std::int16_t, int>{4, failureNumber::portMissing},
                                          {6, failureNumber::portMissing},
                                          {5, failureNumber::portRefused},
                                          {17, failureNumber::portMissing}}) {
        EXPECT_EQ(failureOf([&, number = number] { open(number); }), failure) << "COM" << number;
        EXPECT_FALSE(port_.isOpen());
    }
    for (const char* settings : {"", "38400", "38400,n,8", "38400,n,8,1,", "38400,x,8,1", "0,n,8,1", " 38400,n,8,1"}) {
        EXPECT_EQ(failureOf([&] { port_.setSettings(settings); }), failureNumber::invalidProperty) << settings;
    }
    open();
    EXPECT_EQ(failureOf([&] { port_.open(); }), failureNumber::portHeld);
    port_.close();
    port_.close();
    open();
    EXPECT_TRUE(port_.isOpen());
}

TEST_F(QtSerialPortTest, OpenAsksTheDriverForLowLatencyAndMindsNoRefusal) {
    for (const int answer : {0, -1}) {
        driver = {.present = true, .answer = answer, .flags = ASYNC_SKIP_TEST};
        open();
        EXPECT_EQ(driver.flags, ASYNC_SKIP_TEST | ASYNC_LOW_LATENCY);
        port_.close();
        EXPECT_EQ(driver.flags, ASYNC_SKIP_TEST | (answer < 0 ? ASYNC_LOW_LATENCY : 0));
    }
    driver.present = false;
}

TEST_F(QtSerialPortTest, APortIsHeldWhileItsHolderLivesAndFreeHoweverItDied) {
    const OtherProcess holder([&] { return failureOf([&] { open(); }) == 0; });
    EXPECT_EQ(failureOf([&] { open(); }), failureNumber::portHeld);
    holder.kill();
    open();
}

TEST_F(QtSerialPortTest, APortThatGoesAwayIsToldOnceItsBytesAreRead) {
    open();
    giveFar(bytesFrom(1, 3));
    awaited(3);
    closeFar();
    const Micros used = processorTime();
    for (const Micros limit = clockMicros() + second / 5; clockMicros() < limit;) { // an idle program sleeps
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        port_.waitForNews(clockMicros() + 10'000);
    }
    EXPECT_LT(processorTime() - used, second / 20);
    EXPECT_EQ(port_.read(), bytesFrom(1, 3));
    EXPECT_EQ(failureOf([&] { port_.countReceived(); }), failureNumber::portLost);
    EXPECT_EQ(failureOf([&] { port_.write(bytesFrom(1, 1)); }), failureNumber::portLost);
    EXPECT_EQ(failureIn([&] { port_.clearReceived(); }).description(),
              "COM3 (" + device_ + "): the device has gone away");
    EXPECT_EQ(failureOf([&] { port_.clearUnsent(); }), failureNumber::portLost);
    EXPECT_TRUE(port_.isOpen());
    EXPECT_TRUE(port_.waitForNews(0)); // once for each use
    EXPECT_FALSE(port_.waitForNews(0));
    port_.close();
    EXPECT_EQ(failureOf([&] { port_.read(); }), failureNumber::portNotOpen);
}

TEST_F(QtSerialPortTest, AWaitEndsWithAByteOrOnTimeAndSleepsBetween) {
    open();
    const Micros used = processorTime();
    for (const Micros length : {Micros{0}, Micros{1000}, Micros{200'000}}) {
        const Micros until = clockMicros() + length;
        port_.waitForNews(until);
        EXPECT_GE(clockMicros(), until);
        EXPECT_LT(clockMicros(), until + second / 10);
    }
    EXPECT_LT(processorTime() - used, second / 50);

    if (::fork() == 0) {
        ::usleep(50'000);
        ::_exit(::write(far_, "a", 1) == 1 ? 0 : 1);
    }
    const Micros start = clockMicros();
    port_.waitForNews(start + 5 * second);
    EXPECT_LT(clockMicros(), start + second);
    EXPECT_EQ(port_.countReceived(), 1);
    ::wait(nullptr);
    EXPECT_TRUE(port_.waitForNews(0));  // nobody has read it yet
    EXPECT_FALSE(port_.waitForNews(0)); // nor asked for it since
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
