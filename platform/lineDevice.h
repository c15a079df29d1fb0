// A serial line as a system gives it. Its owner opens it before any other call, and closes it after a failure.
#pragma once

#include "base/time.h"
#include "platform/lineSettings.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace platform {

// The cause of a failure, whatever the system says of a device that has been pulled out.
constexpr const char* deviceGone = "the device has gone away";

// The description of each failure is its cause alone. A failure on an open device has the number portLost.
class LineDevice {
  public:
    LineDevice() = default;
    LineDevice(const LineDevice&) = delete;
    LineDevice& operator=(const LineDevice&) = delete;
    virtual ~LineDevice() = default;

    // Opens the device for this program alone: raw bytes, no flow control, DTR and RTS on where it has them, its
    // driver set to low latency where it can be. Fails with portMissing for a device that does not exist or has no
    // hardware behind it, with portHeld, portForbidden or portRefused otherwise; then it is not open.
    virtual void open(const std::string& device, const LineSettings& settings) = 0;

    // Puts the driver's latency back. Never fails.
    virtual void close() = 0;

    // Takes what has been received, up to the size of `bytes`, and gives how many; 0 when nothing waits.
    virtual std::size_t read(std::span<std::uint8_t> bytes) = 0;

    // Hands bytes to the system, as many as it takes without waiting, and gives how many.
    virtual std::size_t write(std::span<const std::uint8_t> bytes) = 0;

    // Drop what the system holds: bytes received, bytes to be sent.
    virtual void clearReceived() = 0;
    virtual void clearUnsent() = 0;

    // Sleeps in the kernel until bytes wait, the device has failed, it takes bytes again (only with `forRoom`), or the
    // clock (platform/clock.h) has reached `until`.
    virtual void wait(Micros until, bool forRoom) = 0;
};

} // namespace platform
