// The instance lock, the sleep lock, and the end of the process.
#include "base/version.h"
#include "platform/system.h"
#include "platform/windows/systemText.h"

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

void stopProcess() {
    ::TerminateProcess(::GetCurrentProcess(), 0);
    std::abort(); // not reached
}

} // namespace platform
