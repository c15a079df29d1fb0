// The serial port of the program, on a line device of any system. It holds the buffers and the read limit, and takes a
// device up again that was pulled out.
#pragma once

#include "platform/lineDevice.h"
#include "platform/serialPort.h"

#include <functional>
#include <memory>

namespace platform {

// A device that fails is lost: the bytes that came before are still read, then each use raises portLost. From then on
// each use first tries to open the same device again with the same settings, and stays lost in silence if it cannot.
class DevicePort : public SerialPort {
  public:
    // The path of the device behind a COM port; empty: there is none.
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

    // News are received bytes or a loss. They are told once, and again after the port has been used or more bytes have
    // come: a wait must not become a busy loop where nobody reads them.
    // Sleeps until there is news or the clock has reached `until`; says whether there is.
    bool waitForNews(Micros until);
    // Looks at the device without waiting.
    bool takeNews();
    // The same, and leaves the news to be told. A device that is gone is closed here.
    void look() { fetch(); }

    // Puts back what open() has changed on the device, before the process stops.
    void leaveDevice();

  private:
    std::string name() const;
    void use();
    void reopen();
    void lose(const std::string& cause);
    [[noreturn]] void raiseLost();
    std::size_t fetch();
    void send();
    bool tellNews();
    template <class Action>
    void onDevice(Action action);

    std::unique_ptr<LineDevice> device_;
    FindDevice findDevice_;
    std::int16_t chosen_ = 1; // by the next open
    LineSettings settings_;
    std::int16_t number_ = 1; // of the port opened last, as the next two
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
    bool newsDue_ = true; // not told since the port was used last
};

} // namespace platform
