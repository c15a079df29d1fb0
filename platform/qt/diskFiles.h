// The disk, by the calls of the system.
#pragma once

#include "platform/files.h"

namespace platform {

class DiskFiles : public Files {
  public:
    bool exists(const std::string& path) override;
    std::int64_t length(const std::string& path) override;
    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override;
    std::string readAll(const std::string& path) override;
    void appendLine(const std::string& path, const std::string& text) override;
};

} // namespace platform
