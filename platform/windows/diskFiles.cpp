// The disk, by calls of the Windows API.
#include "base/failure.h"
#include "platform/system.h"
#include "platform/windows/systemText.h"

#include <algorithm>
#include <utility>
#include <windows.h>

namespace platform {

namespace {

int numberOf(DWORD systemError) {
    switch (systemError) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME: return failureNumber::fileNotFound;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT: return failureNumber::fileRefused;
    default: return failureNumber::fileBroken;
    }
}

[[noreturn]] void raise(const std::string& path, DWORD systemError) {
    throw Failure(numberOf(systemError), path + ": " + causeText(systemError));
}

// The path in the form that may exceed 260 characters.
std::wstring systemPath(const std::string& path) {
    const std::wstring wide = toWide(path);
    std::wstring full(::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.starts_with(LR"(\\?\)") || full.starts_with(LR"(\\.\)")) {
        return full;
    }
    return full.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + full.substr(2) : LR"(\\?\)" + full;
}

class DiskFile : public BinaryFile {
  public:
    // Fails for a folder.
    DiskFile(const std::string& path, DWORD access, DWORD creation)
        : DiskFile(path, systemPath(path), access, creation) {}

    // Opens the file `name`. Failures name the path.
    DiskFile(std::string path, const std::wstring& name, DWORD access, DWORD creation)
        : path_(std::move(path)), writes_((access & GENERIC_WRITE) != 0) {
        constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        handle_ = ::CreateFileW(name.c_str(), access, writes_ ? FILE_SHARE_READ : all, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
        check(handle_ != INVALID_HANDLE_VALUE);
    }

    ~DiskFile() override { closeHandle(); }

    std::int64_t length() const {
        LARGE_INTEGER length{};
        check(::GetFileSizeEx(handle_, &length));
        return length.QuadPart;
    }

    void read(std::int64_t offset, std::span<std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED place = placeOf(offset);
            DWORD count = 0;
            const bool read = ::ReadFile(handle_, bytes.data(), portion(bytes), &count, &place);
            check(read || ::GetLastError() == ERROR_HANDLE_EOF);
            if (count == 0) {
                throw Failure(failureNumber::fileBroken, path_ + ": the file ends too early");
            }
            bytes = bytes.subspan(count);
            offset += count;
        }
    }

    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED place = placeOf(offset);
            DWORD count = 0;
            check(::WriteFile(handle_, bytes.data(), portion(bytes), &count, &place));
            bytes = bytes.subspan(count);
            offset += count;
        }
    }

    void append(std::string_view text) {
        while (!text.empty()) {
            DWORD count = 0;
            check(::WriteFile(handle_, text.data(), portion(text), &count, nullptr));
            text.remove_prefix(count);
        }
    }

    void close() override {
        const HANDLE handle = std::exchange(handle_, nullptr);
        const bool flushFailed = writes_ && !::FlushFileBuffers(handle);
        const DWORD flushError = ::GetLastError();
        if (!::CloseHandle(handle) || flushFailed) {
            raise(path_, flushFailed ? flushError : ::GetLastError());
        }
    }

    const std::string& path() const { return path_; }

    // False for a device, and for a file that has another name too, which a copy would lose.
    bool isReplaceable() const {
        BY_HANDLE_FILE_INFORMATION information{};
        return ::GetFileType(handle_) == FILE_TYPE_DISK && ::GetFileInformationByHandle(handle_, &information) &&
               information.nNumberOfLinks == 1;
    }

    // The name of the file behind links; empty where the system cannot tell.
    std::wstring finalName() const {
        std::wstring name(::GetFinalPathNameByHandleW(handle_, nullptr, 0, 0), L'\0');
        name.resize(::GetFinalPathNameByHandleW(handle_, name.data(), static_cast<DWORD>(name.size()), 0));
        return name;
    }

  protected:
    void closeHandle() {
        if (handle_ != nullptr) {
            ::CloseHandle(std::exchange(handle_, nullptr));
        }
    }

  private:
    static OVERLAPPED placeOf(std::int64_t offset) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return place;
    }

    template <class Span>
    static DWORD portion(Span bytes) {
        return static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1 << 20));
    }

    // Takes the result of a system call.
    void check(bool good) const {
        if (!good) {
            raise(path_, ::GetLastError());
        }
    }

    std::string path_;
    bool writes_;
    HANDLE handle_ = nullptr; // nullptr after close()
};

