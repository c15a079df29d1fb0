// The serial port of the simulated host: a DevicePort on simulated devices, with a gate before each operation.
#pragma once

#include "platform/devicePort.h"
#include "platform/simulated/operationGate.h"
#include "platform/simulated/simulatedDevice.h"

namespace platform {

class SimulatedPort : public DevicePort {
  public:
    explicit SimulatedPort(VirtualClock& clock) : SimulatedPort(clock, new SimulatedDevice(clock)) {}

    ComPort& comPort(int number) { return device_.comPorts()[SimulatedDevice::path(number)]; } // creates a missing one
    void removeComPort(int number) { device_.comPorts().erase(SimulatedDevice::path(number)); }
    OperationGate& operations() { return operations_; }

    // Number of bytes in the device that the port has not read.
    std::size_t waiting() const { return device_.waiting(); }
    // For observers: called with the bytes of each read of the program.
    std::function<void(std::span<const std::uint8_t>)> bytesTaken;

    void choosePort(std::int16_t number) override;
    void setSettings(const std::string& settings) override;
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

    // Used by the host. Runs everything on the line that is due.
    void advance() { device_.advance(); }
    // Time of the next event on the line; `never` without one.
    Micros next() const { return device_.next(); }

  private:
    SimulatedPort(VirtualClock& clock, SimulatedDevice* device); // takes ownership of the device
    void pass(Operation operation);

    VirtualClock& clock_;
    SimulatedDevice& device_;
    OperationGate operations_;
};

} // namespace platform
