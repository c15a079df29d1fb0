#include "platform/qt/lineSettings.h"

#include "base/failure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace platform {

namespace {

// Takes the text up to the next comma off `text`.
std::string_view takeField(std::string_view& text) {
    const std::size_t comma = text.find(',');
    const std::string_view field = text.substr(0, comma);
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
    return field;
}

template <class Value>
struct Choice {
    std::string_view text;
    Value value;
};

constexpr std::array parities{
    Choice<QSerialPort::Parity>{"n", QSerialPort::NoParity}, Choice<QSerialPort::Parity>{"e", QSerialPort::EvenParity},
    Choice<QSerialPort::Parity>{"o", QSerialPort::OddParity}, Choice<QSerialPort::Parity>{"m", QSerialPort::MarkParity},
    Choice<QSerialPort::Parity>{"s", QSerialPort::SpaceParity}};
constexpr std::array dataBits{
    Choice<QSerialPort::DataBits>{"5", QSerialPort::Data5}, Choice<QSerialPort::DataBits>{"6", QSerialPort::Data6},
    Choice<QSerialPort::DataBits>{"7", QSerialPort::Data7}, Choice<QSerialPort::DataBits>{"8", QSerialPort::Data8}};
constexpr std::array stopBits{Choice<QSerialPort::StopBits>{"1", QSerialPort::OneStop},
                              Choice<QSerialPort::StopBits>{"2", QSerialPort::TwoStop}};

// Sets `value` to the choice that the text names; false when it names none.
template <class Value, std::size_t count>
bool choose(const std::array<Choice<Value>, count>& choices, std::string_view text, Value& value) {
    const auto found = std::ranges::find(choices, text, &Choice<Value>::text);
    if (found != choices.end()) {
        value = found->value;
    }
    return found != choices.end();
}

} // namespace

LineSettings parseLineSettings(const std::string& text) {
    LineSettings settings;
    std::string_view rest = text;
    const std::string_view speed = takeField(rest);
    const auto end = speed.data() + speed.size();
    const auto number = std::from_chars(speed.data(), end, settings.speed);
    const bool good = number.ec == std::errc() && number.ptr == end && settings.speed > 0 &&
                      choose(parities, takeField(rest), settings.parity) &&
                      choose(dataBits, takeField(rest), settings.dataBits) && choose(stopBits, rest, settings.stopBits);
    if (!good) {
        throw Failure(failureNumber::invalidProperty, "\"" + text + "\" are no settings of a serial port");
    }
    return settings;
}

} // namespace platform
