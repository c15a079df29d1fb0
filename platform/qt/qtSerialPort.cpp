#include "platform/qt/qtSerialPort.h"

#include "base/failure.h"
#include "platform/qt/portDevice.h"
#include "platform/qt/text.h"

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
#include <time.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr const char* deviceGone = "the device has gone away";

std::string causeText(int systemError) {
    return std::generic_category().message(systemError);
}

// The group whose members may use the device.
std::string groupOf(const struct stat& status) {
    const group* entry = (status.st_mode & S_IWGRP) != 0 ? ::getgrgid(status.st_gid) : nullptr;
    return entry != nullptr ? entry->gr_name : "dialout";
}

bool isPseudoTerminal(int descriptor) {
    constexpr unsigned first = 136; // major device numbers of the tool's ends
    constexpr unsigned last = 143;
    struct stat status {};
    ::fstat(descriptor, &status);
    return major(status.st_rdev) >= first && major(status.st_rdev) <= last;
}

// What of `events` the descriptor is ready for, without waiting; errors and a hang-up come unasked.
short readiness(int descriptor, short events) {
    pollfd look{.fd = descriptor, .events = events, .revents = 0};
    return ::poll(&look, 1, 0) > 0 ? look.revents : short{0};
}

timespec timeUntil(Micros until) {
    constexpr Micros second = 1'000'000;
    const Micros rest = std::max<Micros>(until - clockMicros(), 0);
    return {.tv_sec = rest / second, .tv_nsec = rest % second * 1000};
}

} // namespace

QtSerialPort::QtSerialPort(Files& files, std::string iniPath) : files_(files), iniPath_(std::move(iniPath)) {
    QObject::connect(&port_, &QSerialPort::readyRead, [this] {
        const QByteArray bytes = port_.readAll();
        store(bytes);
    });
    QObject::connect(&port_, &QSerialPort::errorOccurred,
                     [this](QSerialPort::SerialPortError error) { noticeError(error); });
}

std::string QtSerialPort::name() const {
    return "COM" + std::to_string(number_) + (device_.empty() ? "" : " (" + device_ + ")");
}

void QtSerialPort::setSettings(const std::string& settings) {
    settings_ = parseLineSettings(settings);
}

void QtSerialPort::checkDevice() const {
    struct stat status {};
    if (device_.empty()) {
        throw Failure(failureNumber::portMissing, name() + ": no device stands for this port");
    }
    if (::stat(device_.c_str(), &status) < 0) {
        const int error = errno;
        throw Failure(error == EACCES ? failureNumber::portForbidden : failureNumber::portMissing,
                      name() + ": " + causeText(error));
    }
    if (!S_ISCHR(status.st_mode)) {
        throw Failure(failureNumber::portRefused, name() + ": not a serial port");
    }
    if (::access(device_.c_str(), R_OK | W_OK) < 0) {
        const std::string cause = causeText(errno);
        throw Failure(failureNumber::portForbidden,
                      name() + ": " + cause + ". Members of the group " + groupOf(status) + " may use this port");
    }
}

void QtSerialPort::raiseOpenFailure(int systemError) {
    const QSerialPort::SerialPortError error = port_.error();
    const std::string cause = toUtf8(port_.errorString());
    // A port without hardware behind it opens, and then fails with an input/output error or has no such address.
    const bool missing =
        error == QSerialPort::DeviceNotFoundError || error == QSerialPort::ResourceError || systemError == ENXIO;
    if (missing) {
        throw Failure(failureNumber::portMissing, name() + ": no working device behind it (" + cause + ")");
    }
    if (error == QSerialPort::PermissionError) {
        throw Failure(failureNumber::portHeld, name() + " is in use by another program (" + cause + ")");
    }
    throw Failure(failureNumber::portRefused, name() + ": " + cause);
}

