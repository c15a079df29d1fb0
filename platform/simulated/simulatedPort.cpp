#include "platform/simulated/simulatedPort.h"

namespace platform {

SimulatedPort::SimulatedPort(VirtualClock& clock, SimulatedDevice* device)
    : DevicePort(std::unique_ptr<LineDevice>(device), SimulatedDevice::path), clock_(clock), device_(*device),
      operations_(clock) {}

void SimulatedPort::pass(Operation operation) {
    operations_.pass(operation);
    clock_.countPoll();
}

void SimulatedPort::choosePort(std::int16_t number) {
    pass(Operation::choosePort);
    DevicePort::choosePort(number);
}

void SimulatedPort::setSettings(const std::string& settings) {
    pass(Operation::setSettings);
    DevicePort::setSettings(settings);
}

void SimulatedPort::open() {
    pass(Operation::openPort);
    DevicePort::open();
}

void SimulatedPort::close() {
    pass(Operation::closePort);
    DevicePort::close();
}

void SimulatedPort::reopenIfLost() {
    pass(Operation::reopenPort);
    DevicePort::reopenIfLost();
}

void SimulatedPort::setBufferSizes(int input, int output) {
    pass(Operation::setBufferSizes);
    DevicePort::setBufferSizes(input, output);
}

std::int16_t SimulatedPort::countReceived() {
    pass(Operation::countReceived);
    return DevicePort::countReceived();
}

void SimulatedPort::clearReceived() {
    pass(Operation::clearReceived);
    DevicePort::clearReceived();
}

void SimulatedPort::clearUnsent() {
    pass(Operation::clearUnsent);
    DevicePort::clearUnsent();
}

void SimulatedPort::setReadLimit(int bytes) {
    operations_.pass(Operation::setReadLimit);
    DevicePort::setReadLimit(bytes);
}

Bytes SimulatedPort::read() {
    pass(Operation::readPort);
    Bytes bytes = DevicePort::read();
    if (bytesTaken && !bytes.empty()) {
        bytesTaken(bytes);
    }
    return bytes;
}

void SimulatedPort::write(std::span<const std::uint8_t> bytes) {
    pass(Operation::writePort);
    DevicePort::write(bytes);
}

} // namespace platform
