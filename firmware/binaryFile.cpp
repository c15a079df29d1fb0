#include "firmware/binaryFile.h"

#include "base/text.h"
#include "platform/host.h"
#include "texts/messages.h"

#include <span>

namespace FirmComm {

std::int32_t fncBinaryFile(const std::string& path, Bytes& image, FileMode mode) {
    try {
        const std::span content = std::span(image).first(image.size() - 1);
        const auto file = platform::host().files().openBinary(
            trim(path), mode == FileMode::write ? platform::FileAccess::write : platform::FileAccess::read);
        if (mode == FileMode::write) {
            file->write(0, content);
        } else {
            file->read(0, content);
        }
        file->close();
        return static_cast<std::int32_t>(content.size());
    } catch (const std::exception&) {
        subReportError();
        return 0;
    }
}

} // namespace FirmComm
