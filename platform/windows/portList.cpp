// The serial ports, as their drivers have entered them into the registry.
#include "platform/portList.h"

#include "base/text.h"
#include "platform/windows/systemText.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <windows.h>

namespace platform {

// The name of a value is the driver's name of the device, its text that of the port.
std::vector<PortEntry> listPorts() {
    std::vector<PortEntry> ports;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, LR"(HARDWARE\DEVICEMAP\SERIALCOMM)", 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return ports;
    }
    LSTATUS result = ERROR_SUCCESS;
    for (DWORD index = 0; result == ERROR_SUCCESS; ++index) {
        std::array<wchar_t, 256> driver{};
        std::array<wchar_t, 256> port{}; // one more than asked for, so that the text ends
        DWORD driverLength = driver.size();
        DWORD bytes = (port.size() - 1) * sizeof(wchar_t);
        DWORD type = REG_NONE;
        result = ::RegEnumValueW(key, index, driver.data(), &driverLength, nullptr, &type,
                                 reinterpret_cast<BYTE*>(port.data()), &bytes);
        if (result == ERROR_SUCCESS && type == REG_SZ) {
            ports.push_back({fromWide(port.data()), fromWide(driver.data())});
        }
    }
    ::RegCloseKey(key);
    std::ranges::sort(ports, {}, [](const PortEntry& port) { return std::pair(port.device.size(), port.device); });
    return ports;
}

bool sameDevice(const std::string& a, const std::string& b) {
    const auto name = [](const std::string& device) {
        constexpr std::string_view prefix = R"(\\.\)";
        return upperCase(device.starts_with(prefix) ? device.substr(prefix.size()) : device);
    };
    return name(a) == name(b);
}

std::string holderOf(const std::string& /*device*/) {
    return {};
}

} // namespace platform
