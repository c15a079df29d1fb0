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
    DiskFile(std::string path, DWORD access, DWORD creation)
        : path_(std::move(path)), writes_((access & GENERIC_WRITE) != 0) {
        constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        handle_ = ::CreateFileW(systemPath(path_).c_str(), access, writes_ ? FILE_SHARE_READ : all, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
        check(handle_ != INVALID_HANDLE_VALUE);
    }

    ~DiskFile() override {
        if (handle_ != nullptr) {
            ::CloseHandle(handle_);
        }
    }

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
        DWORD count = 0;
        check(::WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &count, nullptr));
    }

    void close() override {
        const HANDLE handle = std::exchange(handle_, nullptr);
        const bool flushFailed = writes_ && !::FlushFileBuffers(handle);
        const DWORD flushError = ::GetLastError();
        if (!::CloseHandle(handle) || flushFailed) {
            raise(path_, flushFailed ? flushError : ::GetLastError());
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
        return access == FileAccess::read ? std::make_unique<DiskFile>(path, GENERIC_READ, OPEN_EXISTING)
                                          : std::make_unique<DiskFile>(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
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
