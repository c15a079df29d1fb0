// A serial line of the system. Its owner opens it before any other call, and closes it after a failure.
#pragma once

#include "base/time.h"
#include "platform/lineSettings.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace platform {

// The cause of a failure when a device has been pulled out, whatever error the system reports.
constexpr const char* deviceGone = "the device has gone away";

// The description of a failure is the cause alone. A failure of an open device has the number portLost.
class LineDevice {
  public:
    LineDevice() = default;
    LineDevice(const LineDevice&) = delete;
    LineDevice& operator=(const LineDevice&) = delete;
    virtual ~LineDevice() = default;

    // Opens the device for this program alone: raw bytes, no flow control, DTR and RTS on where it has them, its
    // driver set to low latency where it can be. Fails with portMissing for a device that does not exist or has no
    // hardware, with portHeld, portForbidden or portRefused otherwise. After a failure it is not open.
    virtual void open(const std::string& device, const LineSettings& settings) = 0;

    // Restores the driver's latency. Never fails.
    virtual void close() = 0;

    // Takes received bytes, up to the size of `bytes`, and returns their number; 0 when there are none.
    virtual std::size_t read(std::span<std::uint8_t> bytes) = 0;

    // Passes as many bytes to the system as it takes without waiting; returns their number.
    virtual std::size_t write(std::span<const std::uint8_t> bytes) = 0;

    // Discard the received bytes and the unsent bytes that the system holds.
    virtual void clearReceived() = 0;
    virtual void clearUnsent() = 0;

    // Sleeps in the kernel until there are received bytes, the device has failed, there is room for a write (only with
    // `forRoom`), or the clock (platform/clock.h) has reached `until`.
    virtual void wait(Micros until, bool forRoom) = 0;
};

} // namespace platform
