#include "platform/qt/qtSerialPort.h"

#include "platform/failure.h"
#include "platform/qt/portDevice.h"
#include "platform/qt/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <grp.h>
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

// Takes the text up to the next comma off `text`.
std::string_view takeField(std::string_view& text) {
    const std::size_t comma = text.find(',');
    const std::string_view field = text.substr(0, comma);
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
    return field;
}

template <class Value>
struct Choice {
    std::string_view text;
    Value value;
};

constexpr std::array parities{
    Choice<QSerialPort::Parity>{"n", QSerialPort::NoParity}, Choice<QSerialPort::Parity>{"e", QSerialPort::EvenParity},
    Choice<QSerialPort::Parity>{"o", QSerialPort::OddParity}, Choice<QSerialPort::Parity>{"m", QSerialPort::MarkParity},
    Choice<QSerialPort::Parity>{"s", QSerialPort::SpaceParity}};
constexpr std::array dataBits{
    Choice<QSerialPort::DataBits>{"5", QSerialPort::Data5}, Choice<QSerialPort::DataBits>{"6", QSerialPort::Data6},
    Choice<QSerialPort::DataBits>{"7", QSerialPort::Data7}, Choice<QSerialPort::DataBits>{"8", QSerialPort::Data8}};
constexpr std::array stopBits{Choice<QSerialPort::StopBits>{"1", QSerialPort::OneStop},
                              Choice<QSerialPort::StopBits>{"2", QSerialPort::TwoStop}};

// Sets `value` to the choice that the text names; false when it names none.
template <class Value, std::size_t count>
bool choose(const std::array<Choice<Value>, count>& choices, std::string_view text, Value& value) {
    const auto found = std::ranges::find(choices, text, &Choice<Value>::text);
    if (found != choices.end()) {
        value = found->value;
    }
    return found != choices.end();
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
    QObject::connect(&port_, &QSerialPort::readyRead, [this] { store(); });
    QObject::connect(&port_, &QSerialPort::errorOccurred,
                     [this](QSerialPort::SerialPortError error) { noticeError(error); });
}

std::string QtSerialPort::name() const {
    return "COM" + std::to_string(number_) + (device_.empty() ? "" : " (" + device_ + ")");
}

QtSerialPort::Settings QtSerialPort::parse(const std::string& text) {
    Settings settings;
    std::string_view rest = text;
    const std::string_view speed = takeField(rest);
    const auto end = speed.data() + speed.size();
    const auto number = std::from_chars(speed.data(), end, settings.speed);
    const bool good = number.ec == std::errc() && number.ptr == end && settings.speed > 0 &&
                      choose(parities, takeField(rest), settings.parity) &&
                      choose(dataBits, takeField(rest), settings.dataBits) && choose(stopBits, rest, settings.stopBits);
    if (!good) {
        throw Failure(failureNumber::invalidProperty, "\"" + text + "\" are no settings of a serial port");
    }
    return settings;
}

void QtSerialPort::setSettings(const std::string& settings) {
    settings_ = parse(settings);
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
    port_.setDataTerminalReady(true); // a pseudo terminal has no such lines, which is no failure
    port_.setRequestToSend(true);
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
    open_ = true;
    newsDue_ = true;
}

void QtSerialPort::close() {
    open_ = false;
    lost_ = false;
    received_.clear();
    port_.close();
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
    port_.close();
}

void QtSerialPort::noticeError(QSerialPort::SerialPortError error) {
    const bool harmless = error == QSerialPort::NoError || error == QSerialPort::TimeoutError;
    if (!harmless && open_ && !lost_) {
        // The toolkit's text for a device that is gone is whatever errno held last.
        lose(error == QSerialPort::ResourceError ? deviceGone : toUtf8(port_.errorString()));
    }
}

void QtSerialPort::store() {
    const QByteArray bytes = port_.readAll();
    const std::size_t room = inputSize_ - std::min(inputSize_, received_.size());
    const std::size_t taken = std::min(room, static_cast<std::size_t>(bytes.size()));
    received_.insert(received_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
    newsDue_ = true;
}

void QtSerialPort::fetch() {
    if (!open_ || lost_) {
        return;
    }
    const short ready = readiness(port_.handle(), POLLIN);
    if ((ready & POLLIN) != 0) {
        port_.waitForReadyRead(0); // reports through store() or noticeError()
    } else if (ready != 0) {
        lose(deviceGone);
    }
}

// Hands the unsent bytes to the system, as far as it takes them now.
void QtSerialPort::send() {
    while (port_.bytesToWrite() > 0 && (readiness(port_.handle(), POLLOUT) & POLLOUT) != 0) {
        port_.flush(); // reports through noticeError()
    }
}

std::int16_t QtSerialPort::countReceived() {
    use();
    fetch();
    if (lost_ && received_.empty()) {
        raiseLost();
    }
    constexpr std::size_t most = INT16_MAX;
    return static_cast<std::int16_t>(std::min(received_.size(), most));
}

Bytes QtSerialPort::read() {
    const auto waiting = static_cast<std::size_t>(countReceived());
    const std::size_t count = readLimit_ == 0 ? waiting : std::min(waiting, readLimit_);
    const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
    Bytes bytes(received_.begin(), end);
    received_.erase(received_.begin(), end);
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
    inputSize_ = static_cast<std::size_t>(input); // the toolkit's transmit queue grows as needed
}

void QtSerialPort::clearReceived() {
    use();
    received_.clear();
    if (lost_ || !port_.clear(QSerialPort::Input)) {
        raiseLost();
    }
}

void QtSerialPort::clearUnsent() {
    use();
    if (lost_ || !port_.clear(QSerialPort::Output)) {
        raiseLost();
    }
}

void QtSerialPort::write(std::span<const std::uint8_t> bytes) {
    use();
    if (!lost_) {
        port_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
        send();
    }
    if (lost_) {
        raiseLost();
    }
}

bool QtSerialPort::hasNews() {
    fetch();
    const bool news = newsDue_ && (lost_ || !received_.empty());
    newsDue_ = newsDue_ && !news;
    return news;
}

void QtSerialPort::waitForNews(Micros until) {
    while (!hasNews() && clockMicros() < until) {
        const bool unsent = open_ && !lost_ && port_.bytesToWrite() > 0;
        const short events = static_cast<short>(unsent ? POLLIN | POLLOUT : POLLIN);
        pollfd line{.fd = open_ && !lost_ ? port_.handle() : -1, .events = events, .revents = 0};
        const timespec rest = timeUntil(until);
        ::ppoll(&line, 1, &rest, nullptr);
        if (unsent) {
            send();
        }
    }
}

} // namespace platform
