#include "simulator/unit.h"

#include "simulator/sampleImage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace simulator {

namespace {

constexpr std::string_view amplifierField = "01";
constexpr std::string_view address = "0000"; // node number and sub-address
constexpr std::size_t modelLength = 16;

std::string hexadecimal(unsigned value, int digits) {
    std::array<char, 16> text{};
    const int length = std::snprintf(text.data(), text.size(), "%0*X", digits, value);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string identificationText(const UnitOptions& options) {
    std::string text = options.modelText;
    text.resize(std::max(text.size(), modelLength), ' ');
    return text + options.versionText;
}

std::string stateData(const UnitOptions& options) {
    return options.stateText + (options.sensorCount < 10 ? "0" : "") + std::to_string(options.sensorCount);
}

std::string optionOf(std::string_view operation) {
    return operation == "51" || operation == "52" ? "0C00" : "0000";
}

} // namespace

Unit::Unit(UnitOptions options) : options_(std::move(options)) {}

void Unit::receive(std::span<const std::uint8_t> bytes, Micros now) {
    advance(now);
    latest_ = now;
    while (!bytes.empty() && !silentAt(now)) {
        bytes = bytes.subspan(take(bytes, now));
    }
    advance(now);
}

// Takes some of the bytes and returns their number.
std::size_t Unit::take(std::span<const std::uint8_t> bytes, Micros now) {
    const bool mayBegin = mode_ != Mode::receiving || receiver_.betweenPackets();
    if (frame_.receiving() || (bytes.front() == stx && mayBegin)) {
        takeFrameByte(bytes.front(), now);
        return 1;
    }
    if (mode_ == Mode::receiving) {
        const std::size_t taken = receiver_.receive(bytes, now);
        keepReceivedImage();
        leaveEndedTransfer();
        return taken;
    }
    if (mode_ == Mode::sending) {
        sender_.receive(bytes.front(), now);
        leaveEndedTransfer();
    }
    return 1;
}

void Unit::takeFrameByte(std::uint8_t byte, Micros now) {
    frameByteAt_ = now;
    const FrameReader::State state = frame_.read(byte);
    if (state == FrameReader::State::complete) {
        takeFrame(now);
    } else if (state == FrameReader::State::broken) {
        dropFrame(now);
    }
}

void Unit::dropFrame(Micros now) {
    frame_.drop();
    if (mode_ == Mode::receiving) {
        receiver_.takeNoise(now);
    }
}

void Unit::takeFrame(Micros now) {
    const std::string text = frame_.text();
    const bool toThisUnit = text.starts_with(address);
    const bool command = toThisUnit && text.size() >= 9 && text[4] == '0';
    const bool good = frame_.checkGood() && command;
    journal_.frames.push_back({good ? text.substr(5) : text, good, now, {}});
    if (good) {
        takeCommand(text.substr(5), now);
    } else if (mode_ != Mode::commands) {
        dropFrame(now);
    } else if (!frame_.checkGood()) {
        reply(std::string(address) + "13", now);
    } else if (toThisUnit) {
        reply(std::string(address) + "14", now);
    }
}

void Unit::takeCommand(const std::string& command, Micros now) {
    static const CommandReply usual;
    const CommandReply* found = specialReply(command);
    const CommandReply& special = found != nullptr ? *found : usual;
    Result result{special.resultCode.value_or("0000")};
    if (!special.ignored && result.code == "0000") {
        result = execute(command, now);
    }
    if (!special.silent) {
        reply(std::string(address) + special.endCode.value_or("00") + command.substr(0, 4) + result.code +
                  special.data.value_or(result.data),
              now, special);
    }
}

const CommandReply* Unit::specialReply(const std::string& command) {
    ruleCounts_.resize(options_.replies.size());
    const CommandReply* special = nullptr;
    for (std::size_t i = 0; i < options_.replies.size(); ++i) {
        const ReplyRule& rule = options_.replies[i];
        if (!command.starts_with(rule.prefix)) {
            continue;
        }
        ++ruleCounts_[i];
        if (special == nullptr && (rule.occurrence == 0 || rule.occurrence == ruleCounts_[i])) {
            special = &rule.reply;
        }
    }
    return special;
}

Unit::Result Unit::execute(const std::string& command, Micros now) {
    if (command.starts_with("3005")) {
        return operate(command, now);
    }
    if (mode_ != Mode::commands) {
        return {"2204"};
    }
    if (command == "0501") {
        return {"0000", identificationText(options_)};
    }
    if (command == "0601") {
        return {"0000", stateData(options_)};
    }
    return command.starts_with("0101") ? readArea(command) : Result{"1001"};
}

Unit::Result Unit::readArea(const std::string& command) const {
    if (command == "0101D40001000001") {
        return {"0000", hexadecimal(options_.rawVersion, 8)};
    }
    if (command == "0101D50001000001") {
        return {"0000", std::string("000000") + options_.typeKey + "0"};
    }
    return {"1101"};
}

Unit::Result Unit::operate(const std::string& command, Micros now) {
    if (command.size() != 12) {
        return {"1004"};
    }
    const std::string operation = command.substr(4, 2);
    const std::string unit = command.substr(6, 2);
    const bool known = operation >= "50" && operation <= "54";
    if (!known || std::ranges::find(options_.unitFields, unit) == options_.unitFields.end() ||
        command.substr(8) != optionOf(operation)) {
        return {"1004"};
    }
    journal_.operations.push_back(operation);
    if (operation == "51" && preparedUnit_ != unit) {
        return {"2204"};
    }
    mode_ = Mode::commands;
    if (operation == "50") {
        preparedUnit_ = unit;
    } else if (operation == "51") {
        writtenUnit_ = unit;
        mode_ = Mode::receiving;
        receiver_.start(now + options_.replyDelay + options_.startDelay);
    } else if (operation == "52") {
        mode_ = Mode::sending;
        sender_.start(imageOf(unit), now);
    } else {
        preparedUnit_.clear();
    }
    return {"0000"};
}

void Unit::reply(const std::string& text, Micros now, const CommandReply& special) {
    Bytes bytes = special.bytes ? *special.bytes : frameOf(text);
    if (!special.bytes) {
        journal_.frames.back().reply = text;
        bytes.back() ^= special.wrongCheck ? 0x55 : 0;
    }
    bytes.insert(bytes.begin(), special.noiseBefore.begin(), special.noiseBefore.end());
    transmitter_.send(bytes, now + options_.replyDelay + special.delay, special.pieces);
}

void Unit::startReceiving(Micros now) {
    writtenUnit_ = amplifierField;
    mode_ = Mode::receiving;
    receiver_.start(now);
}

void Unit::startSending(Micros now) {
    mode_ = Mode::sending;
    sender_.start(options_.amplifierImage, now);
}

void Unit::restart() {
    transmitter_.drop();
    frame_.drop();
    mode_ = Mode::commands;
    preparedUnit_.clear();
}

Bytes& Unit::imageOf(const std::string& unitField) {
    return unitField == amplifierField ? options_.amplifierImage : options_.interfaceUnitImage;
}

void Unit::leaveEndedTransfer() {
    if ((mode_ == Mode::receiving && receiver_.brokenOff()) || (mode_ == Mode::sending && sender_.ended())) {
        mode_ = Mode::commands;
    }
}

void Unit::keepReceivedImage() {
    if (journal_.ends == std::exchange(endsSeen_, journal_.ends) || !journal_.imageComplete) {
        return;
    }
    const Bytes& image = receiver_.image();
    imageOf(writtenUnit_) = image;
    const unsigned version = image[versionOffset] | image[versionOffset + 1] << 8;
    if (writtenUnit_ == amplifierField) {
        options_.rawVersion = static_cast<std::uint16_t>(version);
    } else {
        const std::string digits = std::to_string(1000 + version % 1000);
        options_.versionText = 'V' + std::to_string(version / 1000) + '.' + digits.substr(1);
    }
}

Micros Unit::due() const {
    const Micros next = std::min(dueByItself(), transmitter_.due());
    return silentAt(next) ? never : next;
}

Micros Unit::dueByItself() const {
    if (frame_.receiving()) {
        return frameByteAt_ + options_.interByteLimit;
    }
    switch (mode_) {
    case Mode::receiving: return receiver_.due();
    case Mode::sending: return sender_.due();
    default: return never;
    }
}

void Unit::advance(Micros now) {
    for (Micros next = due(); next <= now; next = due()) {
        latest_ = std::max(latest_, next); // a frame that is being received delays other actions
        step(latest_);
    }
}

void Unit::step(Micros now) {
    if (dueByItself() <= now) {
        if (frame_.receiving()) {
            dropFrame(now);
        } else if (mode_ == Mode::receiving) {
            receiver_.advance(now);
        } else {
            sender_.advance(now);
        }
        leaveEndedTransfer();
    }
    transmitter_.release(now);
}

} // namespace simulator
