// The real program's sender, on the real host and a pseudo terminal, against another program's XMODEM receiver.
#include "app/program.h"
#include "link/commPort.h"
#include "simulator/program/pseudoTerminal.h"
#include "simulator/sampleImage.h"
#include "state/variables.h"
#include "tests/realHost.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

namespace {

TEST(Peer, ReceivesTheImageWithCrcAndWithChecksum) {
    if (std::system("command -v rx >/dev/null") != 0) {
        GTEST_SKIP() << "There is no program \"rx\" here.";
    }
    platform::setHost(&*realHost);
    program::bindEvents();
    const std::filesystem::path folder = makeTestFolder();
    const std::string received = (folder / "peer.bin").string();
    const Bytes image = simulator::makeSampleImage({});
    std::ranges::copy(image, shared.firmwareImage.begin());
    std::ofstream(realHost->programDirectory() + "Setting.INI") << "[DEVICE]\nCOM3=" << (folder / "unit").string();
    for (const char* mode : {"--with-crc", "--binary"}) { // without a mode it asks for checksums
        std::optional<simulator::PseudoTerminal> end(folder / "unit");
        const int far = ::dup(end->descriptor()); // for the peer, which waits for bytes
        ::fcntl(far, F_SETFL, 0);
        ASSERT_TRUE(CommonComm::fncOpenPort(3, "38400,n,8,1"));
        // The peer flushes its terminal after each answer and would discard bytes on a line without delay, so it reads from
        // a pipe. It accepts no path, and sh no descriptor of two digits.
        const std::string terminal = std::to_string(far);
        const std::string command = "cd " + folder.string() + " && exec bash -c 'cat <&" + terminal + " | rx " + mode +
                                    " peer.bin >&" + terminal + " 2>/dev/null'";
        std::FILE* const peer = ::popen(command.c_str(), "r");
        realHost->show(frmWait());
        EXPECT_EQ(xModem::xModemS(), 0) << mode;
        EXPECT_EQ(frmWait().prbComm.value, imageSize);
        CommonComm::subClosePort();
        end.reset(); // ends the pipe
        EXPECT_EQ(::pclose(peer), 0) << mode;
        ::close(far);
        std::ifstream file(received, std::ios::binary);
        EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(file), {}), image) << mode;
        std::filesystem::remove(received);
    }
    std::filesystem::remove_all(folder);
    unloadFrmWait();
    resetForms();
}

} // namespace
