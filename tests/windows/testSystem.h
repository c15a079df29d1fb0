// What the tests of the real desktop take from Windows. A line goes from COM3 to COM13, its far end; while there is a
// file "pull" in the folder of the test program, both are gone (scripts/windows).
#pragma once

#include "base/bytes.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <windows.h>

inline bool syncFails = false;               // the next time
inline std::int64_t roomOfFiles = INT64_MAX; // no file grows beyond that
inline DWORD mostHandles = MAXDWORD;
inline std::atomic<HANDLE> openPort = nullptr;

inline DWORD countHandles() {
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count;
}

template <class Function>
Function* systemsOwn(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), name)));
}

// These stand before the system's own, once in each program. Wine lets two programs open one port and accepts two equal
// characters of a handshake; Windows does neither.

inline HANDLE WINAPI createFile(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                                DWORD creation, DWORD flags, HANDLE sample) {
    const bool port = std::wstring_view(path).ends_with(L"COM3");
    if ((port && openPort != nullptr) || countHandles() >= mostHandles) {
        ::SetLastError(port ? ERROR_ACCESS_DENIED : ERROR_TOO_MANY_OPEN_FILES);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        systemsOwn<decltype(createFile)>("CreateFileW")(path, access, sharing, security, creation, flags, sample);
    if (port && handle != INVALID_HANDLE_VALUE) {
        openPort = handle;
    }
    return handle;
}

inline BOOL WINAPI closeHandle(HANDLE handle) {
    if (handle == openPort) {
        openPort = nullptr;
    }
    return systemsOwn<decltype(closeHandle)>("CloseHandle")(handle);
}

inline BOOL WINAPI writeFile(HANDLE handle, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* place) {
    LARGE_INTEGER length{};
    if (size > 0 && ::GetFileType(handle) == FILE_TYPE_DISK) {
        ::GetFileSizeEx(handle, &length);
        const std::int64_t room = roomOfFiles - (place != nullptr ? std::int64_t{place->Offset} : length.QuadPart);
        size = static_cast<DWORD>(std::clamp<std::int64_t>(room, 0, size));
        if (size == 0) {
            ::SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
    }
    return systemsOwn<decltype(writeFile)>("WriteFile")(handle, bytes, size, written, place);
}

inline BOOL WINAPI flushFileBuffers(HANDLE handle) {
    ::SetLastError(ERROR_DISK_FULL);
    return !std::exchange(syncFails, false) && systemsOwn<decltype(flushFileBuffers)>("FlushFileBuffers")(handle);
}

inline DCB lineSet;

inline BOOL WINAPI setCommState(HANDLE handle, DCB* line) {
    lineSet = *line;
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return line->XonChar != line->XoffChar && systemsOwn<decltype(setCommState)>("SetCommState")(handle, line);
}

extern "C" { // NOLINTBEGIN
decltype(&createFile) __imp_CreateFileW = createFile;
decltype(&closeHandle) __imp_CloseHandle = closeHandle;
decltype(&writeFile) __imp_WriteFile = writeFile;
decltype(&flushFileBuffers) __imp_FlushFileBuffers = flushFileBuffers;
decltype(&setCommState) __imp_SetCommState = setCommState;
} // NOLINTEND

inline std::filesystem::path makeTestFolder() {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "tarnbeaconTest";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    return folder;
}

inline std::filesystem::path linePath(const std::filesystem::path&) {
    return "COM3";
}

inline bool isHeld(const std::string&) {
    return openPort != nullptr;
}

// The emulator does not pass on what a process has printed that died.
inline const char* printed(const char*) {
    return "";
}

inline void limitFileSize(std::int64_t bytes) {
    roomOfFiles = bytes;
}

inline void limitOpenFiles(DWORD more) {
    mostHandles = countHandles() + more;
}

namespace simulator {

// The far end, under the name that it has on a POSIX system.
class PseudoTerminal {
  public:
    explicit PseudoTerminal(const std::filesystem::path&) {
        std::filesystem::remove("pull");
        waitFor(true);
        end_ = open(farEnd);
        COMMTIMEOUTS patience{};
        patience.ReadTotalTimeoutConstant = 300;
        ::SetCommTimeouts(end_, &patience);
        ::PurgeComm(end_, PURGE_RXCLEAR);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() {
        ::CloseHandle(end_);
        std::ofstream("pull").close();
        waitFor(false);
    }

    std::string device() const { return "COM3"; }

    std::size_t read(std::span<std::uint8_t> bytes) {
        DWORD count = 0;
        ::ReadFile(end_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        return count;
    }

    // Gives the bytes time to pass through the line.
    std::size_t write(std::span<const std::uint8_t> bytes) {
        DWORD count = 0;
        ::WriteFile(end_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        ::Sleep(20);
        return count;
    }

  private:
    static HANDLE open(const wchar_t* name) {
        return systemsOwn<decltype(createFile)>("CreateFileW")(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                               OPEN_EXISTING, 0, nullptr);
    }
    static void waitFor(bool there) {
        const auto isThere = [](const wchar_t* name) {
            const HANDLE handle = open(name);
            return handle != INVALID_HANDLE_VALUE && ::CloseHandle(handle);
        };
        for (int patience = 1000; isThere(nearEnd) != there || isThere(farEnd) != there; --patience) {
            ASSERT_GT(patience, 0) << "The line does not " << (there ? "come" : "go");
            ::Sleep(10);
        }
    }

    static constexpr const wchar_t* nearEnd = LR"(\\.\COM3)";
    static constexpr const wchar_t* farEnd = LR"(\\.\COM13)";
    HANDLE end_ = INVALID_HANDLE_VALUE;
};

} // namespace simulator

inline Bytes take(simulator::PseudoTerminal& end, std::size_t count) {
    Bytes bytes(count);
    bytes.resize(end.read(bytes));
    return bytes;
}
