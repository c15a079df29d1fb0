// A serial line as a Windows communications device. Its calls are overlapped: the system serialises other calls, so a
// write would wait for a pending read.
#include "base/bytes.h"
#include "base/failure.h"
#include "platform/clock.h"
#include "platform/system.h"
#include "platform/windows/commErrors.h"
#include "platform/windows/systemText.h"

#include <algorithm>
#include <array>
#include <utility>
#include <windows.h>

namespace platform {

namespace {

[[noreturn]] void raiseLost(DWORD systemError) {
    const std::string cause = causeText(systemError);
    throw Failure(failureNumber::portLost, isGone(systemError) ? deviceGone + (" (" + cause + ")") : cause);
}

[[noreturn]] void raiseOpenFailure(DWORD systemError) {
    const int number = openFailureNumber(systemError);
    throw Failure(number, number == failureNumber::portHeld ? "in use by another program" : causeText(systemError));
}

// Rounded up.
DWORD millisecondsUntil(Micros until) {
    constexpr Micros longest = 24 * 3600 * Micros{1000};
    return static_cast<DWORD>(std::clamp<Micros>((until - clockMicros() + 999) / 1000, 0, longest));
}

DCB lineOf(const LineSettings& settings) {
    constexpr std::string_view parities = "noems"; // index: the system's number
    DCB line{};
    line.DCBlength = sizeof line;
    line.BaudRate = static_cast<DWORD>(settings.speed);
    line.ByteSize = static_cast<BYTE>(settings.dataBits);
    line.Parity = static_cast<BYTE>(parities.find(settings.parity));
    line.StopBits = settings.stopBits == 2 ? TWOSTOPBITS : ONESTOPBIT;
    line.fBinary = TRUE;
    line.fDtrControl = DTR_CONTROL_ENABLE;
    line.fRtsControl = RTS_CONTROL_ENABLE;
    line.XonChar = 0x11; // not used, but the system refuses equal characters
    line.XoffChar = 0x13;
    return line;
}

// An overlapped read or write.
class Call {
  public:
    Call() = default;
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call() { release(); }

    // Before the first use, and after the last one.
    void prepare() {
        state_.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
        if (state_.hEvent == nullptr) {
            raiseOpenFailure(::GetLastError());
        }
    }
    void release() {
        if (state_.hEvent != nullptr) {
            ::CloseHandle(std::exchange(state_.hEvent, nullptr));
        }
    }

    HANDLE event() const { return state_.hEvent; }
    bool pending() const { return pending_; }

    // Takes the result of ReadFile or WriteFile.
    void started(BOOL done) {
        const DWORD error = done ? ERROR_SUCCESS : ::GetLastError();
        if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) {
            raiseLost(error);
        }
        pending_ = true;
    }
    OVERLAPPED* state() { return &state_; }

    // Waits until the call is complete and returns the number of bytes transferred.
    DWORD complete(HANDLE device) {
        DWORD count = 0;
        pending_ = false;
        if (!::GetOverlappedResult(device, &state_, &count, TRUE)) {
            raiseLost(::GetLastError());
        }
        return count;
    }

    // Cancels the call and returns the number of bytes transferred before.
    DWORD cancel(HANDLE device) {
        DWORD count = 0;
        pending_ = false;
        ::CancelIoEx(device, &state_); // fails if the call is already complete
        if (!::GetOverlappedResult(device, &state_, &count, TRUE) && ::GetLastError() != ERROR_OPERATION_ABORTED) {
            raiseLost(::GetLastError());
        }
        return count;
    }

  private:
    OVERLAPPED state_{};
    bool pending_ = false;
};

class CommDevice : public LineDevice {
  public:
    ~CommDevice() override { close(); }

