#include "firmware/firmwareFile.h"

#include "base/text.h"
#include "configuration/iniFiles.h"
#include "firmware/binaryFile.h"
#include "firmware/identificationBlock.h"
#include "state/variables.h"

#include <algorithm>

namespace FirmComm {

namespace {

bool readImage() {
    std::ranges::fill(shared.firmwareImage, std::uint8_t{0});
    return fncBinaryFile(shared.loadFilePath, shared.firmwareImage, FileMode::read) == imageSize;
}

// Key in TYPE.INI for the type text of the image.
std::string typeTextKey() {
    const std::string text = trim(replaceAll(fncGetFileField(FileField::typeText), '\0', ' '));
    return text.empty() ? "NULL" : text;
}

// Looks for an interface-unit entry first; there the raw version is in thousandths. The raw version of an amplifier is the
// base of its range plus thousandths.
void takeModelAndVersion() {
    const std::string versionText = fncGetFileField(FileField::rawVersion);
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

} // namespace

void loadFirmware() {
    shared.fileLoaded = readImage();
    if (shared.fileLoaded) {
        takeModelAndVersion();
    } else {
        shared.fileVersionText.clear();
    }
}

} // namespace FirmComm
