#include "platform/simulated/simulatedPort.h"

#include <algorithm>
#include <limits>

namespace platform {

namespace {

constexpr const char* onlySettings = "38400,n,8,1"; // what the unit at the other end understands

} // namespace

void SimulatedPort::fail(int number, const std::string& cause) const {
    throw Failure(number, "COM" + std::to_string(chosen_) + ": " + cause);
}

Socket* SimulatedPort::found() {
    const auto at = sockets_.find(chosen_);
    if (at == sockets_.end()) {
        return nullptr;
    }
    const Socket& socket = at->second;
    const bool away = clock_.now() >= socket.pulledAt && clock_.now() < socket.backAt;
    return away ? nullptr : &at->second;
}

bool SimulatedPort::lost() const {
    return open_ && present_->pulledAt <= clock_.now() && openedAt_ < present_->pulledAt;
}

void SimulatedPort::use(Operation operation) {
    operations_.pass(operation);
    clock_.noteLook();
    if (!open_) {
        fail(failureNumber::portNotOpen, "the port is not open");
    }
    advance();
    news_ = false;
    if (lost()) {
        fail(failureNumber::portLost, "the device has gone away");
    }
}

void SimulatedPort::choosePort(std::int16_t number) {
    operations_.pass(Operation::choosePort);
    chosen_ = number;
}

void SimulatedPort::setSettings(const std::string& settings) {
    operations_.pass(Operation::setSettings);
    settings_ = settings;
}

void SimulatedPort::open() {
    operations_.pass(Operation::openPort);
    if (open_) {
        fail(failureNumber::portHeld, "the port is open already");
    }
    Socket* socket = found();
    if (socket == nullptr) {
        fail(failureNumber::portMissing, "there is no such port");
    }
    switch (socket->state) {
    case Socket::State::held: fail(failureNumber::portHeld, "another program holds the port");
    case Socket::State::forbidden: fail(failureNumber::portForbidden, "this user may not open the port");
    case Socket::State::broken: fail(failureNumber::portRefused, "the device does not answer");
    case Socket::State::refusesSettings: fail(failureNumber::portRefused, "the port does not take " + settings_);
    case Socket::State::free: break;
    }
    if (settings_ != onlySettings) {
        fail(failureNumber::portRefused, "the port does not take " + settings_);
    }
    open_ = true;
    present_ = socket;
    openedAt_ = clock_.now();
    lossSeen_ = false;
    advance(); // what came while the port was closed has gone nowhere
    received_.clear();
    readFrom_ = 0;
    news_ = false;
}

void SimulatedPort::close() {
    operations_.pass(Operation::closePort);
    if (!open_) {
        fail(failureNumber::portNotOpen, "the port is not open");
    }
    advance();
    open_ = false;
    if (present_->line != nullptr) {
        present_->line->dropUnsent(clock_.now());
    }
    received_.clear();
    readFrom_ = 0;
}

void SimulatedPort::setBufferSizes(int /*input*/, int /*output*/) {
    use(Operation::setBufferSizes);
}

std::int16_t SimulatedPort::countReceived() {
    use(Operation::countReceived);
    constexpr std::size_t most = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::int16_t>(std::min(waiting(), most));
}

void SimulatedPort::clearReceived() {
    use(Operation::clearReceived);
    received_.clear();
    readFrom_ = 0;
}

void SimulatedPort::clearUnsent() {
    use(Operation::clearUnsent);
    if (present_->line != nullptr) {
        present_->line->dropUnsent(clock_.now());
    }
}

void SimulatedPort::setReadLimit(int bytes) {
    operations_.pass(Operation::setReadLimit);
    readLimit_ = bytes;
}

Bytes SimulatedPort::read() {
    use(Operation::readPort);
    const std::size_t count = readLimit_ == 0 ? waiting() : std::min(waiting(), static_cast<std::size_t>(readLimit_));
    const auto first = received_.begin() + static_cast<std::ptrdiff_t>(readFrom_);
    Bytes bytes(first, first + static_cast<std::ptrdiff_t>(count));
    readFrom_ += count;
    if (readFrom_ == received_.size()) {
        received_.clear();
        readFrom_ = 0;
    }
    if (bytesTaken && !bytes.empty()) {
        bytesTaken(bytes);
    }
    return bytes;
}

void SimulatedPort::write(std::span<const std::uint8_t> bytes) {
    use(Operation::writePort);
    if (present_->line != nullptr) {
        present_->line->write(bytes, clock_.now());
    }
}

void SimulatedPort::advance() {
    if (!open_ || lossSeen_) {
        return;
    }
    SimulatedLine* line = present_->line;
    const Micros until = lost() ? present_->pulledAt : clock_.now();
    const std::size_t before = received_.size();
    if (line != nullptr && line->advance(until, received_)) {
        clock_.noteProgress();
    }
    news_ = news_ || received_.size() > before;
    if (lost()) {
        lossSeen_ = news_ = true;
        received_.clear();
        readFrom_ = 0;
        if (line != nullptr) {
            line->dropAll();
        }
    }
}

Micros SimulatedPort::next() const {
    if (!open_ || lossSeen_) {
        return never;
    }
    const Micros loss = openedAt_ < present_->pulledAt ? present_->pulledAt : never;
    return present_->line == nullptr ? loss : std::min(loss, present_->line->next());
}

} // namespace platform
