// What concerns the process as a whole: the lock of the one instance, the lock against sleep, the end.
#include "base/version.h"
#include "platform/system.h"
#include "platform/windows/systemText.h"

#include <cstdlib>
#include <windows.h>

namespace platform {

// The installer looks for this mutex too.
bool becomeOnlyInstance() {
    static HANDLE mutex = nullptr; // held until the process ends
    if (mutex != nullptr) {
        return true;
    }
    const std::wstring name = L"Local\\" + toWide(program::name); // of the user's session
    const HANDLE taken = ::CreateMutexW(nullptr, FALSE, name.c_str());
    const DWORD error = ::GetLastError();
    if (taken != nullptr && error == ERROR_ALREADY_EXISTS) {
        ::CloseHandle(taken);
        return false;
    }
    mutex = taken;
    return taken != nullptr || error != ERROR_ACCESS_DENIED; // one of an administrator denies the access
}

void keepAwake(bool on) {
    ::SetThreadExecutionState(on ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
}

void keepErrorsInEnglish() {} // causeText() asks for them so

void stopProcess() {
    ::TerminateProcess(::GetCurrentProcess(), 0);
    std::abort(); // never reached
}

} // namespace platform
