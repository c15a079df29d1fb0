#include "transfer/xModem.h"

#include "base/checked.h"
#include "link/commPort.h"
#include "platform/host.h"
#include "state/variables.h"
#include "transfer/rawWrite.h"
#include "ui/forms.h"

#include <array>

using CommonComm::serialPort;
using platform::host;

namespace xModem {

bool waitTimedOut = false;

namespace {

constexpr std::int32_t startLimit = 60000; // milliseconds
constexpr std::int32_t replyLimit = 10000;
constexpr int unknownStartLimit = 10;
constexpr int failureLimit = 10; // transmissions of one packet
constexpr int cancelLimit = 2;
constexpr std::int32_t checksumOffset = headerSize + blockSize;

constexpr std::array<std::uint16_t, 256> makeCrcTable() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        unsigned crc = byte << 8;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000) != 0 ? crc << 1 ^ 0x1021 : crc << 1;
        }
        table[byte] = static_cast<std::uint16_t>(crc);
    }
    return table;
}

constexpr auto crcTable = makeCrcTable();

// Sets timerWait to a limit. Restores its interval when the wait ends, also by a failure.
class WaitLimit {
  public:
    explicit WaitLimit(std::int32_t limit) : timer_(frmWait().timerWait), interval_(timer_.interval()) {
        waitTimedOut = false;
        timer_.setInterval(limit);
        timer_.setEnabled(true);
    }
    WaitLimit(const WaitLimit&) = delete;
    WaitLimit& operator=(const WaitLimit&) = delete;
    ~WaitLimit() {
        timer_.setEnabled(false);
        timer_.setInterval(interval_);
    }

  private:
    platform::Timer& timer_;
    int interval_;
};

// The blocks of the image in order, and after them EOT.
class PacketSource {
  public:
    explicit PacketSource(bool crc) : crc_(crc) {}

    bool atEnd() const { return position_ >= imageSize; }
    std::int32_t position() const { return position_; } // bytes put into packets so far

    Bytes next() { return atEnd() ? Bytes{eot} : nextBlock(); }

  private:
    Bytes nextBlock() {
        number_ = static_cast<std::uint8_t>(number_ + 1); // 255 is followed by 0
        Bytes packet{soh, number_, static_cast<std::uint8_t>(number_ ^ 0xFF)};
        packet.reserve(checksumOffset + 2);
        const auto data = shared.firmwareImage.begin() + position_;
        packet.insert(packet.end(), data, data + blockSize);
        position_ += blockSize;
        if (crc_) {
            const std::int32_t crc = pCrcCalc(blockSize, packet, headerSize);
            packet.push_back(static_cast<std::uint8_t>(crc >> 8));
            packet.push_back(static_cast<std::uint8_t>(crc & 0xFF));
        } else {
            packet.push_back(checksum(packet));
        }
        return packet;
    }

    // SOH, number and complement add up to 0x100: the sum of the packet is that of its data.
    static std::uint8_t checksum(const Bytes& packet) {
        unsigned sum = 0;
        for (const std::uint8_t byte : packet) {
            sum += byte;
        }
        return static_cast<std::uint8_t>(sum);
    }

    bool crc_;
    std::uint8_t number_ = 0;
    std::int32_t position_ = 0;
};

// Ends a transfer with a result. Discards pending input.
std::int32_t giveUp(std::int32_t result) {
    serialPort().clearReceived();
    return result;
}

// Waits for the receiver's first byte. Returns 0 and sets `crc`, or returns the result of a transfer that does not
// begin.
std::int32_t awaitStart(bool& crc) {
    int unknownBytes = 0;
    int cancels = 0;
    for (;;) {
        switch (pWaitByte(startLimit)) {
        case crcRequest: crc = true; return 0;
        case nak: crc = false; return 0;
        case can:
            unknownBytes = 0;
            if (++cancels == cancelLimit) {
                return cancelled;
            }
            break;
        case timedOut: return giveUp(timedOut);
        default:
            ++unknownBytes;
            serialPort().clearReceived();
            if (unknownBytes == unknownStartLimit) {
                return tooManyRetries;
            }
        }
    }
}

// Sends one packet until it is acknowledged. Returns 0, or the result of a transfer that ends here.
std::int32_t deliver(const Bytes& packet) {
    int failures = 0; // NAKs and time-outs, counted together
    int cancels = 0;
    std::int32_t failure = pSendPacket(packet);
    while (failure == 0) {
        const std::int16_t reply = pWaitByte(replyLimit);
        switch (reply) {
        case ack: return 0;
        case nak:
        case timedOut:
            cancels = 0;
            if (++failures == failureLimit) {
                return giveUp(reply == nak ? tooManyRetries : timedOut);
            }
            failure = pSendPacket(packet);
            break;
        case can:
            failures = 0;
            if (++cancels == cancelLimit) {
                return giveUp(cancelled);
            }
            break;
        default: break; // noise: wait again
        }
    }
    return failure;
}

} // namespace

std::int32_t xModemS() {
    bool crc = false;
    if (const std::int32_t result = awaitStart(crc); result != 0) {
        return result;
    }
    PacketSource packets(crc);
    for (bool ended = false; !ended;) {
        ended = packets.atEnd();
        if (const std::int32_t result = deliver(packets.next()); result != 0) {
            return result;
        }
        frmWait().prbComm.value = packets.position();
    }
    return 0;
}

std::int16_t pWaitByte(std::int32_t limit) {
    const WaitLimit waitLimit(limit);
    serialPort().setReadLimit(1);
    for (;;) {
        host().waitForEvents(never);
        if (serialPort().countReceived() > 0) {
            const Bytes byte = serialPort().read();
            return at(byte, 0);
        }
        if (waitTimedOut) {
            return timedOut;
        }
    }
}

std::int32_t pSendPacket(const Bytes& packet) {
    return writeShowingFailure(packet);
}

std::int32_t pCrcCalc(std::int16_t nByte, const Bytes& tData, std::int16_t nPtr) {
    unsigned crc = 0;
    for (std::int32_t index = nPtr; index < nPtr + nByte; ++index) {
        crc = (crc << 8 ^ crcTable[(crc >> 8 ^ at(tData, index)) & 0xFF]) & 0xFFFF;
    }
    return static_cast<std::int32_t>(crc);
}

} // namespace xModem
