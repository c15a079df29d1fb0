// Stubs of the system for tests of the real host. A line connects COM3 with its far end COM13; while a file "pull" is in
// the folder of the test program, both do not exist (scripts/windows). The stubs return results that wine does not return.
#pragma once

#include "platform/system.h"
#include "tests/platformContract.h"

#include <atomic>
#include <windows.h>

inline struct {
    DWORD openError = ERROR_SUCCESS; // of the next opening
    DWORD error = ERROR_SUCCESS;     // of any later call
    bool syncFails = false;          // the next time
    bool eventsFail = false;
    std::int64_t room = INT64_MAX; // no file grows beyond that
    DWORD mostHandles = MAXDWORD;
    std::atomic<HANDLE> open = nullptr;
    DCB line{};
} driver;

inline DWORD countHandles() {
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count;
}

template <class Function>
Function* systemFunction(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), name)));
}

// Stubs that replace functions of the system. Wine lets two programs open one port and accepts two equal
// characters of a handshake; Windows does neither.

inline HANDLE WINAPI createFile(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                                DWORD creation, DWORD flags, HANDLE sample) {
    const bool port = std::wstring_view(path).ends_with(L"COM3");
    if ((port && driver.open != nullptr) || countHandles() >= driver.mostHandles) {
        ::SetLastError(port ? ERROR_ACCESS_DENIED : ERROR_TOO_MANY_OPEN_FILES);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        systemFunction<decltype(createFile)>("CreateFileW")(path, access, sharing, security, creation, flags, sample);
    if (port && handle != INVALID_HANDLE_VALUE) {
        driver.open = handle;
    }
    return handle;
}

inline HANDLE WINAPI createEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL set, const wchar_t* name) {
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return driver.eventsFail ? nullptr
                             : systemFunction<decltype(createEvent)>("CreateEventW")(security, manual, set, name);
}

inline BOOL WINAPI closeHandle(HANDLE handle) {
    if (handle == driver.open) {
        driver.open = nullptr;
    }
    return systemFunction<decltype(closeHandle)>("CloseHandle")(handle);
}

