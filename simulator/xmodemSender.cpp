#include "simulator/xmodemSender.h"

#include "simulator/blockCheck.h"

#include <algorithm>
#include <array>
#include <utility>

namespace simulator {

void XmodemSender::start(std::span<const std::uint8_t> image, Micros now) {
    phase_ = Phase::starting;
    image_ = image.first(image.size() / blockSize * blockSize);
    position_ = 0;
    endSent_ = false;
    held_.clear();
    failures_ = cans_ = 0;
    nextAt_ = now + options_.startWait;
}

void XmodemSender::receive(std::uint8_t byte, Micros now) {
    switch (phase_) {
    case Phase::starting: takeRequest(byte, now); break;
    case Phase::sending: held_.push_back(byte); break;
    case Phase::waiting: takeAnswer(byte, now); break;
    case Phase::ended: break;
    }
}

void XmodemSender::takeRequest(std::uint8_t byte, Micros now) {
    if (!takeCancel(byte) && (byte == nak || byte == crcStart)) {
        crc_ = byte == crcStart;
        sendNext(now);
    }
}

void XmodemSender::takeAnswer(std::uint8_t byte, Micros now) {
    if (takeCancel(byte)) {
        return;
    }
    if (byte == ack) {
        failures_ = 0;
        sendNext(now);
    } else if (byte == nak) {
        sendAgain(now);
    }
}

bool XmodemSender::takeCancel(std::uint8_t byte) {
    cans_ = byte == can ? cans_ + 1 : 0;
    if (cans_ == 2) {
        phase_ = Phase::ended;
        ++journal_.cancels;
    }
    return cans_ > 0;
}

void XmodemSender::sendNext(Micros now) {
    if (endSent_) {
        phase_ = Phase::ended;
        return;
    }
    buildPacket();
    sendPacket(now);
}

void XmodemSender::sendAgain(Micros now) {
    if (endSent_ && !options_.repeatsEnd) {
        phase_ = Phase::ended;
    } else if (++failures_ > options_.retryLimit) {
        phase_ = Phase::ended;
        ++journal_.cancels;
        transmitter_.send(std::array{can, can}, now);
    } else {
        sendPacket(now);
    }
}

void XmodemSender::buildPacket() {
    if (position_ == image_.size()) {
        packet_.assign(1, eot);
        endSent_ = true;
        return;
    }
    const auto data = image_.subspan(position_, blockSize);
    position_ += blockSize;
    const auto number = static_cast<std::uint8_t>(position_ / blockSize);
    packet_.assign({soh, number, static_cast<std::uint8_t>(~number)});
    packet_.insert(packet_.end(), data.begin(), data.end());
    if (crc_) {
        const std::uint16_t check = crcOf(data);
        packet_.push_back(static_cast<std::uint8_t>(check >> 8));
        packet_.push_back(static_cast<std::uint8_t>(check));
    } else {
        packet_.push_back(checksumOf(data));
    }
    ++journal_.blocksSent;
}

void XmodemSender::sendPacket(Micros now) {
    const auto instead = options_.sentInstead.find(++journal_.packetsSent);
    unsent_ = instead == options_.sentInstead.end() ? packet_ : instead->second;
    phase_ = Phase::sending;
    nextAt_ = now + options_.sendDelay;
}

void XmodemSender::advance(Micros now) {
    if (due() > now) {
        return;
    }
    switch (phase_) {
    case Phase::starting: phase_ = Phase::ended; break;
    case Phase::sending: sendPiece(now); break;
    default: sendAgain(now); break;
    }
}

void XmodemSender::sendPiece(Micros now) {
    const std::size_t limit = options_.sendPieces.size;
    const auto piece = unsent_.first(limit == 0 ? unsent_.size() : std::min(limit, unsent_.size()));
    transmitter_.send(piece, now);
    unsent_ = unsent_.subspan(piece.size());
    if (!unsent_.empty()) {
        nextAt_ = now + options_.sendPieces.pause;
        return;
    }
    phase_ = Phase::waiting;
    nextAt_ = now + options_.answerLimit;
    for (const std::uint8_t byte : std::exchange(held_, {})) {
        receive(byte, now);
    }
}

} // namespace simulator
