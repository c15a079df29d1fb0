#include "platform/simulated/simulatedLine.h"

#include <algorithm>
#include <utility>

namespace platform {

void SimulatedLine::put(Direction direction, Bytes bytes, Micros at) {
    if (changed) {
        changed({direction, at, bytes});
    }
    lane(direction).send(std::move(bytes), at);
}

void SimulatedLine::write(std::span<const std::uint8_t> bytes, Micros now) {
    pass(Direction::toUnit, Bytes(bytes.begin(), bytes.end()), now);
}

void SimulatedLine::pass(Direction direction, Bytes bytes, Micros at) {
    const Writes kind = kindOf(direction, bytes, at);
    if (!hooks_.empty() || !faults(direction).empty()) {
        Transmission transmission{direction, at, bytes, kind};
        for (const TransmissionHook& hook : hooks_) {
            hook(transmission);
        }
        applyFaults(faults(direction), kind, random_, transmission.bytes, transmission.at);
        if (changed && (transmission.at != at || transmission.bytes != bytes)) {
            changed(transmission);
        }
        at = transmission.at;
        bytes = std::move(transmission.bytes);
    }
    lane(direction).send(std::move(bytes), at);
}

Writes SimulatedLine::kindOf(Direction direction, const Bytes& bytes, Micros at) {
    constexpr int partsOfFrame =
        4; // the program writes them at the same time; the last is the block check, which may be any byte
    const bool begins = !bytes.empty() && bytes.front() == simulator::stx;
    if (direction == Direction::fromUnit) {
        return begins ? Writes::frames : Writes::transfer;
    }
    if (begins && (frameParts_ != 1 || at != frameAt_)) {
        frameAt_ = at;
        frameParts_ = partsOfFrame;
    } else if (bytes.size() >= simulator::checksumPacketSize) {
        frameParts_ = 0;
    }
    if (frameParts_ == 0) {
        return Writes::transfer;
    }
    --frameParts_;
    return Writes::frames;
}

Micros SimulatedLine::nextAtUnit() const {
    const Micros event = events_.empty() ? never : events_.begin()->first;
    const Micros unit = unit_ == nullptr ? never : unit_->due();
    return std::min({event, unit, toUnit_.writeEnd()});
}

Micros SimulatedLine::next() const {
    return std::min(nextAtUnit(), fromUnit_.nextArrival());
}

bool SimulatedLine::advance(Micros now, Bytes& received) {
    bool happened = false;
    for (Micros moment = nextAtUnit(); moment <= now; moment = nextAtUnit()) {
        step(moment);
        happened = true;
    }
    return fromUnit_.takeArrived(now, received) || happened;
}

void SimulatedLine::step(Micros moment) {
    if (!events_.empty() && events_.begin()->first <= moment) {
        const auto event = std::move(events_.begin()->second);
        events_.erase(events_.begin());
        event();
        return;
    }
    const bool arrives = toUnit_.writeEnd() <= moment;
    const Bytes bytes = arrives ? toUnit_.takeWrite() : Bytes{};
    if (unit_ == nullptr) {
        return;
    }
    if (arrives) {
        unit_->receive(bytes, moment);
    } else {
        unit_->advance(moment);
    }
    for (simulator::Output& output : unit_->takeOutput()) {
        pass(Direction::fromUnit, std::move(output.bytes), output.at);
    }
}

void SimulatedLine::dropAll() {
    toUnit_.clear();
    fromUnit_.clear();
}

} // namespace platform