    void open(const std::string& device, const LineSettings& settings) override {
        const std::string path = device.starts_with(R"(\\)") ? device : R"(\\.\)" + device;
        handle_ = ::CreateFileW(toWide(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OVERLAPPED, nullptr);
        if (handle_ == INVALID_HANDLE_VALUE) {
            raiseOpenFailure(::GetLastError());
        }
        try {
            reading_.prepare();
            writing_.prepare();
            setUp(settings);
        } catch (...) {
            close();
            throw;
        }
    }

    void close() override {
        if (handle_ == INVALID_HANDLE_VALUE) {
            return;
        }
        ::PurgeComm(handle_, PURGE_TXABORT | PURGE_TXCLEAR); // a stalled adapter must not delay the close
        try {
            cancelWrite();
        } catch (const Failure&) { // the device is gone
        }
        ::CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
        received_ = false;
        reading_.release();
        writing_.release();
    }

    std::size_t read(std::span<std::uint8_t> bytes) override {
        std::size_t count = 0;
        if (received_ && !bytes.empty()) {
            bytes[count++] = byte_;
            received_ = false;
        }
        const DWORD more = std::min<DWORD>(inputQueueLength(), static_cast<DWORD>(bytes.size() - count));
        if (more > 0) {
            reading_.started(::ReadFile(handle_, bytes.data() + count, more, nullptr, reading_.state()));
            count += reading_.complete(handle_);
        }
        return count;
    }

    // One write is pending at a time. The system reads its bytes from unsent_ until it is complete.
    std::size_t write(std::span<const std::uint8_t> bytes) override {
        if (writing_.pending() && !writeComplete()) {
            return 0;
        }
        if (!bytes.empty()) {
            unsent_.assign(bytes.begin(), bytes.end());
            writing_.started(
                ::WriteFile(handle_, unsent_.data(), static_cast<DWORD>(unsent_.size()), nullptr, writing_.state()));
        }
        return bytes.size();
    }

    void clearReceived() override {
        received_ = false;
        check(::PurgeComm(handle_, PURGE_RXCLEAR));
    }

    void clearUnsent() override {
        cancelWrite();
        check(::PurgeComm(handle_, PURGE_TXCLEAR));
    }

    // Waits for an overlapped read of one byte, because not every driver reports received bytes by an event.
    void wait(Micros until, bool forRoom) override {
        if (received_ || (forRoom && !writing_.pending())) {
            return;
        }
        reading_.started(::ReadFile(handle_, &byte_, 1, nullptr, reading_.state()));
        const std::array events{reading_.event(), writing_.event()};
        const DWORD signalled =
            ::WaitForMultipleObjects(forRoom ? 2 : 1, events.data(), FALSE, millisecondsUntil(until));
        if (signalled == WAIT_OBJECT_0) {
            received_ = reading_.complete(handle_) > 0;
            if (!received_) { // the far end is closed
                raiseLost(ERROR_BROKEN_PIPE);
            }
        } else {
            received_ = reading_.cancel(handle_) > 0;
        }
    }

  private:
    void setUp(const LineSettings& settings) const {
        DCB line{};
        line.DCBlength = sizeof line;
        const bool device = ::GetFileType(handle_) == FILE_TYPE_CHAR;
        if (!device || !::GetCommState(handle_, &line)) {
            const DWORD error = ::GetLastError();
            if (device && isGone(error)) { // a port without hardware can be opened
                throw Failure(failureNumber::portMissing, "no working device behind it (" + causeText(error) + ")");
            }
            throw Failure(failureNumber::portRefused, "not a serial port");
        }
        setLine(lineOf(settings));
        COMMTIMEOUTS none{};
        if (!::SetCommTimeouts(handle_, &none)) {
            throw Failure(failureNumber::portRefused, causeText(::GetLastError()));
        }
    }

    void setLine(DCB line) const {
        if (!::SetCommState(handle_, &line)) { // perhaps there is no DTR and RTS
            line.fDtrControl = DTR_CONTROL_DISABLE;
            line.fRtsControl = RTS_CONTROL_DISABLE;
            if (!::SetCommState(handle_, &line)) {
                throw Failure(failureNumber::portRefused, "it refuses the settings of the line");
            }
        }
        DCB actual{};
        actual.DCBlength = sizeof actual;
        if (!::GetCommState(handle_, &actual) || actual.BaudRate != line.BaudRate || actual.ByteSize != line.ByteSize ||
            actual.Parity != line.Parity || actual.StopBits != line.StopBits) {
            throw Failure(failureNumber::portRefused, "it refuses the settings of the line");
        }
    }

    // In bytes. The call also clears a line error, which would stop reads and writes.
    DWORD inputQueueLength() const {
        COMSTAT status{};
        DWORD errors = 0;
        check(::ClearCommError(handle_, &errors, &status));
        return status.cbInQue;
    }

    // Of the pending write.
    bool writeComplete() {
        if (::WaitForSingleObject(writing_.event(), 0) != WAIT_OBJECT_0) {
            return false;
        }
        if (writing_.complete(handle_) != unsent_.size()) {
            raiseLost(ERROR_WRITE_FAULT);
        }
        return true;
    }

    void cancelWrite() {
        if (writing_.pending()) {
            writing_.cancel(handle_);
        }
    }

    // Takes the result of a system call.
    static void check(bool good) {
        if (!good) {
            raiseLost(::GetLastError());
        }
    }

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    Call reading_;
    Call writing_;
    Bytes unsent_; // the bytes of the pending write
    std::uint8_t byte_ = 0;
    bool received_ = false; // byte_ is a received byte that has not been read
};

} // namespace

std::unique_ptr<LineDevice> makeLineDevice() {
    return std::make_unique<CommDevice>();
}

std::string defaultDevice(int number) {
    return "COM" + std::to_string(number);
}

} // namespace platform
