// The instance lock, the sleep lock, the folder of the program, and the end of the process.
#include "base/version.h"
#include "platform/system.h"
#include "platform/windows/systemText.h"

#include <algorithm>
#include <cstdlib>
#include <windows.h>

namespace platform {

// The installer checks this mutex too.
bool takeInstanceLock() {
    static HANDLE mutex = nullptr; // held until the process ends
    if (mutex != nullptr) {
        return true;
    }
    const std::wstring name = L"Local\\" + toWide(program::name); // one for each logged-in session
    const HANDLE created = ::CreateMutexW(nullptr, FALSE, name.c_str());
    const DWORD error = ::GetLastError();
    if (created != nullptr && error == ERROR_ALREADY_EXISTS) {
        ::CloseHandle(created);
        return false;
    }
    mutex = created;
    return created != nullptr || error != ERROR_ACCESS_DENIED; // the mutex of an administrator's instance
}

void keepAwake(bool on) {
    ::SetThreadExecutionState(on ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
}

void setEnglishErrors() {} // causeText() requests English

std::string programDirectory() {
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) { // cut
        path.resize(2 * path.size());
        length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    }
    std::string folder = fromWide(std::wstring_view(path).substr(0, path.find_last_of(L"\\", length) + 1));
    std::ranges::replace(folder, '\\', '/');
    return folder;
}

void stopProcess(int exitCode) {
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort(); // not reached
}

} // namespace platform
