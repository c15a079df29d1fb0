#include "platform/windows/systemText.h"

#include <array>
#include <windows.h>

namespace platform {

std::wstring toWide(std::string_view text, unsigned codePage) {
    const int size = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), needed);
    return wide;
}

std::string fromWide(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const int needed = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), needed, nullptr, nullptr);
    return bytes;
}

bool isUtf8(std::string_view text) {
    const int size = static_cast<int>(text.size());
    return text.empty() || ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0) > 0;
}

unsigned systemCodePage() {
    DWORD number = 0;
    const int size = ::GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                                      reinterpret_cast<wchar_t*>(&number), sizeof number / sizeof(wchar_t));
    return size > 0 ? number : CP_ACP; // CP_ACP too for a language without a code page
}

std::string causeText(unsigned long systemError) {
    std::array<wchar_t, 512> text{};
    const DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    DWORD length = 0;
    for (const DWORD language : {DWORD{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, DWORD{0}}) {
        if (length == 0) {
            length = ::FormatMessageW(flags, nullptr, systemError, language, text.data(), text.size(), nullptr);
        }
    }
    std::wstring_view cause(text.data(), length);
    while (!cause.empty() && (cause.back() == L' ' || cause.back() == L'.')) {
        cause.remove_suffix(1);
    }
    return cause.empty() ? "error " + std::to_string(systemError) : fromWide(cause);
}

} // namespace platform
