#include "platform/system/systemHost.h"

#include "platform/profile.h"

#include <array>
#include <ctime>
#include <utility>

namespace platform {

SystemHost::SystemHost(std::unique_ptr<LineDevice> line)
    : files_(makeFiles()), port_(std::move(line), [this](int number) { return deviceOf(number); }) {}

std::string SystemHost::dateAndTime() {
    std::array<char, sizeof "2024/04/01 09:05:00"> text{};
    const std::time_t now = std::time(nullptr);
    std::strftime(text.data(), text.size(), "%Y/%m/%d %H:%M:%S", std::localtime(&now));
    return text.data();
}

void SystemHost::endProgram(int exitCode) {
    port_.releaseDevice();
    stopProcess(exitCode);
}

std::string SystemHost::deviceOf(int number) {
    const std::string key = "COM" + std::to_string(number);
    const std::string device =
        cleanedValue(getPrivateProfileString(*files_, "DEVICE", key, programDirectory() + "Setting.INI"));
    return device.empty() ? defaultDevice(number) : device;
}

} // namespace platform
