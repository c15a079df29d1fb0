// The interface to the disk. Paths are UTF-8. The description of a failure names the file and the cause.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace platform {

// A file opened for binary access; destroying it closes it and discards what was written since it was opened.
class BinaryFile {
  public:
    BinaryFile() = default;
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;
    virtual ~BinaryFile() = default;

    // Fills `bytes` from the file offset on; fails when the file ends before they are full.
    virtual void read(std::int64_t offset, std::span<std::uint8_t> bytes) = 0;

    // Writes `bytes` from the file offset on; nothing else of the file changes.
    virtual void write(std::int64_t offset, std::span<const std::uint8_t> bytes) = 0;

    // Closes the file. Fails when bytes written before did not reach the disk; the file on the disk is then as it was.
    virtual void close() = 0;
};

enum class FileAccess { read, write, extend };

class Files {
  public:
    Files() = default;
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    virtual ~Files() = default;

    virtual bool exists(const std::string& path) = 0;

    // Length in bytes; fails for a file that does not exist or is not accessible.
    virtual std::int64_t length(const std::string& path) = 0;

    // Opens for reading, or for writing: then creates a missing file and does not shorten an existing one. The bytes go
    // to a copy in the same folder, which replaces the file when it is closed. They go into the file itself, with no way
    // back, where the operator may not create a copy, and where a copy would lose something: another name of the file,
    // another owner, an access list, or a device.
    // Opens to extend: then also creates a missing file, and each write goes into the file itself at once. Fails while
    // another program extends it.
    virtual std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) = 0;

    // The bytes of the whole file. If the system has a code page other than UTF-8, a file that is neither UTF-8 nor
    // UTF-16 is converted from that code page to UTF-8.
    virtual std::string readAll(const std::string& path) = 0;

    // Appends the text and a line break; creates a missing file.
    virtual void appendLine(const std::string& path, const std::string& text) = 0;
};

} // namespace platform
