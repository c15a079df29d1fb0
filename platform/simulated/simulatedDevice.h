// The serial lines of the simulated host.
#pragma once

#include "platform/lineDevice.h"
#include "platform/simulated/simulatedLine.h"

#include <map>

namespace platform {

// A COM port of the machine. Only the ports in SimulatedDevice::comPorts() exist.
struct ComPort {
    enum class State { free, held, forbidden, refusesSettings, broken };
    State state = State::free;
    SimulatedLine* line = nullptr; // nullptr: nothing is connected
    Micros pulledAt = never;       // the adapter is pulled out at this time
    Micros backAt = never;         // from this time on it can be opened again
};

class SimulatedDevice : public LineDevice {
  public:
    explicit SimulatedDevice(VirtualClock& clock) : clock_(clock) {}

    // Path of the device of a COM port.
    static std::string path(int number) { return "/dev/simulated" + std::to_string(number); }

    std::map<std::string, ComPort>& comPorts() { return comPorts_; } // by path

    void open(const std::string& device, const LineSettings& settings) override;
    void close() override;
    std::size_t read(std::span<std::uint8_t> bytes) override;
    std::size_t write(std::span<const std::uint8_t> bytes) override;
    void clearReceived() override;
    void clearUnsent() override;
    void wait(Micros /*until*/, bool /*forRoom*/) override {} // the host moves the clock

    // Number of bytes that have arrived and were not read.
    std::size_t waiting() const { return received_.size(); }
    // Runs everything on the line that is due.
    void advance();
    // Time of the next event of line or device; `never` without one.
    Micros next() const;

  private:
    bool pulled() const;
    void requirePresent() const;

    VirtualClock& clock_;
    std::map<std::string, ComPort> comPorts_;
    ComPort* openPort_ = nullptr; // nullptr: closed
    Micros openedAt_ = 0;
    Bytes received_;
};

} // namespace platform
