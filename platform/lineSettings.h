// The settings of a serial line.
#pragma once

#include <string>

namespace platform {

struct LineSettings {
    int speed = 38400; // bits per second
    char parity = 'n'; // n none, e even, o odd, m mark, s space
    int dataBits = 8;  // 5 to 8
    int stopBits = 1;  // 1 or 2
};

// Reads a text such as "38400,n,8,1". Fails with failureNumber::invalidProperty for any other text.
LineSettings parseLineSettings(const std::string& text);

} // namespace platform