void QtSerialPort::setUpLine() {
    // Another program's exclusive mode does not bar an administrator, and not every program sets it.
    if (::flock(port_.handle(), LOCK_EX | LOCK_NB) < 0) {
        throw Failure(failureNumber::portHeld, name() + " is in use by another program");
    }
    if (isPseudoTerminal(port_.handle())) {
        // The toolkit's exclusive mode outlives a process that is killed, for the far end's program often keeps the
        // terminal open. The lock file and the lock on the device, which end with the process, bar other programs.
        ::ioctl(port_.handle(), TIOCNXCL);
    }
    const bool taken = port_.setBaudRate(settings_.speed) && port_.setParity(settings_.parity) &&
                       port_.setDataBits(settings_.dataBits) && port_.setStopBits(settings_.stopBits) &&
                       port_.setFlowControl(QSerialPort::NoFlowControl);
    if (!taken) {
        throw Failure(failureNumber::portRefused, name() + " refuses the settings of the line");
    }
    askForLowLatency();
    port_.setDataTerminalReady(true); // a pseudo terminal has no such lines, which is no failure
    port_.setRequestToSend(true);
}

// An adapter gathers what it receives for up to 16 ms before it passes it on, for each block of a transfer anew. Its
// driver sends at once when asked to; one that has no such mode refuses, which is no failure.
void QtSerialPort::askForLowLatency() {
    serial_struct driver{};
    if (::ioctl(port_.handle(), TIOCGSERIAL, &driver) == 0) {
        driver.flags |= ASYNC_LOW_LATENCY;
        ::ioctl(port_.handle(), TIOCSSERIAL, &driver);
    }
}

void QtSerialPort::open() {
    if (open_) {
        throw Failure(failureNumber::portHeld, name() + " is open already");
    }
    device_ = portDevice(number_, files_, iniPath_);
    checkDevice();
    port_.setPortName(fromUtf8(passPortLock(device_, name())));
    errno = 0;
    if (!port_.open(QIODevice::ReadWrite)) {
        raiseOpenFailure(errno);
    }
    try {
        setUpLine();
    } catch (...) {
        port_.close();
        throw;
    }
    watchForRoom();
    open_ = true;
    newsDue_ = true;
}

// While window events run, unsent bytes leave as soon as the device takes them.
void QtSerialPort::watchForRoom() {
    writable_ = std::make_unique<QSocketNotifier>(port_.handle(), QSocketNotifier::Write);
    writable_->setEnabled(false);
    QObject::connect(writable_.get(), &QSocketNotifier::activated, [this] { send(); });
}

void QtSerialPort::closeDevice() {
    unsent_.clear();
    writable_->setEnabled(false); // and kept until the next open: this may be its own doing
    port_.close();
}

void QtSerialPort::close() {
    if (open_ && !lost_) {
        closeDevice();
    }
    open_ = false;
    lost_ = false;
    received_.clear();
}

void QtSerialPort::leaveLockFree() {
    if (open_) {
        removePortLock(toUtf8(port_.portName()));
    }
}

void QtSerialPort::use() {
    newsDue_ = true;
    if (!open_) {
        throw Failure(failureNumber::portNotOpen, name() + " is not open");
    }
}

void QtSerialPort::raiseLost() const {
    throw Failure(failureNumber::portLost, name() + ": the connection is lost (" + lostCause_ + ")");
}

// Closes the device: a descriptor that hung up would be readable for ever.
void QtSerialPort::lose(const std::string& cause) {
    lost_ = true;
    lostCause_ = cause;
    closeDevice();
}

void QtSerialPort::noticeError(QSerialPort::SerialPortError error) {
    const bool harmless = error == QSerialPort::NoError || error == QSerialPort::TimeoutError;
    if (!harmless && open_ && !lost_) {
        // The toolkit's text for a device that is gone is whatever errno held last.
        lose(error == QSerialPort::ResourceError ? deviceGone : toUtf8(port_.errorString()));
    }
}

// What does not fit into the receive buffer is lost, as at an interface of its own.
void QtSerialPort::store(std::span<const char> bytes) {
    const std::size_t room = inputSize_ - std::min(inputSize_, received_.size());
    const auto taken = bytes.first(std::min(room, bytes.size()));
    received_.insert(received_.end(), taken.begin(), taken.end());
    newsDue_ = true;
}

