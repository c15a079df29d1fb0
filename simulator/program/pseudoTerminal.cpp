#include "simulator/program/pseudoTerminal.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

namespace simulator {

namespace {

template <typename Number>
Number checked(Number result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

// The result of a read or write; 0 if it would block.
std::size_t countMoved(ssize_t result, const char* what) {
    if (result < 0 && (errno == EAGAIN || errno == EINTR)) {
        return 0;
    }
    return static_cast<std::size_t>(checked(result, what));
}

std::string openOtherEnd(int unitEnd) {
    checked(grantpt(unitEnd), "grantpt");
    checked(unlockpt(unitEnd), "unlockpt");
    const char* name = ptsname(unitEnd);
    checked(name == nullptr ? -1 : 0, "ptsname");
    return name;
}

} // namespace

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        close(number_);
    }
}

PseudoTerminal::PseudoTerminal(const std::filesystem::path& link)
    : unitEnd_(checked(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "posix_openpt")),
      device_(openOtherEnd(unitEnd_.number())),
      toolEnd_(checked(open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), device_.c_str())) {
    termios settings{};
    checked(tcgetattr(toolEnd_.number(), &settings), "tcgetattr");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B38400);
    checked(tcsetattr(toolEnd_.number(), TCSANOW, &settings), "tcsetattr");
    if (link.empty()) {
        return;
    }
    if (std::filesystem::is_symlink(link)) {
        std::filesystem::remove(link);
    }
    std::filesystem::create_symlink(device_, link);
    link_ = link;
}

PseudoTerminal::~PseudoTerminal() {
    std::error_code ignored;
    if (!link_.empty() && std::filesystem::read_symlink(link_, ignored) == device_) {
        std::filesystem::remove(link_, ignored);
    }
}

std::size_t PseudoTerminal::read(std::span<std::uint8_t> bytes) {
    return countMoved(::read(descriptor(), bytes.data(), bytes.size()), "read");
}

std::size_t PseudoTerminal::write(std::span<const std::uint8_t> bytes) {
    return countMoved(::write(descriptor(), bytes.data(), bytes.size()), "write");
}

} // namespace simulator
