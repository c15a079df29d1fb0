// The serial port of the program, on a line device of any system. It holds the buffers and the read limit, and reopens a
// device that was pulled out.
#pragma once

#include "platform/lineDevice.h"
#include "platform/serialPort.h"

#include <functional>
#include <memory>

namespace platform {

// A device that fails is lost: the bytes received before can still be read, then a use raises portLost. From then on each
// use first tries to open the same device again with the same settings; if that fails, it raises portLost again.
class DevicePort : public SerialPort {
  public:
    // Gives the path of the device of a COM port; empty: there is none.
    using FindDevice = std::function<std::string(int number)>;

    DevicePort(std::unique_ptr<LineDevice> device, FindDevice findDevice);

    void choosePort(std::int16_t number) override { chosen_ = number; }
    bool isOpen() const override { return open_; }
    void setSettings(const std::string& settings) override { settings_ = parseLineSettings(settings); }
    void open() override;
    void close() override;
    void setBufferSizes(int input, int output) override;
    std::int16_t countReceived() override;
    void clearReceived() override;
    void clearUnsent() override;
    void setReadLimit(int bytes) override;
    Bytes read() override;
    void write(std::span<const std::uint8_t> bytes) override;

    // Input is received bytes or the loss of the device. It is reported once, and again after the port has been used or
    // more bytes have arrived; otherwise a wait would be a busy loop while the program does not read.
    // Sleeps until there is input or the clock has reached `until`; true when there is input.
    bool waitForInput(Micros until);
    // Checks the device without waiting; true when there is input.
    bool pollInput();
    // Checks the device and reports nothing; closes a device that is gone.
    void checkDevice() { fetch(); }

    // Restores the device settings that open() has changed, before the process stops.
    void releaseDevice();

  private:
    std::string name() const;
    void use();
    void reopen();
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
    bool lossRaised_ = false;
    std::string lostCause_;
    Bytes received_;
    Bytes unsent_;
    std::size_t inputSize_ = 1024;
    std::size_t readLimit_ = 0;
    bool reportDue_ = true; // input has not been reported since the last use of the port
};

} // namespace platform
