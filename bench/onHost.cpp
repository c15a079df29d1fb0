// Measurements on the real host, with the windows open; scripts/bench runs it.
//   onHost send FILE   sends the image by XMODEM to a unit that waits for it
//   onHost read FILE   saves the unit's firmware in the file
//   onHost load FILE   loads the firmware file
//   onHost exchange    exchanges a command with the unit, many times, and the same in a busy loop
// The port is COM3 of the Setting.INI in the folder of this program. Prints lines of the form "name value".
#include "app/program.h"
#include "firmware/binaryFile.h"
#include "link/commPort.h"
#include "link/exchange.h"
#include "link/replyReceiver.h"
#include "platform/qt/qtHost.h"
#include "state/variables.h"
#include "transfer/blockReader.h"
#include "transfer/loadCommand.h"
#include "transfer/programState.h"
#include "transfer/transferCommands.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string_view>
#include <sys/resource.h>

using platform::clockMicros;
using platform::host;

namespace {

Micros processorMicros() {
    return Micros{std::clock()} * 1'000'000 / CLOCKS_PER_SEC;
}

long peakKib() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void print(const char* name, Micros micros) {
    std::printf("%s %.3f\n", name, static_cast<double>(micros) / 1000);
}

// Calls the function as soon as a dialog of this class is open.
template <class Dialog>
void whenShown(std::function<void(Dialog&)> action) {
    QTimer::singleShot(1, [action] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        dialog != nullptr ? action(*dialog) : whenShown<Dialog>(action);
    });
}

// Enters the path into the next file dialog; `acceptedAt` becomes the time.
void enterPath(const std::string& path, Micros& acceptedAt) {
    whenShown<QFileDialog>([&, path](QFileDialog& dialog) {
        dialog.findChild<QLineEdit*>()->setText(QString::fromStdString(path));
        acceptedAt = clockMicros();
        QMetaObject::invokeMethod(&dialog, "accept");
    });
}

bool openPort() {
    return CommonComm::fncOpenPort(3, "38400,n,8,1");
}

bool send(const std::string& path) {
    host().show(frmWait());
    host().doEvents();
    frmWait().prbComm.max = imageSize;
    if (FirmComm::fncBinaryFile(path, shared.firmwareImage, FirmComm::FileMode::read) != imageSize || !openPort()) {
        return false;
    }
    while (CommonComm::serialPort().countReceived() == 0) { // the unit asks every few seconds
        host().waitForEvents(never);
    }
    const Micros processorAtStart = processorMicros();
    const bool sent = xModem::xModemS() == 0;
    print("cpu_ms", processorMicros() - processorAtStart);
    return sent;
}

bool read(const std::string& path) {
    if (!openPort()) {
        return false;
    }
    Micros start = 0;
    enterPath(path, start);
    whenShown<QMessageBox>([](QMessageBox& box) { box.accept(); });
    MainWindow::cmdPresent_Click();
    while (shared.programState != FirmComm::state::idle) {
        host().waitForEvents(never);
    }
    print("read_ms", clockMicros() - start);
    return FirmComm::reader.readBackCount == imageSize;
}

bool load(const std::string& path) {
    const Micros start = clockMicros();
    Micros acceptedAt = 0;
    enterPath(path, acceptedAt);
    MainWindow::cmdLoading_Click();
    host().doEvents();
    print("button_to_dialog_ms", acceptedAt - start);
    print("dialog_to_row_ms", clockMicros() - acceptedAt);
    return shared.fileLoaded && !frmMain().lblTitle[2].caption.empty();
}

// The exchange without its sleep.
bool exchangeByTightPoll() {
    CommonComm::subClearInput();
    CommonComm::subSendFrame("0501");
    CommonComm::ReplyReceiver receiver(shared.replyBytes, true);
    for (const Micros limit = clockMicros() + 1'000'000; !receiver.frameGood() && clockMicros() < limit;) {
        if (CommonComm::serialPort().countReceived() > 0) {
            receiver.take(CommonComm::serialPort().read());
        }
    }
    return receiver.frameGood();
}

bool exchange() {
    if (!openPort()) {
        return false;
    }
    constexpr int times = 3000;
    Micros asleep = 0;
    Micros polling = 0;
    // They take turns, so that other load on the machine affects both.
    for (int count = 0; count < times; ++count) {
        const Micros start = clockMicros();
        const bool good = CommonComm::fncExchange("0501", true, 5000) == "0000";
        const Micros middle = clockMicros();
        if (!good || !exchangeByTightPoll()) {
            return false;
        }
        asleep += middle - start;
        polling += clockMicros() - middle;
    }
    print("exchange_ms", asleep / times);
    print("busy_loop_ms", polling / times);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    platform::QtHost qtHost;
    platform::setHost(&qtHost);
    program::bindEvents();
    host().show(frmMain());
    host().doEvents();
    const std::string_view what = argc > 1 ? argv[1] : "";
    const std::string path = argc > 2 ? argv[2] : "";
    const bool done = what == "send"       ? send(path)
                      : what == "read"     ? read(path)
                      : what == "load"     ? load(path)
                      : what == "exchange" ? exchange()
                                           : false;
    std::printf("peak_kib %ld\n", peakKib());
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
