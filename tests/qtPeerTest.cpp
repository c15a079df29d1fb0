// The real program's sender, on the real desktop and a pseudo terminal, against another program's XMODEM receiver.
#include "app/program.h"
#include "common/variables.h"
#include "link/commPort.h"
#include "platform/qt/qtDesktop.h"
#include "simulator/sampleImage.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// The far end of a pseudo terminal, raw from the start.
int openTerminal() {
    const int end = ::posix_openpt(O_RDWR | O_NOCTTY);
    ::grantpt(end);
    ::unlockpt(end);
    termios raw{};
    ::tcgetattr(end, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(end, TCSANOW, &raw);
    return end;
}

// Carries bytes between two descriptors until one of them closes.
[[noreturn]] void carry(int one, int other) {
    std::array<pollfd, 2> ends{{{one, POLLIN, 0}, {other, POLLIN, 0}}};
    std::array<char, 4096> bytes{};
    while (::poll(ends.data(), ends.size(), -1) > 0) {
        for (std::size_t at = 0; at < ends.size(); ++at) {
            if (ends.at(at).revents == 0) {
                continue;
            }
            const ssize_t count = ::read(ends.at(at).fd, bytes.data(), bytes.size());
            if (count <= 0 || ::write(ends.at(1 - at).fd, bytes.data(), static_cast<std::size_t>(count)) != count) {
                ::_exit(0);
            }
        }
    }
    ::_exit(0);
}

// Runs "rx" at the far end. It flushes its terminal right after each answer, for which a line without any delay is too
// fast: it gets a socket in place of the terminal.
pid_t startReceiver(int end, const char* mode, const fs::path& file) {
    std::array<int, 2> pair{};
    ::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data());
    if (::fork() == 0) {
        ::close(pair[0]);
        carry(end, pair[1]);
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(pair[0], STDIN_FILENO);
        ::dup2(pair[0], STDOUT_FILENO);
        ::close(pair[0]);
        ::close(pair[1]);
        ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO);
        ::execlp("rx", "rx", mode, file.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(pair[0]);
    ::close(pair[1]);
    return child;
}

TEST(Peer, ReceivesTheImageWithCrcAndWithChecksum) {
    if (std::system("command -v rx >/dev/null") != 0) {
        GTEST_SKIP() << "There is no program \"rx\" here.";
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    platform::QtDesktop desktop;
    platform::setDesktop(&desktop);
    program::bindEvents();
    const fs::path folder = desktop.programDirectory();
    std::ofstream(folder / "TYPE.INI") << "[AMP_TYPE]\n";
    const simulator::Bytes image = simulator::makeSampleImage({});
    std::ranges::copy(image, run.firmwareImage.begin());

    for (const char* mode : {"--with-crc", "--binary"}) { // without a mode it asks for checksums
        const int end = openTerminal();
        std::ofstream(folder / "Setting.INI") << "[DEVICE]\nCOM3=" << ::ptsname(end) << '\n';
        ASSERT_TRUE(CommonComm::fncOpenPort(3, "38400,n,8,1"));
        const fs::path received = folder / "peer.bin";
        const pid_t peer = startReceiver(end, mode, received);
        desktop.show(frmWait());
        EXPECT_EQ(xModem::xModemS(), 0) << mode;
        EXPECT_EQ(frmWait().prbComm.value, imageSize);
        int status = -1;
        ::waitpid(peer, &status, 0);
        EXPECT_EQ(status, 0) << mode;
        ::wait(nullptr); // the carrier ends with its peer
        CommonComm::subClosePort();
        ::close(end);
        std::ifstream file(received, std::ios::binary);
        EXPECT_EQ(simulator::Bytes(std::istreambuf_iterator<char>(file), {}), image) << mode;
        fs::remove(received);
    }
    unloadFrmWait();
    forgetForms();
}

} // namespace
