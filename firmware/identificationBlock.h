// The identification block near the end of a firmware image.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace FirmComm {

// Unit address of the first byte of an image.
constexpr std::int32_t imageBase = 0xC0000;

// One character for each unit address from `first` to `last`; address `base` is element 0 of `image`. Stops at the end of
// the array.
std::string fncImageText(const Bytes& image, std::int32_t first, std::int32_t last, std::int32_t base);

// No operation of the system reads the lead text: the field is a part of the file's format.
enum class FileField { leadText = 0, rawVersion = 1, typeText = 2 };

// A text from shared.firmwareImage: the five characters at the start of the block; the raw version as a decimal number, or
// empty, after a report, when it is above 32767; the type text without blanks at its ends, zero bytes included.
std::string fncGetFileField(FileField field);

} // namespace FirmComm
