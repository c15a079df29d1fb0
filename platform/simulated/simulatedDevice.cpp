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
    return clock_.now() >= present_->pulledAt && openedAt_ < present_->pulledAt;
}

void SimulatedDevice::requirePresent() const {
    if (pulled()) {
        throw Failure(failureNumber::portLost, deviceGone);
    }
}

void SimulatedDevice::open(const std::string& device, const LineSettings& settings) {
    const auto found = sockets_.find(device);
    const Micros now = clock_.now();
    if (found == sockets_.end() || (now >= found->second.pulledAt && now < found->second.backAt)) {
        throw Failure(failureNumber::portMissing, "there is no such port");
    }
    switch (found->second.state) {
    case Socket::State::held: throw Failure(failureNumber::portHeld, "in use by another program");
    case Socket::State::forbidden: throw Failure(failureNumber::portForbidden, "this user may not open the port");
    case Socket::State::broken: throw Failure(failureNumber::portRefused, "the device does not answer");
    case Socket::State::refusesSettings: throw Failure(failureNumber::portRefused, "it refuses the settings");
    case Socket::State::free: break;
    }
    if (!fits(settings)) {
        throw Failure(failureNumber::portRefused, "it refuses the settings");
    }
    present_ = &found->second;
    openedAt_ = now;
    advance();
    received_.clear(); // bytes that came while the port was closed are lost
}

void SimulatedDevice::close() {
    advance();
    if (present_->line != nullptr) {
        if (pulled()) {
            present_->line->dropAll();
        } else {
            present_->line->dropUnsent(clock_.now());
        }
    }
    present_ = nullptr;
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
    if (present_->line != nullptr) {
        present_->line->write(bytes, clock_.now());
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
    if (present_->line != nullptr) {
        present_->line->dropUnsent(clock_.now());
    }
}

void SimulatedDevice::advance() {
    if (present_ != nullptr && present_->line != nullptr) {
        const Micros until = pulled() ? present_->pulledAt : clock_.now();
        if (present_->line->advance(until, received_)) {
            clock_.noteProgress();
        }
    }
}

Micros SimulatedDevice::next() const {
    if (present_ == nullptr) {
        return never;
    }
    const Micros loss = pulled() ? clock_.now() : openedAt_ < present_->pulledAt ? present_->pulledAt : never;
    return present_->line == nullptr || pulled() ? loss : std::min(loss, present_->line->next());
}

} // namespace platform
