#include "platform/simulated/simulatedDevice.h"

#include "base/failure.h"

#include <algorithm>

namespace platform {

namespace {

// The settings of the unit's own port.
bool fits(const LineSettings& settings) {
    return settings.speed == 38400 && settings.parity == 'n' && settings.dataBits == 8 && settings.stopBits == 1;
}

} // namespace

bool SimulatedDevice::pulled() const {
    return clock_.now() >= openPort_->pulledAt && openedAt_ < openPort_->pulledAt;
}

void SimulatedDevice::requirePresent() const {
    if (pulled()) {
        throw Failure(failureNumber::portLost, deviceGone);
    }
}

void SimulatedDevice::open(const std::string& device, const LineSettings& settings) {
    const auto found = comPorts_.find(device);
    const Micros now = clock_.now();
    if (found == comPorts_.end() || (now >= found->second.pulledAt && now < found->second.backAt)) {
        throw Failure(failureNumber::portMissing, "there is no such port");
    }
    switch (found->second.state) {
    case ComPort::State::held: throw Failure(failureNumber::portHeld, "in use by another program");
    case ComPort::State::forbidden: throw Failure(failureNumber::portForbidden, "this user may not open the port");
    case ComPort::State::broken: throw Failure(failureNumber::portRefused, "the device does not answer");
    case ComPort::State::refusesSettings: throw Failure(failureNumber::portRefused, "it refuses the settings");
    case ComPort::State::free: break;
    }
    if (!fits(settings)) {
        throw Failure(failureNumber::portRefused, "it refuses the settings");
    }
    openPort_ = &found->second;
    openedAt_ = now;
    advance();
    received_.clear(); // bytes that came while the port was closed are lost
}

void SimulatedDevice::close() {
    advance();
    if (openPort_->line != nullptr) {
        if (pulled()) {
            openPort_->line->dropAll();
        } else {
            openPort_->line->dropUnsent(clock_.now());
        }
    }
    openPort_ = nullptr;
    received_.clear();
}

std::size_t SimulatedDevice::read(std::span<std::uint8_t> bytes) {
    advance();
    const std::size_t count = std::min(bytes.size(), received_.size());
    if (count == 0) {
        requirePresent();
    }
    const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(received_.begin(), end, bytes.begin());
    received_.erase(received_.begin(), end);
    return count;
}

std::size_t SimulatedDevice::write(std::span<const std::uint8_t> bytes) {
    requirePresent();
    if (openPort_->line != nullptr) {
        openPort_->line->write(bytes, clock_.now());
    }
    return bytes.size();
}

void SimulatedDevice::clearReceived() {
    requirePresent();
    advance();
    received_.clear();
}

void SimulatedDevice::clearUnsent() {
    requirePresent();
    if (openPort_->line != nullptr) {
        openPort_->line->dropUnsent(clock_.now());
    }
}

void SimulatedDevice::advance() {
    if (openPort_ != nullptr && openPort_->line != nullptr) {
        const Micros until = pulled() ? openPort_->pulledAt : clock_.now();
        if (openPort_->line->advance(until, received_)) {
            clock_.noteProgress();
        }
    }
}

Micros SimulatedDevice::next() const {
    if (openPort_ == nullptr) {
        return never;
    }
    const Micros loss = pulled() ? clock_.now() : openedAt_ < openPort_->pulledAt ? openPort_->pulledAt : never;
    return openPort_->line == nullptr || pulled() ? loss : std::min(loss, openPort_->line->next());
}

} // namespace platform
