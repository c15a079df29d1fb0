// The serial ports, as /sys and /dev/serial describe them.
#include "platform/portList.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

using std::filesystem::path;

std::string firstLine(const path& file) {
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
}

// The attribute of the nearest device above that has it.
std::string attributeAbove(path device, const char* name) {
    for (; device.has_relative_path(); device = device.parent_path()) {
        if (std::string value = firstLine(device / name); !value.empty()) {
            return value;
        }
    }
    return {};
}

// The name that an adapter keeps, whatever the order in which adapters are plugged in.
std::string stableName(const path& device) {
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/serial/by-id", failed)) {
        if (std::filesystem::equivalent(entry.path(), device, failed)) {
            return entry.path().string();
        }
    }
    return {};
}

void append(std::string& text, const std::string& part) {
    text += text.empty() || part.empty() ? part : ", " + part;
}

std::string describe(const path& system, const path& device) {
    std::error_code failed;
    std::string text = std::filesystem::read_symlink(system / "device/driver", failed).filename().string();
    append(text, attributeAbove(std::filesystem::canonical(system / "device", failed), "product"));
    append(text, stableName(device));
    return text;
}

std::string processName(const std::string& number) {
    return firstLine("/proc/" + number + "/comm") + ", process " + number;
}

// A line of /proc/locks: 1: FLOCK ADVISORY WRITE 4711 00:1b:5 0 EOF
std::string lockerOf(const path& device) {
    struct stat status {};
    ::stat(device.c_str(), &status);
    const std::string inode = ':' + std::to_string(status.st_ino);
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string order, kind, strength, access, process, file;
        words >> order >> kind >> strength >> access >> process >> file;
        if (kind == "FLOCK" && file.ends_with(inode) && process != std::to_string(::getpid())) {
            return processName(process);
        }
    }
    return {};
}

std::string openerOf(const path& device) {
    std::error_code failed;
    for (const auto& process : std::filesystem::directory_iterator("/proc", failed)) {
        std::error_code hidden; // other users' processes
        for (const auto& file : std::filesystem::directory_iterator(process.path() / "fd", hidden)) {
            if (std::filesystem::read_symlink(file.path(), hidden) == device) {
                return processName(process.path().filename().string());
            }
        }
    }
    return {};
}

} // namespace

// A place for a port without hardware behind it has the type 0.
std::vector<PortEntry> listPorts() {
    std::vector<PortEntry> ports;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/tty", failed)) {
        const path device = "/dev" / entry.path().filename();
        if (std::filesystem::exists(entry.path() / "device", failed) && firstLine(entry.path() / "type") != "0" &&
            std::filesystem::exists(device, failed)) {
            ports.push_back({device.string(), describe(entry.path(), device)});
        }
    }
    std::ranges::sort(ports, {}, &PortEntry::device);
    return ports;
}

bool sameDevice(const std::string& a, const std::string& b) {
    std::error_code failed;
    const path first = std::filesystem::canonical(a, failed);
    return a == b || (!failed && first == std::filesystem::canonical(b, failed));
}

// The lock first: on a pseudo terminal the program at the other end may have the device open too. A user sees all locks,
// but the open files of his own processes alone.
std::string holderOf(const std::string& device) {
    std::error_code failed;
    const path target = std::filesystem::canonical(device, failed);
    if (failed) {
        return {};
    }
    const std::string locker = lockerOf(target);
    return locker.empty() ? openerOf(target) : locker;
}

} // namespace platform
