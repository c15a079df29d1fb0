// The disk, by system calls.
#include "base/failure.h"
#include "platform/system.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

int numberOf(int systemError) {
    switch (systemError) {
    case ENOENT:
    case ENOTDIR: return failureNumber::fileNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return failureNumber::fileRefused;
    default: return failureNumber::fileBroken;
    }
}

[[noreturn]] void raise(const std::string& path, int systemError) {
    throw Failure(numberOf(systemError), path + ": " + std::generic_category().message(systemError));
}

// Gives the status of a file; fails for a directory.
struct stat statusOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) < 0) {
        raise(path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        raise(path, EISDIR);
    }
    return status;
}

class DiskFile : public BinaryFile {
  public:
    DiskFile(std::string path, int flags) : path_(std::move(path)) {
        constexpr mode_t newFileMode = 0666; // reduced by the user's umask
        descriptor_ = ::open(path_.c_str(), flags | O_CLOEXEC, newFileMode);
        if (descriptor_ < 0) {
            raise(path_, errno);
        }
        writes_ = (flags & O_ACCMODE) != O_RDONLY;
    }

    ~DiskFile() override {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    void read(std::int64_t offset, std::span<std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::pread(descriptor_, bytes.data(), bytes.size(), offset);
            if (count == 0) {
                throw Failure(failureNumber::fileBroken, path_ + ": the file ends too early");
            }
            bytes = bytes.subspan(moved(count));
            offset += count;
        }
    }

    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), offset);
            bytes = bytes.subspan(moved(count));
            offset += count;
        }
    }

    void append(std::string_view text) {
        while (!text.empty()) {
            text.remove_prefix(moved(::write(descriptor_, text.data(), text.size())));
        }
    }

    std::string readAll() {
        std::string text;
        char part[4096];
        while (const std::size_t count = moved(::read(descriptor_, part, sizeof part))) {
            text.append(part, count);
        }
        return text;
    }

    void close() override {
        const int descriptor = descriptor_;
        descriptor_ = -1;
        // Some file systems report a full disk only here. Pipes and terminals cannot be synchronized: EINVAL.
        const bool syncFailed = writes_ && ::fsync(descriptor) < 0 && errno != EINVAL;
        const int syncError = errno;
        if (::close(descriptor) < 0 || syncFailed) {
            raise(path_, syncFailed ? syncError : errno);
        }
    }

  private:
    std::size_t moved(ssize_t count) const {
        if (count < 0) {
            raise(path_, errno);
        }
        return static_cast<std::size_t>(count);
    }

    std::string path_;
    int descriptor_ = -1;
    bool writes_ = false;
};

class DiskFiles : public Files {
  public:
    bool exists(const std::string& path) override {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
    }

    std::int64_t length(const std::string& path) override { return statusOf(path).st_size; }

    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override {
        return std::make_unique<DiskFile>(path, access == FileAccess::read ? O_RDONLY : O_RDWR | O_CREAT);
    }

    std::string readAll(const std::string& path) override { return DiskFile(path, O_RDONLY).readAll(); }

    void appendLine(const std::string& path, const std::string& text) override {
        DiskFile(path, O_WRONLY | O_APPEND | O_CREAT).append(text + '\n');
    }
};

} // namespace

std::unique_ptr<Files> makeFiles() {
    return std::make_unique<DiskFiles>();
}

} // namespace platform