void QtSerialPort::fetch() {
    if (open_ && !lost_) {
        fetch(readiness(port_.handle(), POLLIN));
    }
}

void QtSerialPort::fetch(short ready) {
    if ((ready & POLLIN) == 0) {
        if (ready != 0) {
            lose(deviceGone);
        }
        return;
    }
    std::array<char, 4096> bytes; // the most that the system holds for a terminal
    const ssize_t count = ::read(port_.handle(), bytes.data(), bytes.size());
    if (count > 0) {
        store(std::span(bytes).first(static_cast<std::size_t>(count)));
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        lose(deviceGone);
    }
}

// Hands the unsent bytes to the system, as far as it takes them now.
void QtSerialPort::send() {
    while (!unsent_.empty()) {
        const ssize_t taken = ::write(port_.handle(), unsent_.data(), unsent_.size());
        if (taken >= 0) {
            unsent_.erase(unsent_.begin(), unsent_.begin() + taken);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            lose(errno == EIO ? deviceGone : causeText(errno));
        }
    }
    if (writable_->isEnabled() == unsent_.empty()) {
        writable_->setEnabled(!unsent_.empty());
    }
}

std::int16_t QtSerialPort::countReceived() {
    const bool fetched = !newsDue_ && !received_.empty(); // by the wait that has told of it
    use();
    if (!fetched) {
        fetch();
    }
    if (lost_ && received_.empty()) {
        raiseLost();
    }
    constexpr std::size_t most = INT16_MAX;
    return static_cast<std::int16_t>(std::min(received_.size(), most));
}

Bytes QtSerialPort::read() {
    if (received_.empty()) {
        countReceived();
    }
    const std::size_t waiting = received_.size();
    const std::size_t count = readLimit_ == 0 ? waiting : std::min(waiting, readLimit_);
    const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
    Bytes bytes(received_.begin(), end);
    received_.erase(received_.begin(), end);
    newsDue_ = true;
    return bytes;
}

void QtSerialPort::setReadLimit(int bytes) {
    if (bytes < 0) {
        throw Failure(failureNumber::invalidProperty, "The read limit must not be below 0");
    }
    readLimit_ = static_cast<std::size_t>(bytes);
}

void QtSerialPort::setBufferSizes(int input, int output) {
    if (input < 1 || output < 1) {
        throw Failure(failureNumber::invalidProperty, "The buffers of a serial port must not be empty");
    }
    inputSize_ = static_cast<std::size_t>(input); // what is unsent may grow as needed
}

// The system's clearing waits for its own work on the bytes that come in, for longer than it takes to write a block: it
// is asked only where there is something to clear.
void QtSerialPort::clearReceived() {
    use();
    received_.clear();
    if (lost_ || (readiness(port_.handle(), POLLIN) != 0 && !port_.clear(QSerialPort::Input))) {
        raiseLost();
    }
}

void QtSerialPort::clearUnsent() {
    use();
    unsent_.clear();
    if (lost_ || !port_.clear(QSerialPort::Output)) {
        raiseLost();
    }
}

void QtSerialPort::write(std::span<const std::uint8_t> bytes) {
    use();
    if (!lost_) {
        unsent_.insert(unsent_.end(), bytes.begin(), bytes.end());
        send();
    }
    if (lost_) {
        raiseLost();
    }
}

bool QtSerialPort::tellNews() {
    const bool news = newsDue_ && (lost_ || !received_.empty());
    newsDue_ = newsDue_ && !news;
    return news;
}

bool QtSerialPort::waitForNews(Micros until) {
    for (bool late = false; !tellNews(); late = clockMicros() >= until) {
        if (late) {
            return false;
        }
        const bool there = open_ && !lost_;
        const short events = static_cast<short>(unsent_.empty() ? POLLIN : POLLIN | POLLOUT);
        pollfd line{.fd = there ? port_.handle() : -1, .events = events, .revents = 0};
        const timespec rest = timeUntil(until);
        if (::ppoll(&line, 1, &rest, nullptr) > 0) {
            fetch(static_cast<short>(line.revents & ~POLLOUT));
            send();
        }
    }
    return true;
}

} // namespace platform