inline BOOL WINAPI writeFile(HANDLE handle, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* place) {
    LARGE_INTEGER length{};
    if (size > 0 && ::GetFileType(handle) == FILE_TYPE_DISK) {
        ::GetFileSizeEx(handle, &length);
        const std::int64_t room = driver.room - (place != nullptr ? std::int64_t{place->Offset} : length.QuadPart);
        size = static_cast<DWORD>(std::clamp<std::int64_t>(room, 0, size));
        if (size == 0) {
            ::SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
    }
    return systemFunction<decltype(writeFile)>("WriteFile")(handle, bytes, size, written, place);
}

inline BOOL WINAPI flushFileBuffers(HANDLE handle) {
    ::SetLastError(ERROR_DISK_FULL);
    return !std::exchange(driver.syncFails, false) &&
           systemFunction<decltype(flushFileBuffers)>("FlushFileBuffers")(handle);
}

inline BOOL WINAPI getCommState(HANDLE handle, DCB* line) {
    ::SetLastError(driver.openError);
    return driver.openError == ERROR_SUCCESS && systemFunction<decltype(getCommState)>("GetCommState")(handle, line);
}

inline BOOL WINAPI setCommState(HANDLE handle, DCB* line) {
    driver.line = *line;
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return line->XonChar != line->XoffChar && systemFunction<decltype(setCommState)>("SetCommState")(handle, line);
}

inline BOOL WINAPI clearCommError(HANDLE handle, DWORD* errors, COMSTAT* status) {
    ::SetLastError(driver.error);
    return driver.error == ERROR_SUCCESS &&
           systemFunction<decltype(clearCommError)>("ClearCommError")(handle, errors, status);
}

inline BOOL WINAPI purgeComm(HANDLE handle, DWORD what) {
    ::SetLastError(driver.error);
    return driver.error == ERROR_SUCCESS && systemFunction<decltype(purgeComm)>("PurgeComm")(handle, what);
}

extern "C" { // NOLINTBEGIN
decltype(&createFile) __imp_CreateFileW = createFile;
decltype(&createEvent) __imp_CreateEventW = createEvent;
decltype(&closeHandle) __imp_CloseHandle = closeHandle;
decltype(&writeFile) __imp_WriteFile = writeFile;
decltype(&flushFileBuffers) __imp_FlushFileBuffers = flushFileBuffers;
decltype(&getCommState) __imp_GetCommState = getCommState;
decltype(&setCommState) __imp_SetCommState = setCommState;
decltype(&clearCommError) __imp_ClearCommError = clearCommError;
decltype(&purgeComm) __imp_PurgeComm = purgeComm;
} // NOLINTEND

namespace simulator {

// The far end. It has the name of the class for POSIX.
class PseudoTerminal {
  public:
    explicit PseudoTerminal(const std::string& /*device*/) {
        std::filesystem::remove("pull");
        waitFor(true);
        end_ = open(farEnd);
        COMMTIMEOUTS timeouts{};
        timeouts.ReadTotalTimeoutConstant = 10;
        ::SetCommTimeouts(end_, &timeouts);
        ::PurgeComm(end_, PURGE_RXCLEAR);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() {
        ::CloseHandle(end_);
        std::ofstream("pull").close();
        waitFor(false);
    }

    std::size_t read(std::span<std::uint8_t> bytes) {
        DWORD count = 0;
        ::ReadFile(end_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        return count;
    }

    // Returns the bytes time to pass through the line.
    std::size_t write(std::span<const std::uint8_t> bytes) {
        DWORD count = 0;
        ::WriteFile(end_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        ::Sleep(20);
        return count;
    }

  private:
    static HANDLE open(const wchar_t* name) {
        return systemFunction<decltype(createFile)>("CreateFileW")(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                                   OPEN_EXISTING, 0, nullptr);
    }
    static void waitFor(bool there) {
        const auto isThere = [](const wchar_t* name) {
            const HANDLE handle = open(name);
            return handle != INVALID_HANDLE_VALUE && ::CloseHandle(handle);
        };
        for (int tries = 1000; isThere(nearEnd) != there || isThere(farEnd) != there; --tries) {
            ASSERT_GT(tries, 0) << "The line does not " << (there ? "come" : "go");
            ::Sleep(10);
        }
    }

    static constexpr const wchar_t* nearEnd = LR"(\\.\COM3)";
    static constexpr const wchar_t* farEnd = LR"(\\.\COM13)";
    HANDLE end_ = INVALID_HANDLE_VALUE;
};

} // namespace simulator

inline constexpr const char* systemStory = "qtWindows.txt";

class SystemFixture : public contract::Fixture {
  protected:
    SystemFixture(platform::Host& host, const std::string& place) : Fixture(host, place) {
        driver.mostHandles = countHandles() + 200;
        commands["room"] = [](const std::string& most) { driver.room = std::stoll(most); };
        commands["break"] = [](const std::string&) { driver.syncFails = true; };
        commands["noEvents"] = [](const std::string& on) { driver.eventsFail = on == "on"; };
        commands["error"] = [](const std::string& number) { driver.error = std::stoul(number); };
        commands["openError"] = [](const std::string& number) { driver.openError = std::stoul(number); };
        commands["text"] = [this](const std::string&) { add(failed); };
        commands["line"] = [this](const std::string&) {
            const DCB& set = driver.line;
            for (const DWORD number : {set.BaudRate, DWORD{set.ByteSize}, DWORD{set.Parity}, DWORD{set.StopBits}}) {
                add(number);
            }
            add(set.fBinary && !set.fAbortOnError && !set.fOutX && !set.fInX && !set.fOutxCtsFlow && !set.fOutxDsrFlow
                    ? "raw"
                    : "cooked");
        };
    }
    ~SystemFixture() override {
        port.close();
        driver.error = driver.openError = ERROR_SUCCESS;
        driver.room = INT64_MAX;
        driver.mostHandles = MAXDWORD;
    }

    static double processorTime() { // seconds
        FILETIME created, ended, kernel, user;
        ::GetProcessTimes(::GetCurrentProcess(), &created, &ended, &kernel, &user);
        return (kernel.dwLowDateTime + user.dwLowDateTime) / 1e7;
    }

    const std::string unit = "COM3"; // the device
};
