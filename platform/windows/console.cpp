// Output, signals and language of a program in a console.
#include "platform/console.h"

#include "platform/windows/systemText.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <windows.h>

namespace platform {

namespace {

// A console or a pipe blocks its writer as long as its reader likes: a console does so while text in it is marked. A thread
// of its own writes one piece after the other.
class HandleOutput final : public ConsoleOutput {
  public:
    explicit HandleOutput(HANDLE handle) : handle_(handle) {
        DWORD mode = 0;
        terminal_ = ::GetConsoleMode(handle_, &mode) != FALSE;
        if (terminal_) {
            ::SetConsoleMode(handle_, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        }
        std::thread([state = state_, handle, terminal = terminal_] { writePieces(*state, handle, terminal); }).detach();
    }
    ~HandleOutput() override {
        const std::lock_guard lock(state_->mutex);
        state_->over = true;
        state_->changed.notify_all();
    }

    bool isTerminal() const override { return terminal_; }

    int columns() const override {
        constexpr int usual = 80;
        CONSOLE_SCREEN_BUFFER_INFO screen{};
        return ::GetConsoleScreenBufferInfo(handle_, &screen) ? screen.srWindow.Right - screen.srWindow.Left + 1
                                                              : usual;
    }

    // A piece counts as taken once it is written, so that the wait for the reader at the end includes it. Usually that is
    // at once, which keeps both outputs of one console in order; a stopped reader costs the short wait once.
    std::size_t write(std::string_view text) override {
        std::unique_lock lock(state_->mutex);
        if (state_->gone) {
            return text.size();
        }
        if (state_->piece.empty()) {
            state_->piece = text;
            state_->changed.notify_all();
            state_->changed.wait_for(lock, std::chrono::milliseconds(2), [this] { return isDone(); });
        }
        return std::exchange(state_->written, false) ? std::exchange(state_->piece, {}).size() : 0;
    }

    void waitForRoom(int milliseconds) override {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return isDone(); });
    }

  private:
    bool isDone() const { return state_->written || state_->gone; }

    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::string piece; // of the text that write() was given
        bool written = false;
        bool gone = false; // the reader
        bool over = false;
    };

    static void writePieces(State& state, HANDLE handle, bool terminal) {
        std::unique_lock lock(state.mutex);
        while (!state.over) {
            state.changed.wait(lock, [&] { return state.over || (!state.piece.empty() && !state.written); });
            const std::string piece = state.piece;
            lock.unlock();
            const bool taken = terminal ? writeConsole(handle, piece) : writeFile(handle, piece);
            lock.lock();
            state.written = taken;
            state.gone = !taken;
            state.over = state.over || !taken;
            state.changed.notify_all();
        }
    }

    // In UTF-16, so that no code page of the console matters and none is changed.
    static bool writeConsole(HANDLE handle, const std::string& piece) {
        const std::wstring wide = toWide(piece);
        DWORD count = 0;
        for (std::size_t at = 0; at < wide.size(); at += count) {
            if (!::WriteConsoleW(handle, wide.data() + at, static_cast<DWORD>(wide.size() - at), &count, nullptr)) {
                return false;
            }
        }
        return true;
    }

    static bool writeFile(HANDLE handle, const std::string& piece) {
        DWORD count = 0;
        for (std::size_t at = 0; at < piece.size(); at += count) {
            if (!::WriteFile(handle, piece.data() + at, static_cast<DWORD>(piece.size() - at), &count, nullptr)) {
                return false;
            }
        }
        return true;
    }

    HANDLE handle_;
    bool terminal_ = false;
    std::shared_ptr<State> state_ = std::make_shared<State>(); // the thread may outlive the object
};

std::atomic<int> received = 0;

// The system ends the process when this returns from a close of the console, a sign-out or a shutdown, and after some
// seconds anyway. Until then a transfer goes on.
BOOL WINAPI takeControl(DWORD event) {
    if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) {
        received = SIGINT;
        return TRUE;
    }
    received = SIGTERM;
    ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

std::unique_ptr<ConsoleOutput> makeConsoleOutput(ConsoleStream stream) {
    return std::make_unique<HandleOutput>(
        ::GetStdHandle(stream == ConsoleStream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE));
}

void catchSignals() {
    ::SetConsoleCtrlHandler(takeControl, TRUE);
}

int takeSignal() {
    return received.exchange(0);
}

bool userIsJapanese() {
    return PRIMARYLANGID(::GetUserDefaultUILanguage()) == LANG_JAPANESE;
}

} // namespace platform
