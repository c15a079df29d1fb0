#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace FirmComm {

enum class FileMode { read = 0, write = 1 };

// Reads or writes an image: all elements but the last, from the start of the file at `path` (blanks at its ends are
// ignored). Returns the number of bytes; or 0 after a failure, which it reports, also when the file ends too early. A write
// does not shorten a longer file.
std::int32_t fncBinaryFile(const std::string& path, Bytes& image, FileMode mode);

} // namespace FirmComm
