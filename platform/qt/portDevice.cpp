#include "platform/qt/portDevice.h"

#include "base/failure.h"
#include "base/text.h"
#include "platform/profile.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

namespace platform {

namespace {

std::string usualDevice(int number) {
    struct Range {
        int first, last;
        const char* path;
    };
    constexpr Range ranges[] = {{1, 4, "/dev/ttyS"}, {5, 12, "/dev/ttyUSB"}, {13, 16, "/dev/ttyACM"}};
    for (const Range& range : ranges) {
        if (number >= range.first && number <= range.last) {
            return range.path + std::to_string(number - range.first);
        }
    }
    return {};
}

// The path itself where it leads nowhere.
std::string withoutLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : path;
}

// Where the toolkit puts the lock file of a device, in the folder that Debian gives to such files.
std::string lockFile(const std::string& portName) {
    constexpr std::string_view devices = "/dev/";
    const std::string_view name = portName;
    return "/var/lock/LCK.." + replaceAll(name.starts_with(devices) ? name.substr(devices.size()) : name, '/', '_');
}

// The process that a lock file names: its number stands in the first line. A toolkit's file has further lines, and
// the kernel holds a lock on it for as long as its owner lives; that of other programs has just the number.
struct LockOwner {
    int process = 0;
    bool kernelLock = false;
};

LockOwner lockOwner(const std::string& path) {
    LockOwner owner;
    std::ifstream file(path);
    std::string rest;
    file >> owner.process >> rest;
    owner.kernelLock = !rest.empty();
    return owner;
}

bool alive(int process) {
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

} // namespace

std::string portDevice(int number, Files& files, const std::string& iniPath) {
    const std::string value = getPrivateProfileString(files, "DEVICE", "COM" + std::to_string(number), iniPath);
    const std::string device = cleanedValue(value);
    return withoutLinks(device.empty() ? usualDevice(number) : device);
}

std::string passPortLock(const std::string& device, const std::string& shownName) {
    const std::string path = lockFile(device);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        return device;
    }
    const bool locked = ::flock(file, LOCK_EX | LOCK_NB) < 0;
    const LockOwner owner = lockOwner(path);
    const bool held = locked || (!owner.kernelLock && alive(owner.process));
    const bool removed = !held && ::unlink(path.c_str()) == 0;
    ::close(file);
    if (held) {
        throw Failure(failureNumber::portHeld,
                      shownName + " is in use by another program (process " + std::to_string(owner.process) + ")");
    }
    // The file of another user's dead program stays. The toolkit knows no other way past it than another name.
    return removed ? device : "/." + device;
}

void removePortLock(const std::string& portName) {
    const std::string path = lockFile(portName);
    if (lockOwner(path).process == ::getpid()) {
        ::unlink(path.c_str());
    }
}

} // namespace platform
