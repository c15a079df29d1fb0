// Sends a firmware file by XMODEM on the real desktop, with its windows up, to the port that COM3 of the Setting.INI beside
// this program names.
#include "app/program.h"
#include "common/variables.h"
#include "firmware/binaryFile.h"
#include "link/commPort.h"
#include "platform/qt/qtDesktop.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <cstdlib>

int main(int, char** words) {
    platform::QtDesktop desktop;
    platform::setDesktop(&desktop);
    program::bindEvents();
    desktop.show(frmMain());
    desktop.show(frmWait());
    desktop.doEvents();
    frmWait().prbComm.max = imageSize;
    if (FirmComm::fncBinaryFile(words[1], run.firmwareImage, FirmComm::FileMode::read) != imageSize ||
        !CommonComm::fncOpenPort(3, "38400,n,8,1")) {
        return EXIT_FAILURE;
    }
    return xModem::xModemS() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
