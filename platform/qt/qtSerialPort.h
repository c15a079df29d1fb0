// The serial port, on Qt Serial Port. It works without the toolkit's event loop: every operation asks the system.
// A device that has gone away is noticed at the next use and raised as failureNumber::portLost, once the bytes that
// came before have been read; it stays lost until close().
#pragma once

#include "platform/files.h"
#include "platform/qt/clock.h"
#include "platform/serialPort.h"

#include <QSerialPort>

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

    // True when received bytes or a failure wait to be fetched. Says so once: again only after the port has been
    // used or more bytes have come, so that a wait does not turn into a busy loop where nobody fetches them.
    bool hasNews();

    // Sleeps in the kernel until there is news or the clock has reached `until`.
    void waitForNews(Micros until);

    // What is left to do before the process stops at once.
    void leaveLockFree();

  private:
    struct Settings {
        qint32 speed = 38400;
        QSerialPort::Parity parity = QSerialPort::NoParity;
        QSerialPort::DataBits dataBits = QSerialPort::Data8;
        QSerialPort::StopBits stopBits = QSerialPort::OneStop;
    };

    static Settings parse(const std::string& text);

    std::string name() const;
    void checkDevice() const;
    [[noreturn]] void raiseOpenFailure(int systemError);
    void setUpLine();
    void use();
    void fetch();
    void send();
    void store();
    void noticeError(QSerialPort::SerialPortError error);
    void lose(const std::string& cause);
    [[noreturn]] void raiseLost() const;

    Files& files_;
    std::string iniPath_;
    QSerialPort port_;
    std::int16_t number_ = 1;
    std::string device_;
    Settings settings_;
    bool open_ = false;
    bool lost_ = false;
    std::string lostCause_;
    Bytes received_;
    std::size_t inputSize_ = 1024;
    std::size_t readLimit_ = 0;
    bool newsDue_ = true; // news has not been told since the port was used last
};

} // namespace platform
