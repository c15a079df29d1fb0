#include "firmware/identificationBlock.h"

#include "base/checked.h"
#include "base/text.h"
#include "state/variables.h"
#include "texts/messages.h"

#include <algorithm>

namespace FirmComm {

namespace {

constexpr std::int32_t leadTextFirst = 0xFBF00;
constexpr std::int32_t leadTextLast = 0xFBF04;
constexpr std::int32_t versionLow = 0xFBF05;
constexpr std::int32_t versionHigh = 0xFBF06;
constexpr std::int32_t typeTextFirst = 0xFBF10;
constexpr std::int32_t typeTextLast = 0xFBF1F;

std::int16_t rawVersion() {
    const std::int32_t high = at(shared.firmwareImage, versionHigh - imageBase);
    const std::int32_t low = at(shared.firmwareImage, versionLow - imageBase);
    return narrow<std::int16_t>(high * 256 + low);
}

} // namespace

std::string fncImageText(const Bytes& image, std::int32_t first, std::int32_t last, std::int32_t base) {
    const std::int32_t end = std::min(last - base + 1, static_cast<std::int32_t>(image.size()));
    std::string bytes;
    for (std::int32_t index = first - base; index < end; ++index) {
        bytes += static_cast<char>(at(image, index));
    }
    return latin1ToUtf8(bytes);
}

std::string fncGetFileField(FileField field) {
    try {
        switch (field) {
        case FileField::leadText: return fncImageText(shared.firmwareImage, leadTextFirst, leadTextLast, imageBase);
        case FileField::rawVersion: return std::to_string(rawVersion());
        case FileField::typeText:
            return trim(fncImageText(shared.firmwareImage, typeTextFirst, typeTextLast, imageBase));
        }
    } catch (const std::exception&) {
        subReportError();
    }
    return {};
}

} // namespace FirmComm
