// A serial line as a POSIX terminal.
#include "base/failure.h"
#include "platform/clock.h"
#include "platform/system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace platform {

namespace {

std::string causeText(int systemError) {
    return std::generic_category().message(systemError);
}

bool isGone(int systemError) {
    constexpr std::array errors{EIO, ENODEV, ENXIO, EBADF, EPIPE, ECONNRESET};
    return std::ranges::find(errors, systemError) != errors.end();
}

[[noreturn]] void raiseLost(int systemError) {
    throw Failure(failureNumber::portLost, isGone(systemError) ? deviceGone : causeText(systemError));
}

[[noreturn]] void raiseMissing(int systemError) {
    throw Failure(failureNumber::portMissing, "no working device behind it (" + causeText(systemError) + ")");
}

[[noreturn]] void raiseHeld() {
    throw Failure(failureNumber::portHeld, "in use by another program");
}

// The group whose members may use the device.
std::string groupOf(const struct stat& status) {
    const group* entry = (status.st_mode & S_IWGRP) != 0 ? ::getgrgid(status.st_gid) : nullptr;
    return entry != nullptr ? entry->gr_name : "dialout";
}

// Detects a missing device and missing rights before the open.
void checkDevice(const std::string& device) {
    struct stat status {};
    if (::stat(device.c_str(), &status) < 0) {
        const int error = errno;
        throw Failure(error == EACCES ? failureNumber::portForbidden : failureNumber::portMissing, causeText(error));
    }
    if (!S_ISCHR(status.st_mode)) {
        throw Failure(failureNumber::portRefused, "not a serial port");
    }
    if (::access(device.c_str(), R_OK | W_OK) < 0) {
        const int error = errno; // before the search for the group changes it
        throw Failure(failureNumber::portForbidden,
                      causeText(error) + ". Members of the group " + groupOf(status) + " may use this port");
    }
}

int openDescriptor(const std::string& device) {
    const int descriptor = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0) {
        return descriptor;
    }
    const int error = errno;
    if (error == EBUSY) {
        raiseHeld();
    }
    if (isGone(error)) {
        raiseMissing(error);
    }
    throw Failure(failureNumber::portRefused, causeText(error));
}

bool isPseudoTerminal(int descriptor) {
    constexpr unsigned first = 136; // major device numbers of pseudo terminals
    constexpr unsigned last = 143;
    struct stat status {};
    ::fstat(descriptor, &status);
    return major(status.st_rdev) >= first && major(status.st_rdev) <= last;
}

// The exclusive mode does not stop an administrator, and not every program sets it, so the device is also locked.
void lockDevice(int descriptor) {
    if (::flock(descriptor, LOCK_EX | LOCK_NB) < 0) {
        raiseHeld();
    }
    // On a pseudo terminal the exclusive mode remains after a process is killed if the program at the other end keeps the
    // terminal open. The lock ends with the process.
    if (!isPseudoTerminal(descriptor)) {
        ::ioctl(descriptor, TIOCEXCL);
    }
}

template <class Value>
struct Choice {
    int setting;
    Value flags;
};
constexpr std::array speeds{Choice<speed_t>{1200, B1200},   Choice<speed_t>{2400, B2400},
                            Choice<speed_t>{4800, B4800},   Choice<speed_t>{9600, B9600},
                            Choice<speed_t>{19200, B19200}, Choice<speed_t>{38400, B38400},
                            Choice<speed_t>{57600, B57600}, Choice<speed_t>{115200, B115200}};
constexpr std::array parities{Choice<tcflag_t>{'n', 0}, Choice<tcflag_t>{'e', PARENB},
                              Choice<tcflag_t>{'o', PARENB | PARODD}, Choice<tcflag_t>{'m', PARENB | CMSPAR | PARODD},
                              Choice<tcflag_t>{'s', PARENB | CMSPAR}};
constexpr std::array sizes{Choice<tcflag_t>{5, CS5}, Choice<tcflag_t>{6, CS6}, Choice<tcflag_t>{7, CS7},
                           Choice<tcflag_t>{8, CS8}};

template <class Value, std::size_t count>
Value flagsOf(const std::array<Choice<Value>, count>& choices, int setting) {
    const auto found = std::ranges::find(choices, setting, &Choice<Value>::setting);
    if (found == choices.end()) {
        throw Failure(failureNumber::portRefused, "it has no setting " + std::to_string(setting));
    }
    return found->flags;
}

