// The instance lock, the sleep lock, the folder of the program, and the end of the process.
#include "base/version.h"
#include "platform/system.h"
#include "platform/windows/systemText.h"

#include <algorithm>
#include <cstdlib>
#include <windows.h>

namespace platform {

namespace {

// Sets or removes the reason that the system shows for a shutdown that does not go on.
BOOL CALLBACK setBlockReason(HWND window, LPARAM on) {
    if (on == FALSE) {
        ::ShutdownBlockReasonDestroy(window);
    } else if (::IsWindowVisible(window) && ::GetWindow(window, GW_OWNER) == nullptr) {
        ::ShutdownBlockReasonCreate(window, L"Firmware is moving between the computer and the unit.");
    }
    return TRUE;
}

} // namespace

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
    ::EnumThreadWindows(::GetCurrentThreadId(), setBlockReason, on ? TRUE : FALSE); // the windows refuse it
}

void holdTermination(bool /*on*/) {} // the system asks the windows

bool terminationRequested() {
    return false;
}

void allowSlowWindows() {
    ::DisableProcessWindowsGhosting();
}

bool beginsSystemLoop(const void* message) {
    constexpr UINT openSystemMenu = 0x313;   // from the task bar; no header names it
    constexpr WPARAM systemCommand = 0xFFF0; // the system uses the other bits
    const auto& received = *static_cast<const MSG*>(message);
    switch (received.message) {
    case WM_NCLBUTTONDOWN:
    case WM_NCLBUTTONDBLCLK:
    case WM_NCRBUTTONDOWN:
    case WM_NCRBUTTONUP:
    case openSystemMenu: return true;
    case WM_SYSKEYDOWN:
    case WM_SYSCHAR: return received.wParam == VK_SPACE;
    case WM_SYSCOMMAND:
        switch (received.wParam & systemCommand) {
        case SC_MOVE:
        case SC_SIZE:
        case SC_MOUSEMENU:
        case SC_KEYMENU: return true;
        default: return false;
        }
    default: return false;
    }
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

std::string systemName() {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    ::GetVersionExW(&version); // the true one, because the manifest names this Windows
    return "Windows " + std::to_string(version.dwMajorVersion) + '.' + std::to_string(version.dwMinorVersion) + '.' +
           std::to_string(version.dwBuildNumber);
}

void stopProcess(int exitCode) {
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort(); // not reached
}

} // namespace platform