bool isThere(const std::wstring& name) {
    return ::GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A file with a name of its own in the folder of `target`, which it replaces when it is closed after writes that all
// succeeded. Otherwise it is deleted.
class Copy : public DiskFile {
  public:
    Copy(const std::string& path, std::wstring target, std::wstring name)
        : DiskFile(path, name, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS), target_(std::move(target)),
          name_(std::move(name)), replaces_(isThere(target_)) {}

    ~Copy() override {
        const bool lastCopy = replaces_ && !isThere(target_); // the system lost the file while it replaced it
        if (!replaced_ && !lastCopy) {
            closeHandle();
            ::DeleteFileW(name_.c_str());
        }
    }

    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        complete_ = false;
        DiskFile::write(offset, bytes);
        complete_ = true;
    }

    void close() override {
        DiskFile::close();
        if (!complete_) {
            raise(path(), ERROR_WRITE_FAULT);
        }
        replace();
        replaced_ = true;
    }

  private:
    // ReplaceFileW keeps access list and attributes. A scanner may hold a file for a moment after it was closed.
    void replace() const {
        for (int tries = 10; tries > 0; --tries) {
            if (replaces_ && tries > 1 ? ::ReplaceFileW(target_.c_str(), name_.c_str(), nullptr,
                                                        REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)
                                       : ::MoveFileExW(name_.c_str(), target_.c_str(),
                                                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
                return;
            }
            ::Sleep(50);
        }
        raise(path(), ::GetLastError());
    }

    std::wstring target_;
    std::wstring name_;
    bool replaces_; // an existing file
    bool complete_ = true;
    bool replaced_ = false;
};

// nullptr where the user may not create a file beside the target, or its name would be too long.
std::unique_ptr<Copy> makeCopy(const std::string& path, const std::wstring& target) {
    constexpr int mostLeftOver = 100; // by programs that were ended
    std::wstring name;
    for (int number = 1; name.empty() || (isThere(name) && number <= mostLeftOver); ++number) {
        name = target + L'.' + std::to_wstring(number) + L".part";
    }
    if (!isThere(target) || ::CopyFileW(target.c_str(), name.c_str(), TRUE)) {
        return std::make_unique<Copy>(path, target, name);
    }
    const DWORD error = ::GetLastError();
    if (error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_NAME || error == ERROR_FILENAME_EXCED_RANGE) {
        return nullptr;
    }
    ::DeleteFileW(name.c_str());
    raise(path, error);
}

std::unique_ptr<BinaryFile> openToWrite(const std::string& path) {
    std::wstring target = systemPath(path);
    if (isThere(target)) {
        auto present = std::make_unique<DiskFile>(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        if (!present->isReplaceable()) {
            return present;
        }
        const std::wstring behindLinks = present->finalName();
        target = behindLinks.empty() ? target : behindLinks;
    }
    std::unique_ptr<BinaryFile> copy = makeCopy(path, target);
    return copy != nullptr ? std::move(copy)
                           : std::make_unique<DiskFile>(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
}

// UTF-8, or UTF-16 with a byte-order mark.
bool isUnicode(std::string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") || isUtf8(text);
}

class DiskFiles : public Files {
  public:
    bool exists(const std::string& path) override {
        const DWORD attributes = ::GetFileAttributesW(systemPath(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }

    std::int64_t length(const std::string& path) override {
        return DiskFile(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING).length();
    }

    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override {
        switch (access) {
        case FileAccess::read: return std::make_unique<DiskFile>(path, GENERIC_READ, OPEN_EXISTING);
        case FileAccess::extend: return std::make_unique<DiskFile>(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
        default: return openToWrite(path);
        }
    }

    std::string readAll(const std::string& path) override {
        DiskFile file(path, GENERIC_READ, OPEN_EXISTING);
        std::string text(static_cast<std::size_t>(file.length()), '\0');
        file.read(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()});
        return isUnicode(text) ? text : fromWide(toWide(text, systemCodePage()));
    }

    void appendLine(const std::string& path, const std::string& text) override {
        DiskFile(path, FILE_APPEND_DATA, OPEN_ALWAYS).append(text + "\r\n");
    }
};

} // namespace

std::unique_ptr<Files> makeFiles() {
    return std::make_unique<DiskFiles>();
}

} // namespace platform
