// The interface to the serial port. Every operation may throw a Failure that names the device and the cause, also when
// the port is not open.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <span>
#include <string>

namespace platform {

class SerialPort {
  public:
    SerialPort() = default;
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;
    virtual ~SerialPort() = default;

    // Chooses the COM port for the next open: a number from 1 on.
    virtual void choosePort(std::int16_t number) = 0;

    // True from open() to close(), also when the device is gone.
    virtual bool isOpen() const = 0;

    // Sets speed, parity, data bits and stop bits for the next open: a text of the form 38400,n,8,1.
    virtual void setSettings(const std::string& settings) = 0;

    // Opens the chosen port. Fails with failureNumber::portMissing for a port that does not exist or has no hardware,
    // with another number for any other reason. After a failure the port is not open.
    virtual void open() = 0;

    virtual void close() = 0;

    // Opens the device again, with the settings of the last open, if it is gone; received bytes are then lost. Does
    // nothing if the device is there or the port is not open. If the device cannot be opened, it stays gone.
    virtual void reopenIfLost() = 0;

    // Sizes of the receive and the transmit queue in bytes.
    virtual void setBufferSizes(int input, int output) = 0;

    // Number of received bytes waiting to be read. Never blocks.
    virtual std::int16_t countReceived() = 0;

    // Discards all received bytes, also those that the system still holds.
    virtual void clearReceived() = 0;

    // Discards all bytes not yet transmitted.
    virtual void clearUnsent() = 0;

    // Maximum number of bytes that one read takes; 0: all that are waiting. Stays set over close and open.
    virtual void setReadLimit(int bytes) = 0;

    // Takes the bytes waiting, up to the read limit, in order of arrival. Never blocks.
    virtual Bytes read() = 0;

    // Queues bytes for transmission, in order, and does not wait for the line.
    virtual void write(std::span<const std::uint8_t> bytes) = 0;
};

} // namespace platform
