// The real program's sender, on the real desktop and a pseudo terminal, against another program's XMODEM receiver.
#include "app/program.h"
#include "link/commPort.h"
#include "platform/qt/qtDesktop.h"
#include "simulator/sampleImage.h"
#include "state/variables.h"
#include "tests/farEnd.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// Starts "rx" at the far end. It flushes its terminal right after each answer, for which a line without any delay is
// too fast: it hears through a pipe.
std::FILE* startReceiver(int end, const std::string& mode, const fs::path& file) {
    const std::string far = std::to_string(end);
    const std::string pipe = "exec 2>/dev/null; cat <&" + far + " | rx " + mode + " '" + file.string() + "' >&" + far;
    return ::popen(pipe.c_str(), "r");
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
    const Bytes image = simulator::makeSampleImage({});
    std::ranges::copy(image, shared.firmwareImage.begin());

    for (const char* mode : {"--with-crc", "--binary"}) { // without a mode it asks for checksums
        const int end = openFarEnd();
        std::ofstream(folder / "Setting.INI") << "[DEVICE]\nCOM3=" << ::ptsname(end) << '\n';
        ASSERT_TRUE(CommonComm::fncOpenPort(3, "38400,n,8,1"));
        const fs::path received = folder / "peer.bin";
        std::FILE* const peer = startReceiver(end, mode, received);
        desktop.show(frmWait());
        EXPECT_EQ(xModem::xModemS(), 0) << mode;
        EXPECT_EQ(frmWait().prbComm.value, imageSize);
        CommonComm::subClosePort(); // ends the pipe
        EXPECT_EQ(::pclose(peer), 0) << mode;
        ::close(end);
        std::ifstream file(received, std::ios::binary);
        EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(file), {}), image) << mode;
        fs::remove(received);
    }
    unloadFrmWait();
    forgetForms();
}

} // namespace
