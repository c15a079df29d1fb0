// The disk, by system calls.
#include "base/failure.h"
#include "platform/system.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
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

// Returns the status of a file; fails for a directory.
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

int openDescriptor(const std::string& path, int flags) {
    constexpr mode_t newFileMode = 0666; // reduced by the user's umask
    return ::open(path.c_str(), flags | O_CLOEXEC, newFileMode);
}

class DiskFile : public BinaryFile {
  public:
    DiskFile(const std::string& path, int flags)
        : DiskFile(path, openDescriptor(path, flags), (flags & O_ACCMODE) != O_RDONLY) {}

    // Takes an open descriptor, or -1 for one that could not be opened. Failures name the path.
    DiskFile(std::string path, int descriptor, bool writes)
        : path_(std::move(path)), descriptor_(descriptor), writes_(writes) {
        if (descriptor_ < 0) {
            raise(path_, errno);
        }
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

    const std::string& path() const { return path_; }

    // Fails if another program has locked the file. Some file systems have no locks.
    void lock() const {
        if (::flock(descriptor_, LOCK_EX | LOCK_NB) < 0 && errno == EWOULDBLOCK) {
            raise(path_, EBUSY);
        }
    }

    // Appends the content of another file, from its beginning.
    void appendFile(const DiskFile& other) {
        constexpr std::size_t part = 1 << 20;
        while (moved(::sendfile(descriptor_, other.descriptor_, nullptr, part)) > 0) {
        }
    }

    // Gives the file the owner and the permissions of another one. False when the user may not.
    bool takeOwner(const struct stat& other) const {
        constexpr mode_t permissions = 07777;
        return ::fchown(descriptor_, other.st_uid, other.st_gid) == 0 &&
               ::fchmod(descriptor_, other.st_mode & permissions) == 0;
    }

  private:
    std::size_t moved(ssize_t count) const {
        if (count < 0) {
            raise(path_, errno);
        }
        return static_cast<std::size_t>(count);
    }

    std::string path_;
    int descriptor_;
    bool writes_;
};

// A file with a name of its own in the folder of `target`, which it replaces when it is closed after writes that all
// succeeded. Otherwise it is deleted.
class Copy : public DiskFile {
  public:
    Copy(const std::string& path, std::string target, std::string name)
        : DiskFile(path, openDescriptor(name, O_RDWR | O_CREAT | O_EXCL), true), target_(std::move(target)),
          name_(std::move(name)) {}

    ~Copy() override {
        if (!name_.empty()) {
            ::unlink(name_.c_str());
        }
    }

    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        complete_ = false;
        DiskFile::write(offset, bytes);
        complete_ = true;
    }

    void close() override {
        DiskFile::close();
        if (!complete_ || ::rename(name_.c_str(), target_.c_str()) < 0) {
            raise(path(), complete_ ? errno : EIO);
        }
        name_.clear();
        const int folder = openDescriptor(target_.substr(0, target_.rfind('/') + 1), O_RDONLY | O_DIRECTORY);
        if (folder >= 0) { // so that the new name survives a loss of power
            ::fsync(folder);
            ::close(folder);
        }
    }

  private:
    std::string target_;
    std::string name_; // empty after the replacement
    bool complete_ = true;
};

// False for a device, a file that has another name too, and a file with an access list: a copy would lose these.
bool isReplaceable(const std::string& path, const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_nlink == 1 &&
           ::getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) <= 0;
}

// The path of the file behind symbolic links.
std::string withoutLinks(const std::string& path) {
    char* const found = ::realpath(path.c_str(), nullptr);
    std::string target = found == nullptr ? path : found;
    std::free(found); // NOLINT: from the C library
    return target;
}

// nullptr where the user may not create a file beside the target, or its name would be too long.
std::unique_ptr<Copy> makeCopy(const std::string& path, const std::string& target) {
    constexpr int mostLeftOver = 100; // by programs that were killed
    for (int number = 1;; ++number) {
        try {
            return std::make_unique<Copy>(path, target, target + '.' + std::to_string(number) + ".part");
        } catch (const Failure&) {
            if (errno == EACCES || errno == EPERM || errno == EROFS || errno == ENAMETOOLONG) {
                return nullptr;
            }
            if (errno != EEXIST || number == mostLeftOver) {
                throw;
            }
        }
    }
}

std::unique_ptr<BinaryFile> openToExtend(const std::string& path) {
    auto file = std::make_unique<DiskFile>(path, O_RDWR | O_CREAT);
    file->lock();
    return file;
}

std::unique_ptr<BinaryFile> openToWrite(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        auto present = std::make_unique<DiskFile>(path, O_RDWR);
        if (!isReplaceable(path, status)) {
            return present;
        }
        auto copy = makeCopy(path, withoutLinks(path));
        if (copy == nullptr || !copy->takeOwner(status)) {
            return present;
        }
        copy->appendFile(*present);
        return copy;
    }
    const bool brokenLink = ::lstat(path.c_str(), &status) == 0;
    std::unique_ptr<BinaryFile> copy = brokenLink ? nullptr : makeCopy(path, path);
    return copy != nullptr ? std::move(copy) : std::make_unique<DiskFile>(path, O_RDWR | O_CREAT);
}

class DiskFiles : public Files {
  public:
    bool exists(const std::string& path) override {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
    }

    std::int64_t length(const std::string& path) override { return statusOf(path).st_size; }

    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override {
        switch (access) {
        case FileAccess::read: return std::make_unique<DiskFile>(path, O_RDONLY);
        case FileAccess::extend: return openToExtend(path);
        default: return openToWrite(path);
        }
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
