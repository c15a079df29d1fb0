// The far end of a pseudo terminal, whose near end the program takes for its serial port.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

inline int openFarEnd() {
    const int end = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::grantpt(end);
    ::unlockpt(end);
    termios raw{};
    ::tcgetattr(end, &raw);
    ::cfmakeraw(&raw); // or the terminal echoes what comes before the port is open
    ::tcsetattr(end, TCSANOW, &raw);
    return end;
}
