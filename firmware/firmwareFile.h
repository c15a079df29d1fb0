#pragma once

namespace FirmComm {

// Reads the file at shared.loadFilePath into shared.firmwareImage and sets shared.fileLoaded, shared.fileTypeName and
// shared.fileVersionText; the type name is empty for a file that TYPE.INI does not know. Reports failures in boxes; fails
// for an entry of TYPE.INI without a model name.
void loadFirmware();

} // namespace FirmComm
