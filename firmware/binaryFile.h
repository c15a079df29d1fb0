#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace FirmComm {

enum class FileMode { read = 0, write = 1 };

// Moves an image between memory and the file at `path` (blanks at its ends do not count): all elements but the last, in
// order, from the start of the file. Gives the number of bytes moved, or 0 after a report of the failure, a file that
// ends too early among them. A write does not shorten a longer file.
std::int32_t fncBinaryFile(const std::string& path, Bytes& image, FileMode mode);

} // namespace FirmComm
