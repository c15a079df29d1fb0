#include "simulator/xmodemReceiver.h"

#include "simulator/blockCheck.h"

#include <algorithm>

namespace simulator {

namespace {

constexpr std::array<std::uint8_t, 1> ackAnswer{ack};
constexpr std::array<std::uint8_t, 1> nakAnswer{nak};
constexpr std::array<std::uint8_t, 2> cancelAnswer{can, can};

} // namespace

void XmodemReceiver::start(Micros firstStart) {
    phase_ = Phase::waiting;
    packetFill_ = 0;
    image_.clear();
    image_.reserve(imageSize);
    packetSeen_ = false;
    starts_ = failures_ = cans_ = 0;
    waitEnd_ = firstStart;
    journal_.imageComplete = false;
}

std::size_t XmodemReceiver::receive(std::span<const std::uint8_t> bytes, Micros now) {
    lastByteAt_ = now;
    switch (phase_) {
    case Phase::packet: {
        const std::size_t wanted = (options_.crc ? crcPacketSize : checksumPacketSize) - packetFill_;
        const auto taken = bytes.first(std::min(wanted, bytes.size()));
        std::ranges::copy(taken, packet_.begin() + static_cast<std::ptrdiff_t>(packetFill_));
        packetFill_ += taken.size();
        if (taken.size() == wanted) {
            endPacket(now);
        }
        return taken.size();
    }
    case Phase::purging: // ends at an STX, which may begin a command
        return std::max<std::size_t>(1, static_cast<std::size_t>(std::ranges::find(bytes, stx) - bytes.begin()));
    default: takeFirst(bytes.front(), now); return 1;
    }
}

void XmodemReceiver::takeFirst(std::uint8_t byte, Micros now) {
    cans_ = byte == can ? cans_ + 1 : 0;
    if (byte == eot) { // also a repeated EOT: the ACK may have been lost
        packet_[0] = eot;
        packetFill_ = 1;
        endPacket(now);
    } else if (phase_ == Phase::finished || cans_ == 1) {
        return;
    } else if (byte == soh) {
        packet_[0] = soh;
        packetFill_ = 1;
        phase_ = Phase::packet;
    } else if (cans_ == 2) {
        breakOff();
    } else {
        takeNoise(now);
    }
}

void XmodemReceiver::takeNoise(Micros now) {
    lastByteAt_ = now;
    if (phase_ == Phase::waiting) {
        packetFill_ = 0;
        phase_ = Phase::purging;
    }
}

Micros XmodemReceiver::due() const {
    switch (phase_) {
    case Phase::waiting: return waitEnd_;
    case Phase::packet:
    case Phase::purging: return lastByteAt_ + options_.interByteLimit;
    default: return never;
    }
}

void XmodemReceiver::advance(Micros now) {
    if (due() > now) {
        return;
    }
    if (!packetSeen_) {
        sendStart(now);
    } else if (phase_ == Phase::waiting) {
        waitForPacket(now);
        transmitter_.send(askAgain(), now);
    } else {
        endPacket(now);
    }
}

void XmodemReceiver::sendStart(Micros now) {
    if (starts_ == options_.startLimit) {
        phase_ = Phase::brokenOff;
        return;
    }
    ++starts_;
    const std::uint8_t start = options_.crc ? crcStart : nak;
    transmitter_.send(Answer(&start, 1), now);
    phase_ = Phase::waiting;
    waitEnd_ = now + options_.startPeriod;
}

void XmodemReceiver::endPacket(Micros now) {
    using Handling = PacketAnswer::Handling;
    if (!packetSeen_) {
        firstPacketAt_ = now;
    }
    packetSeen_ = true;
    waitForPacket(now);
    const auto found = options_.packetAnswers.find(++journal_.packets);
    const PacketAnswer* special = found == options_.packetAnswers.end() ? nullptr : &found->second;
    const Handling handling = special != nullptr ? special->handling : Handling::normal;
    Answer answer = handling == Handling::normal    ? checkPacket()
                    : handling == Handling::ignored ? Answer(nakAnswer)
                                                    : breakOff();
    if (special != nullptr && special->bytes) {
        answer = *special->bytes;
    }
    transmitter_.send(answer, now + options_.packetDelay);
}

XmodemReceiver::Answer XmodemReceiver::checkPacket() {
    const std::span packet(packet_.data(), packetFill_);
    if (packetFill_ == 1 && packet_[0] == eot) {
        return acceptEnd();
    }
    return packetValid(packet, options_.crc) ? acceptBlock() : refuse();
}

XmodemReceiver::Answer XmodemReceiver::acceptBlock() {
    const auto stored = static_cast<std::uint8_t>(image_.size() / blockSize);
    failures_ = 0;
    if (packet_[1] == stored && !image_.empty()) {
        ++journal_.blocksRepeated;
        return ackAnswer;
    }
    if (packet_[1] != static_cast<std::uint8_t>(stored + 1) || image_.size() == imageSize) {
        return breakOff();
    }
    const auto data = packet_.begin() + headerSize;
    image_.insert(image_.end(), data, data + blockSize);
    ++journal_.blocksAccepted;
    return ackAnswer;
}

XmodemReceiver::Answer XmodemReceiver::acceptEnd() {
    phase_ = Phase::finished;
    ++journal_.ends;
    journal_.imageComplete = image_.size() == imageSize;
    journal_.receiveTime = lastByteAt_ - firstPacketAt_;
    return ackAnswer;
}

XmodemReceiver::Answer XmodemReceiver::refuse() {
    ++journal_.blocksRefused;
    return askAgain();
}

XmodemReceiver::Answer XmodemReceiver::askAgain() {
    return ++failures_ > options_.retryLimit ? breakOff() : Answer(nakAnswer);
}

XmodemReceiver::Answer XmodemReceiver::breakOff() {
    phase_ = Phase::brokenOff;
    ++journal_.cancels;
    return cancelAnswer;
}

void XmodemReceiver::waitForPacket(Micros now) {
    phase_ = Phase::waiting;
    waitEnd_ = now + options_.packetLimit;
}

} // namespace simulator
