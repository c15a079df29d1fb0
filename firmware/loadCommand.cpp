#include "firmware/loadCommand.h"

#include "base/text.h"
#include "firmware/binaryFile.h"
#include "firmware/fileDialog.h"
#include "firmware/identificationBlock.h"
#include "platform/host.h"
#include "startup/configuration.h"
#include "state/variables.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"
#include "ui/messages.h"

#include <algorithm>

using platform::host;

namespace MainWindow {

namespace {

void clearFileRow(FrmMain& form) {
    shared.fileVersionText.clear();
    shared.fileTypeName.clear();
    form.lblTitle[2].caption.clear();
    form.lblVersion[2].caption.clear();
    host().doEvents();
}

bool readImage() {
    std::ranges::fill(shared.firmwareImage, std::uint8_t{0});
    return FirmComm::fncBinaryFile(shared.loadFilePath, shared.firmwareImage, FirmComm::FileMode::read) == imageSize;
}

// Key in TYPE.INI for the type text of the image.
std::string typeTextKey() {
    const std::string text = trim(replaceAll(FirmComm::fncGetFileField(FirmComm::FileField::typeText), '\0', ' '));
    return text.empty() ? "NULL" : text;
}

// Looks for an interface-unit entry first; there the raw version is in thousandths. The raw version of an amplifier is the
// base of its range plus thousandths.
void takeModelAndVersion() {
    const std::string versionText = FirmComm::fncGetFileField(FirmComm::FileField::rawVersion);
    const std::string typeText = typeTextKey();
    const std::int32_t rawVersion = roundToWhole(leadingNumber(versionText));
    shared.fileTypeName = Common::fncGetIfuType(typeText, "IFU_BIN_TYPE");
    shared.fileVersionText = thousandthsText(rawVersion);
    if (!shared.fileTypeName.empty()) {
        return;
    }
    const std::string ampType = Common::fncGetAmpBinType(typeText);
    if (!ampType.empty()) {
        std::int32_t version = 0;
        Common::fncGetAmpType(ampType, rawVersion, shared.fileTypeName, version);
        shared.fileVersionText = thousandthsText(version);
    }
}

void loadImage() {
    shared.fileLoaded = readImage();
    if (shared.fileLoaded) {
        takeModelAndVersion();
    } else {
        shared.fileVersionText.clear();
    }
}

} // namespace

void cmdLoading_Click() {
    FrmMain& form = frmMain();
    try {
        askForPath(DialogKind::open, shared.loadFilePath);
        if (host().files().length(shared.loadFilePath) != imageSize) {
            return;
        }
        form.enabled = false;
        form.mousePointer = platform::MousePointer::hourglass;
        clearFileRow(form);
        loadImage();
        subSetAllVersion();
        host().doEvents(); // discards clicks on the disabled window before it is enabled
    } catch (const std::exception&) {
        reportUnlessCancelled();
    }
    form.enabled = true;
    form.cmdUpgrade.enabled = shared.fileLoaded;
    form.mousePointer = platform::MousePointer::arrow;
}

} // namespace MainWindow
