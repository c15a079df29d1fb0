// Output, signals and language of a program in a shell.
#include "platform/console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

class DescriptorOutput final : public ConsoleOutput {
  public:
    explicit DescriptorOutput(int descriptor) : given_(descriptor), descriptor_(reopened(descriptor)) {}
    ~DescriptorOutput() override {
        if (descriptor_ != given_) {
            ::close(descriptor_);
        }
    }

    bool isTerminal() const override { return ::isatty(given_) == 1; }

    int columns() const override {
        constexpr int usual = 80;
        winsize size{};
        return ::ioctl(given_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
    }

    std::size_t write(std::string_view text) override {
        ssize_t count = ::send(descriptor_, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno == ENOTSOCK) {
            count = hasRoom(0) ? ::write(descriptor_, text.data(), std::min(text.size(), most)) : 0;
        }
        if (count < 0) {
            return errno == EAGAIN || errno == EINTR ? 0 : text.size(); // the reader is gone
        }
        return static_cast<std::size_t>(count);
    }

    void waitForRoom(int milliseconds) override { hasRoom(milliseconds); }

  private:
    static constexpr std::size_t most = 4096; // a pipe with room takes that many bytes at once

    // Other programs may share the open terminal or pipe, so its mode is not changed; a descriptor of its own is opened. A
    // terminal of another user cannot be opened again.
    static int reopened(int descriptor) {
        struct stat status {};
        if (::fstat(descriptor, &status) < 0 || !(S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode))) {
            return descriptor;
        }
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        const int own = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        return own < 0 ? descriptor : own;
    }

    bool hasRoom(int milliseconds) const {
        pollfd output{.fd = descriptor_, .events = POLLOUT, .revents = 0};
        return ::poll(&output, 1, milliseconds) > 0;
    }

    int given_;
    int descriptor_;
};

volatile std::sig_atomic_t received = 0;

} // namespace

std::unique_ptr<ConsoleOutput> makeConsoleOutput(ConsoleStream stream) {
    return std::make_unique<DescriptorOutput>(stream == ConsoleStream::output ? STDOUT_FILENO : STDERR_FILENO);
}

// A terminal that is gone or stopped, or a file that grows too long, must not end or stop a transfer. A shell starts a
// background program with SIGINT ignored; that stays.
void catchSignals() {
    for (const int number : {SIGHUP, SIGPIPE, SIGXFSZ, SIGTSTP, SIGTTOU, SIGTTIN, SIGQUIT}) {
        std::signal(number, SIG_IGN);
    }
    for (const int number : {SIGINT, SIGTERM}) {
        struct sigaction action {};
        ::sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = [](int caught) { received = caught; };
            ::sigaction(number, &action, nullptr);
        }
    }
}

int takeSignal() {
    const int number = received;
    if (number != 0) {
        received = 0;
    }
    return number;
}

bool userIsJapanese() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return std::string_view(value).starts_with("ja");
        }
    }
    return false;
}

} // namespace platform
