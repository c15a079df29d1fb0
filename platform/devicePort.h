// The serial port of the program, on a line device of any system. It holds the buffers and the read limit, and notices
// when the device has been pulled out.
#pragma once

#include "base/failure.h"
#include "platform/lineDevice.h"
#include "platform/serialPort.h"

#include <functional>
#include <memory>
#include <optional>

namespace platform {

// A device that fails once is lost until close() or reopenIfLost(), even if it is plugged in again meanwhile. The bytes
// received before the loss can still be read. All other uses of the port raise portLost.
class DevicePort : public SerialPort {
  public:
    // Returns the path of the device of a COM port; empty: there is none.
    using FindDevice = std::function<std::string(int number)>;

    DevicePort(std::unique_ptr<LineDevice> device, FindDevice findDevice);

    void choosePort(std::int16_t number) override { chosen_ = number; }
    bool isOpen() const override { return open_; }
    void setSettings(const std::string& settings) override { settings_ = parseLineSettings(settings); }
    void open() override;
    void close() override;
    void reopenIfLost() override;
    void setBufferSizes(int input, int output) override;
    std::int16_t countReceived() override;
    void clearReceived() override;
    void clearUnsent() override;
    void setReadLimit(int bytes) override;
    Bytes read() override;
    void write(std::span<const std::uint8_t> bytes) override;

    // Sleeps until there is input or the clock has reached `until`; true when there is input. Input is received bytes or
    // the loss of the device. After it has been reported, a wait ignores it until the program uses the port or more bytes
    // arrive; otherwise the waits of a program that does not read would return at once, each time.
    bool waitForInput(Micros until);
    // Checks the device without waiting, for a host whose clock does not run by itself; true when there is input.
    bool pollInput();
    // Checks the device and reports nothing; closes a device that is gone.
    void checkDevice() { fetch(); }

    // Why the last open failed; empty: it did not.
    const std::optional<Failure>& openFailure() const { return openFailure_; }

    // Restores the device settings that open() has changed, before the process stops.
    void releaseDevice();

  private:
    std::string name() const;
    void use();
    void lose(const std::string& cause);
    [[noreturn]] void raiseLost();
    std::size_t fetch();
    void send();
    bool reportInput();
    template <class Action>
    void onDevice(Action action);

    std::unique_ptr<LineDevice> device_;
    FindDevice findDevice_;
    std::int16_t chosen_ = 1; // for the next open
    LineSettings settings_;
    std::int16_t number_ = 1; // of the port opened last, like the next two
    std::string path_;
    LineSettings openSettings_;
    bool open_ = false;
    bool lost_ = false;
    std::optional<Failure> openFailure_;
    std::string lostCause_;
    Bytes received_;
    Bytes unsent_;
    std::size_t inputSize_ = 1024;
    std::size_t readLimit_ = 0;
    bool reportDue_ = true; // input has not been reported since the last use of the port
};

} // namespace platform
