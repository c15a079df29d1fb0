// Stubs of the system for tests of the real host. COM3 is a pseudo terminal; the stubs return results that a pseudo
// terminal and a disk do not return.
#pragma once

#include "platform/system.h"
#include "simulator/program/pseudoTerminal.h"
#include "tests/platformContract.h"

#include <asm/ioctls.h>
#include <csignal>
#include <cstdarg>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

inline struct {
    bool present = false; // a driver below the terminal
    int answer = 0;
    int flags = 0;
    int error = 0; // of any read or write
    bool exclusive = false;
    int raised = 0;         // modem lines of the port
    int openError = 0;      // of COM3 and of the copy of a file; EIO: COM3 opens, but there is no hardware behind it
    bool syncFails = false; // the next time
} driver;

template <class... Arguments>
long transfer(long number, Arguments... arguments) {
    errno = driver.error;
    return driver.error != 0 ? -1 : ::syscall(number, arguments...);
}

// Stubs that replace functions of the C library.
// NOLINTBEGIN(misc-definitions-in-headers)

extern "C" int fsync(int fd) {
    errno = EIO;
    return std::exchange(driver.syncFails, false) ? -1 : static_cast<int>(::syscall(SYS_fsync, fd));
}

extern "C" int open(const char* file, int oflag, ...) {
    va_list arguments;
    va_start(arguments, oflag);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    const std::string_view name = file;
    const bool refused = (name.ends_with("/unit") && driver.openError != EIO) || name.ends_with(".part");
    errno = driver.openError;
    return refused && driver.openError != 0 ? -1 : static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, oflag, mode));
}

extern "C" int tcgetattr(int fd, termios* termios_p) noexcept {
    static const auto real = reinterpret_cast<int (*)(int, termios*)>(::dlsym(RTLD_NEXT, "tcgetattr"));
    errno = EIO;
    return driver.openError == EIO ? -1 : real(fd, termios_p);
}

// A terminal with a driver is no pseudo terminal.
extern "C" int fstat(int fd, struct stat* buf) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_fstat, fd, buf));
    buf->st_rdev = driver.present ? makedev(4, 64) : buf->st_rdev;
    return result;
}

extern "C" int access(const char* name, int type) noexcept {
    errno = EACCES;
    return driver.openError == EACCES && (type & W_OK) != 0
               ? -1
               : static_cast<int>(::syscall(SYS_faccessat, AT_FDCWD, name, type));
}

extern "C" ssize_t read(int fd, void* buf, std::size_t nbytes) {
    return transfer(SYS_read, fd, buf, nbytes);
}

extern "C" ssize_t write(int fd, const void* buf, std::size_t n) {
    return transfer(SYS_write, fd, buf, n);
}

extern "C" int tcflush(int fd, int queue_selector) noexcept {
    return static_cast<int>(transfer(SYS_ioctl, fd, TCFLSH, queue_selector));
}

extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == TIOCEXCL) {
        driver.exclusive = true;
        return 0;
    }
    driver.raised = request == TIOCMBIS ? *static_cast<int*>(argument) : driver.raised;
    if (!driver.present || (request != TIOCGSERIAL && request != TIOCSSERIAL)) {
        return static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
    }
    auto* serial = static_cast<serial_struct*>(argument);
    (request == TIOCGSERIAL ? serial->flags : driver.flags) = request == TIOCGSERIAL ? driver.flags : serial->flags;
    if (request == TIOCSSERIAL) {
        ::dprintf(STDERR_FILENO, "latency %d\n", driver.flags); // for "end"
    }
    return request == TIOCGSERIAL ? 0 : driver.answer;
}

// NOLINTEND(misc-definitions-in-headers)

// What a command of the shell prints, without line ends.
inline std::string outputOf(const std::string& command) {
    std::FILE* const pipe = ::popen((command + " 2>/dev/null | tr -d '\\n'").c_str(), "r");
    char text[2000];
    const std::size_t size = std::fread(text, 1, sizeof text, pipe);
    ::pclose(pipe);
    return {text, size};
}

inline constexpr const char* systemStory = "qtLinux.txt";

class SystemFixture : public contract::Fixture {
  protected:
    SystemFixture(platform::Host& host, const std::string& place) : Fixture(host, place) {
        constexpr int low = ASYNC_LOW_LATENCY;
        std::signal(SIGXFSZ, SIG_IGN); // a write that is too long fails
        outputOf("prlimit --nofile=200 --pid $PPID");
        commands["room"] = [](const std::string& most) { outputOf("prlimit --pid $PPID --fsize=" + most + ':'); };
        commands["break"] = [](const std::string&) { driver.syncFails = true; };
        commands["error"] = [](const std::string& number) { driver.error = std::stoi(number); };
        commands["kill"] = [this](const std::string&) {
            EXPECT_EXIT((port.open(), std::raise(SIGKILL)), testing::KilledBySignal(SIGKILL), "");
        };
        commands["end"] = [this](const std::string& printed) {
            EXPECT_EXIT((port.open(), desk.endProgram(7)), testing::ExitedWithCode(7), printed);
        };
        commands["sh"] = [this](const std::string& command) { add(outputOf("cd " + folder + " && " + command)); };
        commands["lines"] = [this](const std::string&) { add(driver.raised); };
        commands["refuse"] = [](const std::string& number) { driver.openError = std::stoi(number); };
        // the cause of the last failure, without the folder
        commands["failureText"] = [this](const std::string&) {
            const std::size_t at = failed.find(folder);
            add(at < failed.size() ? failed.substr(0, at) + failed.substr(at + folder.size()) : failed);
        };
        commands["exclusive"] = [this](const std::string&) { add(driver.exclusive ? "exclusive" : "shared"); };
        // the result of a request for low latency, and whether it is set already
        commands["driver"] = [](const std::string& text) {
            driver = {.present = true, .answer = std::stoi(text), .flags = text.ends_with("low") ? low : 0};
        };
        commands["latency"] = [this](const std::string&) {
            add(driver.flags == low ? "low" : std::to_string(driver.flags));
        };
    }
    ~SystemFixture() override { driver = {}; }

    static double processorTime() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; } // seconds

    const std::string unit = folder + "unit"; // the device
};
