// The block near the end of a firmware image that says what the image is.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace FirmComm {

// Unit address of the first byte of an image.
constexpr std::int32_t imageBase = 0xC0000;

// One character for each unit address from `first` to `last`, taken from element address minus `base` of `image`; stops
// early at the end of the array.
std::string fncImageText(const Bytes& image, std::int32_t first, std::int32_t last, std::int32_t base);

enum class FileField { leadText = 0, rawVersion = 1, typeText = 2 };

// A text from shared.firmwareImage: the five characters at the head of the block; the raw version as a decimal number,
// empty after a report when it does not fit into 16 bits with a sign; the type text without blanks at its ends, zero
// bytes still in it.
std::string fncGetFileField(FileField field);

} // namespace FirmComm
