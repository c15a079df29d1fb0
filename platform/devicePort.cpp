#include "platform/devicePort.h"

#include "base/failure.h"
#include "platform/clock.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace platform {

DevicePort::DevicePort(std::unique_ptr<LineDevice> device, FindDevice findDevice)
    : device_(std::move(device)), findDevice_(std::move(findDevice)) {}

std::string DevicePort::name() const {
    const std::string name = "COM" + std::to_string(number_);
    return path_.empty() || path_ == name ? name : name + " (" + path_ + ")";
}

void DevicePort::open() {
    if (open_) {
        throw Failure(failureNumber::portHeld, name() + ": the port is open already");
    }
    number_ = chosen_;
    path_ = findDevice_(number_);
    openSettings_ = settings_;
    openFailure_.reset();
    try {
        if (path_.empty()) {
            throw Failure(failureNumber::portMissing, "no device is assigned to this port");
        }
        device_->open(path_, openSettings_);
    } catch (const Failure& failure) {
        openFailure_ = failure;
        throw Failure(failure.number(), name() + ": " + failure.description());
    }
    open_ = true;
    reportDue_ = true;
}

void DevicePort::close() {
    releaseDevice();
    open_ = lost_ = false;
    received_.clear();
    unsent_.clear();
}

void DevicePort::releaseDevice() {
    if (open_ && !lost_) {
        device_->close();
    }
}

// Runs first in every operation of the program on the port.
void DevicePort::use() {
    reportDue_ = true;
    if (!open_) {
        throw Failure(failureNumber::portNotOpen, name() + ": the port is not open");
    }
}

void DevicePort::reopenIfLost() {
    reportDue_ = true;
    while (fetch() > 0) { // a device reports that it is gone when its received bytes have been taken
        received_.clear();
    }
    if (!lost_) {
        return;
    }
    received_.clear();
    try {
        device_->open(path_, openSettings_);
        lost_ = false;
    } catch (const Failure&) {
        return; // still lost
    }
}

// Closes the device: a wait on one that has hung up would return at once, each time.
void DevicePort::lose(const std::string& cause) {
    lost_ = true;
    lostCause_ = cause;
    device_->close();
    unsent_.clear();
}

void DevicePort::raiseLost() {
    throw Failure(failureNumber::portLost, name() + ": " + lostCause_);
}

template <class Action>
void DevicePort::onDevice(Action action) {
    if (!open_ || lost_) {
        return;
    }
    try {
        action();
    } catch (const Failure& failure) {
        lose(failure.description());
    }
}

// Moves received bytes from the device to the receive buffer and returns their number. Bytes that do not fit are lost.
std::size_t DevicePort::fetch() {
    std::array<std::uint8_t, 4096> bytes; // the size of the system's buffer for a terminal
    std::size_t count = 0;
    onDevice([&] { count = device_->read(bytes); });
    if (count > 0) {
        const std::size_t room = inputSize_ - std::min(inputSize_, received_.size());
        received_.insert(received_.end(), bytes.begin(),
                         bytes.begin() + static_cast<std::ptrdiff_t>(std::min(room, count)));
        reportDue_ = true;
    }
    return count;
}

void DevicePort::send() {
    onDevice([this] {
        const auto taken = static_cast<std::ptrdiff_t>(device_->write(unsent_));
        unsent_.erase(unsent_.begin(), unsent_.begin() + taken);
    });
}

std::int16_t DevicePort::countReceived() {
    const bool fetched = !reportDue_ && !received_.empty(); // the last wait has read the device
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

Bytes DevicePort::read() {
    use();
    if (readLimit_ == 0 || received_.size() < readLimit_) {
        fetch();
    }
    if (lost_ && received_.empty()) {
        raiseLost();
    }
    const std::size_t waiting = received_.size();
    const std::size_t count = readLimit_ == 0 ? waiting : std::min(waiting, readLimit_);
    const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
    Bytes bytes(received_.begin(), end);
    received_.erase(received_.begin(), end);
    return bytes;
}

void DevicePort::setReadLimit(int bytes) {
    if (bytes < 0) {
        throw Failure(failureNumber::invalidProperty, "The read limit must not be below 0");
    }
    readLimit_ = static_cast<std::size_t>(bytes);
    reportDue_ = true;
}

void DevicePort::setBufferSizes(int input, int output) {
    if (input < 1 || output < 1) {
        throw Failure(failureNumber::invalidProperty, "The buffers of a serial port must not be empty");
    }
    use();
    inputSize_ = static_cast<std::size_t>(input); // the transmit queue grows as needed
}

void DevicePort::clearReceived() {
    use();
    received_.clear();
    // Flushing the system's buffer is slow; do it only when input is pending.
    if (fetch() > 0) {
        received_.clear();
        onDevice([this] { device_->clearReceived(); });
    }
    if (lost_) {
        raiseLost();
    }
}

void DevicePort::clearUnsent() {
    use();
    unsent_.clear();
    onDevice([this] { device_->clearUnsent(); });
    if (lost_) {
        raiseLost();
    }
}

void DevicePort::write(std::span<const std::uint8_t> bytes) {
    use();
    if (!lost_) {
        unsent_.insert(unsent_.end(), bytes.begin(), bytes.end());
        send();
    }
    if (lost_) {
        raiseLost();
    }
}

bool DevicePort::reportInput() {
    const bool input = reportDue_ && (lost_ || !received_.empty());
    reportDue_ = reportDue_ && !input;
    return input;
}

bool DevicePort::pollInput() {
    fetch();
    return reportInput();
}

bool DevicePort::waitForInput(Micros until) {
    while (!reportInput()) {
        const Micros now = clockMicros();
        if (now >= until) {
            return false;
        }
        if (!open_ || lost_) {
            std::this_thread::sleep_for(std::chrono::microseconds(until - now));
            continue;
        }
        onDevice([&] { device_->wait(until, !unsent_.empty()); });
        fetch();
        if (!unsent_.empty()) {
            send();
        }
    }
    return true;
}

} // namespace platform
