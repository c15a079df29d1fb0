// The serial port, on Qt Serial Port, which opens the device and sets the line. The bytes go between program and system
// without a detour: what the toolkit does around each read and write costs more than these. It reads for itself where
// its event loop runs, in a message box or a dialog.
// A device that has gone away is noticed at the next use and raised as failureNumber::portLost, once the bytes that
// came before have been read; it stays lost until close().
#pragma once

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/qt/lineSettings.h"
#include "platform/serialPort.h"

#include <QSocketNotifier>

#include <memory>
#include <string>

namespace platform {

class QtSerialPort : public SerialPort {
  public:
    // Setting.INI at `iniPath` may name the devices of COM ports.
    QtSerialPort(Files& files, std::string iniPath);

    void choosePort(std::int16_t number) override { number_ = number; }
    bool isOpen() const override { return open_; }
    void setSettings(const std::string& settings) override;
    void open() override;
    void close() override;
    void setBufferSizes(int input, int output) override;
    std::int16_t countReceived() override;
    void clearReceived() override;
    void clearUnsent() override;
    void setReadLimit(int bytes) override;
    Bytes read() override;
    void write(std::span<const std::uint8_t> bytes) override;

    // Sleeps in the kernel until there is news, received bytes or a failure, or the clock has reached `until`; says
    // whether there is. News is told once: again only after the port has been used or more bytes have come, so that a
    // wait does not turn into a busy loop where nobody fetches them.
    bool waitForNews(Micros until);

    // What is left to do before the process stops at once.
    void leaveLockFree();

  private:
    std::string name() const;
    void checkDevice() const;
    [[noreturn]] void raiseOpenFailure(int systemError);
    void setUpLine();
    void askForLowLatency();
    void watchForRoom();
    void closeDevice();
    void use();
    void fetch();
    void fetch(short ready);
    bool tellNews();
    void send();
    void store(std::span<const char> bytes);
    void noticeError(QSerialPort::SerialPortError error);
    void lose(const std::string& cause);
    [[noreturn]] void raiseLost() const;

    Files& files_;
    std::string iniPath_;
    QSerialPort port_;
    std::int16_t number_ = 1;
    std::string device_;
    LineSettings settings_;
    bool open_ = false;
    bool lost_ = false;
    std::string lostCause_;
    Bytes received_;
    Bytes unsent_;
    std::unique_ptr<QSocketNotifier> writable_; // from the first open on; enabled while bytes are unsent
    std::size_t inputSize_ = 1024;
    std::size_t readLimit_ = 0;
    bool newsDue_ = true; // news has not been told since the port was used last
};

} // namespace platform
