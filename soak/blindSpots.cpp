#include "soak/blindSpots.h"

#include "simulator/blockCheck.h"

#include <algorithm>

namespace soak {

using namespace simulator;

namespace {

constexpr int mostSendings = 10;                               // of one packet
constexpr std::size_t longestRest = crcPacketSize - blockSize; // of a block that a poll has cut short

std::span<const std::uint8_t> blockOf(std::span<const std::uint8_t> image, std::size_t number) {
    return image.subspan(number * blockSize, blockSize);
}

} // namespace

void WriteAccount::begin(const Unit& unit, bool disturbed) {
    *this = WriteAccount();
    disturbed_ = disturbed;
    endsBefore_ = unit.journal().ends;
}

std::string WriteAccount::packetSent(std::span<const std::uint8_t> packet, const Bytes& image) {
    if (packet.size() == 1) {
        const bool early = blocks_ * blockSize != imageSize;
        sendings_ = ended_ ? sendings_ + 1 : 1;
        const bool unasked = !ended_ && answer_ != ack;
        ended_ = true;
        return early ? "EOT ahead of the last block" : unasked ? "EOT without an ACK" : std::string();
    }
    return blockSent(packet, image);
}

std::string WriteAccount::blockSent(std::span<const std::uint8_t> packet, const Bytes& image) {
    const bool crc = request_ == crcStart;
    if (!packetAgrees(packet, crc)) {
        return "a block does not agree with itself";
    }
    const bool again = blocks_ > 0 && packet[1] == static_cast<std::uint8_t>(blocks_);
    disturbed_ = disturbed_ || again;
    if (!again) {
        if (packet[1] != static_cast<std::uint8_t>(blocks_ + 1) || blocks_ * blockSize == imageSize || ended_) {
            return "a block out of order";
        }
        if (blocks_ > 0 && answer_ != ack) {
            return "a new block without an ACK";
        }
        ++blocks_;
        sendings_ = 0;
    }
    if (++sendings_ > mostSendings) {
        return "a packet goes out more than ten times";
    }
    return std::ranges::equal(packet.subspan(headerSize, blockSize), blockOf(image, blocks_ - 1))
               ? std::string()
               : "a block is not that of the file";
}

void WriteAccount::passed(bool toUnit, std::span<const std::uint8_t> sent, std::span<const std::uint8_t> arrived,
                          bool late) {
    const bool damaged = !std::ranges::equal(sent, arrived);
    disturbed_ = disturbed_ || damaged || late;
    if (toUnit && (damaged || keepNext_)) {
        damaged_.insert(damaged_.end(), arrived.begin(), arrived.end());
        keepNext_ = damaged;
    }
}

std::string WriteAccount::byteTaken(std::uint8_t byte, const Unit& unit) {
    answer_ = byte;
    if (blocks_ == 0) {
        request_ = byte;
        return {};
    }
    if (byte == can) {
        sendings_ = 1;
    }
    if (byte != ack || earned(unit)) {
        return {};
    }
    ++unearned_;
    return disturbed_ ? std::string() : "the tool took an ACK for what the unit had not accepted";
}

bool WriteAccount::earned(const Unit& unit) const {
    return ended_ ? unit.journal().ends > endsBefore_ : unit.receivedImage().size() >= blocks_ * blockSize;
}

bool WriteAccount::arrivedDamaged(std::span<const std::uint8_t> data) const {
    return std::search(damaged_.begin(), damaged_.end(), data.begin(), data.end()) != damaged_.end();
}

bool WriteAccount::explains(const Bytes& received, const Bytes& file) const {
    bool damage = false;
    for (std::size_t number = 0; number < received.size() / blockSize; ++number) {
        if (!std::ranges::equal(blockOf(received, number), blockOf(file, number))) {
            if (!arrivedDamaged(blockOf(received, number))) {
                return false;
            }
            damage = true;
        }
    }
    return damage || unearned_ > 0;
}

void ReadAccount::begin(const Unit& unit, bool disturbed) {
    stream_.clear();
    stored_.clear();
    latest_ = {};
    disturbed_ = disturbed;
    packetsBefore_ = unit.journal().packetsSent;
    blocksBefore_ = unit.journal().blocksSent;
}

void ReadAccount::polled(std::span<const std::uint8_t> bytes) {
    latest_ = {stream_.size(), stream_.size() + bytes.size()};
    stream_.insert(stream_.end(), bytes.begin(), bytes.end());
}

std::string ReadAccount::acknowledged() {
    if (latest_.end - latest_.begin < blockSize) {
        return "an ACK for no block";
    }
    stored_.push_back(latest_);
    return {};
}

// The rest of a block that a poll has cut short may stand ahead of the EOT.
std::string ReadAccount::endAnswered() const {
    const auto poll = std::span(stream_).subspan(latest_.begin);
    const auto head = poll.first(std::min(poll.size(), stored_.empty() ? 1 : 1 + longestRest));
    const bool end = std::ranges::find(head, eot) != head.end();
    return end ? std::string() : "an answer to an EOT that did not come";
}

// What a poll has cut off the end of a block counts as zero.
bool ReadAccount::matches(std::span<const std::uint8_t> block, std::size_t begin, std::size_t end) const {
    for (std::size_t i = 0; i < blockSize; ++i) {
        const std::size_t place = begin + headerSize + i;
        if (block[i] != (place < end ? stream_[place] : 0)) {
            return false;
        }
    }
    return true;
}

// A block begins with its poll or, where a poll has cut the block before short, after the rest of that one. Gives the
// places at which it may begin.
std::vector<std::size_t> ReadAccount::beginsOf(std::span<const std::uint8_t> block, const Poll& poll,
                                               bool afterCut) const {
    std::vector<std::size_t> begins;
    for (std::size_t rest = 0; rest <= (afterCut ? longestRest : 0); ++rest) {
        if (poll.begin + rest < poll.end && matches(block, poll.begin + rest, poll.end)) {
            begins.push_back(poll.begin + rest);
        }
    }
    return begins;
}

bool ReadAccount::holds(std::span<const std::uint8_t> image) const {
    bool afterCut = false;
    for (std::size_t number = 0; number < imageSize / blockSize; ++number) {
        const auto block = blockOf(image, number);
        if (number < stored_.size()) {
            const Poll& poll = stored_[number];
            const auto begins = beginsOf(block, poll, afterCut);
            if (begins.empty()) {
                return false;
            }
            afterCut = poll.end - begins.back() < checksumPacketSize;
        } else if (std::ranges::any_of(block, [](std::uint8_t byte) { return byte != 0; })) {
            return false;
        }
    }
    return true;
}

bool ReadAccount::clean(const Unit& unit) const {
    constexpr int ends = 2;
    const int packets = unit.journal().packetsSent - packetsBefore_;
    return !disturbed_ && packets == unit.journal().blocksSent - blocksBefore_ + ends;
}

} // namespace soak
