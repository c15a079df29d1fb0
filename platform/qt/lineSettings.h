// How a serial line runs, and the text that says so.
#pragma once

#include <QSerialPort>

#include <string>

namespace platform {

struct LineSettings {
    qint32 speed = 38400;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
};

// Reads a text such as "38400,n,8,1": bits per second, parity (n, e, o, m, s), data bits, stop bits. Fails with
// failureNumber::invalidProperty for any other.
LineSettings parseLineSettings(const std::string& text);

} // namespace platform
