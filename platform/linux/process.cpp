// The instance lock, the sleep lock, the folder of the program, and the end of the process.
#include "base/version.h"
#include "platform/system.h"

#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/file.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

std::string instanceLockPath() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && *folder != '\0'
               ? std::string(folder) + '/' + program::name + ".lock"
               : "/tmp/" + std::string(program::name) + '-' + std::to_string(::getuid()) + ".lock";
}

// systemd-inhibit holds its lock while its command runs, and "cat" runs until its input ends: until the write end of the
// pipe is closed, at the latest at the end of this process. A remote session gets only the second lock. The child has no
// terminal, so nothing can ask for a password.
constexpr const char* inhibitCommand =
    "exec 2>/dev/null; lock() { systemd-inhibit --what=$1 --who=TarnBeacon --mode=block "
    "--why='Firmware is moving between the computer and the unit' cat; }; "
    "lock shutdown:sleep:idle:handle-lid-switch || lock idle";

class SleepLock {
  public:
    void acquire() {
        if (input_ >= 0) {
            return;
        }
        reap();
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) < 0) {
            return;
        }
        input_ = ends[1];
        start(ends[0]);
        ::close(ends[0]);
    }

    void release() {
        if (input_ >= 0) {
            ::close(input_);
            input_ = -1;
        }
        reap();
    }

  private:
    void start(int output) {
        posix_spawn_file_actions_t files;
        posix_spawnattr_t attributes;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_adddup2(&files, output, STDIN_FILENO);
        ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID); // a new session, without a terminal
        std::string texts[] = {"sh", "-c", inhibitCommand};
        char* arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), nullptr};
        if (::posix_spawn(&child_, "/bin/sh", &files, &attributes, arguments, environ) != 0) {
            child_ = -1;
        }
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&files);
    }

    // Does not wait: the child ends soon after its input.
    void reap() {
        if (child_ > 0 && ::waitpid(child_, nullptr, WNOHANG) == child_) {
            child_ = -1;
        }
    }

    int input_ = -1;
    pid_t child_ = -1;
};

SleepLock sleepLock;

constexpr std::array endSignals{SIGTERM, SIGHUP, SIGINT};
volatile std::sig_atomic_t endSignal = 0; // that has come

// The next signal of any kind has its usual effect.
void noteEndSignal(int signal) {
    endSignal = signal;
    for (const int other : endSignals) {
        std::signal(other, SIG_DFL);
    }
}

} // namespace

bool takeInstanceLock() {
    static int file = -1; // stays open until the process ends
    if (file < 0) {
        file = ::open(instanceLockPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    }
    // If the lock file cannot be created, the program starts without a lock.
    return file < 0 || ::flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void keepAwake(bool on) {
    on ? sleepLock.acquire() : sleepLock.release();
}

void holdTermination(bool on) {
    for (const int signal : endSignals) {
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) { // as for a program that nohup has started
            std::signal(signal, on && endSignal == 0 ? noteEndSignal : SIG_DFL);
        }
    }
    if (!on && endSignal != 0) {
        std::raise(endSignal);
    }
}

bool terminationRequested() {
    return endSignal != 0;
}

void allowSlowWindows() {} // the window managers ask the operator

bool beginsSystemLoop(const void* /*message*/) {
    return false;
}

void setEnglishErrors() {
    std::setlocale(LC_MESSAGES, "C");
}

std::string programDirectory() {
    std::error_code failed;
    return std::filesystem::read_symlink("/proc/self/exe", failed).parent_path().string() + '/';
}

std::string systemName() {
    utsname system{};
    ::uname(&system);
    return std::string(system.sysname) + ' ' + system.release + ' ' + system.machine;
}

void stopProcess(int exitCode) {
    ::_exit(exitCode);
}

} // namespace platform