void setLine(int descriptor, const LineSettings& settings) {
    termios line{};
    if (::tcgetattr(descriptor, &line) < 0) {
        const int error = errno;
        if (isGone(error)) { // a port without hardware can be opened
            raiseMissing(error);
        }
        throw Failure(failureNumber::portRefused, causeText(error));
    }
    ::cfmakeraw(&line);
    line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CMSPAR | CRTSCTS);
    line.c_cflag |= CLOCAL | CREAD | flagsOf(sizes, settings.dataBits) | flagsOf(parities, settings.parity) |
                    (settings.stopBits == 2 ? CSTOPB : 0);
    line.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
    line.c_cc[VMIN] = 1; // so a read without bytes gives EAGAIN, and 0 means a hang-up
    line.c_cc[VTIME] = 0;
    ::cfsetspeed(&line, flagsOf(speeds, settings.speed));
    termios actual{};
    if (::tcsetattr(descriptor, TCSANOW, &line) < 0 || ::tcgetattr(descriptor, &actual) < 0 ||
        actual.c_cflag != line.c_cflag || ::cfgetospeed(&actual) != ::cfgetospeed(&line)) {
        throw Failure(failureNumber::portRefused, "it refuses the settings of the line");
    }
}

// An adapter may hold received bytes for up to 16 ms, at each block of a transfer. In the low-latency mode its driver
// passes them on at once. A driver without that mode refuses; this is not a failure. True when the mode has changed.
bool changeLowLatency(int descriptor, bool on) {
    serial_struct driver{};
    if (::ioctl(descriptor, TIOCGSERIAL, &driver) < 0 || ((driver.flags & ASYNC_LOW_LATENCY) != 0) == on) {
        return false;
    }
    driver.flags ^= ASYNC_LOW_LATENCY;
    return ::ioctl(descriptor, TIOCSSERIAL, &driver) == 0;
}

class TerminalDevice final : public LineDevice {
  public:
    ~TerminalDevice() override { close(); }

    void open(const std::string& device, const LineSettings& settings) override {
        checkDevice(device);
        descriptor_ = openDescriptor(device);
        try {
            lockDevice(descriptor_);
            setLine(descriptor_, settings);
        } catch (...) {
            close();
            throw;
        }
        latencyChanged_ = changeLowLatency(descriptor_, true);
        const int lines = TIOCM_DTR | TIOCM_RTS;
        ::ioctl(descriptor_, TIOCMBIS, &lines); // a pseudo terminal has none
    }

    void close() override {
        if (descriptor_ >= 0) {
            if (latencyChanged_) {
                changeLowLatency(descriptor_, false);
            }
            ::close(descriptor_);
        }
        descriptor_ = -1;
        latencyChanged_ = false;
    }

    std::size_t read(std::span<std::uint8_t> bytes) override {
        const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
        if (count == 0) {
            raiseLost(EIO); // a hang-up
        }
        return moved(count);
    }

    std::size_t write(std::span<const std::uint8_t> bytes) override {
        return moved(::write(descriptor_, bytes.data(), bytes.size()));
    }

    void clearReceived() override { flush(TCIFLUSH); }
    void clearUnsent() override { flush(TCOFLUSH); }

    void wait(Micros until, bool forRoom) override {
        constexpr Micros second = 1'000'000;
        const Micros rest = std::max<Micros>(until - clockMicros(), 0);
        const timespec limit{.tv_sec = rest / second, .tv_nsec = rest % second * 1000};
        const int events = forRoom ? POLLIN | POLLOUT : POLLIN;
        pollfd line{.fd = descriptor_, .events = static_cast<short>(events), .revents = 0};
        ::ppoll(&line, 1, &limit, nullptr); // the next read reports a failure
    }

  private:
    static std::size_t moved(ssize_t count) {
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            raiseLost(errno);
        }
        return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }

    void flush(int queue) const {
        if (::tcflush(descriptor_, queue) < 0) {
            raiseLost(errno);
        }
    }

    int descriptor_ = -1;
    bool latencyChanged_ = false;
};

} // namespace

std::unique_ptr<LineDevice> makeLineDevice() {
    return std::make_unique<TerminalDevice>();
}

std::string defaultDevice(int number) {
    struct Range {
        int first, last;
        const char* path;
    };
    constexpr std::array ranges{Range{1, 4, "/dev/ttyS"}, Range{5, 12, "/dev/ttyUSB"}, Range{13, 16, "/dev/ttyACM"}};
    for (const Range& range : ranges) {
        if (number >= range.first && number <= range.last) {
            return range.path + std::to_string(number - range.first);
        }
    }
    return {};
}

} // namespace platform
