#include "platform/lineSettings.h"

#include "base/failure.h"

#include <charconv>
#include <string_view>

namespace platform {

LineSettings parseLineSettings(const std::string& text) {
    LineSettings settings;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, settings.speed);
    const std::string_view frame(rest, end); // ",n,8,1"
    const bool good = error == std::errc() && settings.speed > 0 && frame.size() == 6 && frame[0] == ',' &&
                      std::string_view("neoms").find(frame[1]) != std::string_view::npos && frame[2] == ',' &&
                      frame[3] >= '5' && frame[3] <= '8' && frame[4] == ',' && (frame[5] == '1' || frame[5] == '2');
    if (!good) {
        throw Failure(failureNumber::invalidProperty, "\"" + text + "\" is not a setting of a serial port");
    }
    settings.parity = frame[1];
    settings.dataBits = frame[3] - '0';
    settings.stopBits = frame[5] - '0';
    return settings;
}

} // namespace platform
