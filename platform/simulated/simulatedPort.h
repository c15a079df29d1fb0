// The serial ports of the simulated desktop.
#pragma once

#include "platform/serialPort.h"
#include "platform/simulated/operationGate.h"
#include "platform/simulated/simulatedLine.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace platform {

// A COM port of the machine. A number without one is missing.
struct Socket {
    enum class State { free, held, forbidden, refusesSettings, broken };
    State state = State::free;
    SimulatedLine* line = nullptr; // nothing is connected without one
    Micros pulledAt = never;       // the adapter goes away at this moment
    Micros backAt = never;         // and is there again from this one on, for a new open
};

class SimulatedPort : public SerialPort {
  public:
    explicit SimulatedPort(VirtualClock& clock) : clock_(clock), operations_(clock) {}

    Socket& socket(int number) { return sockets_[number]; } // makes a missing one
    void removeSocket(int number) { sockets_.erase(number); }
    OperationGate& operations() { return operations_; }
    const std::string& settings() const { return settings_; }

    // Called with what each read of the program takes, for those who watch.
    std::function<void(std::span<const std::uint8_t>)> bytesTaken;

    void choosePort(std::int16_t number) override;
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

    // The desktop's side.
    // Lets all happen on the line that is due.
    void advance();
    // The next moment at which something happens on the line, never without one.
    Micros next() const;
    // Bytes are waiting, or the device has gone away.
    bool ready() const { return lost() || received_.size() > readFrom_; }
    // The device of the open port has gone away.
    bool lost() const;
    // True once for each time that bytes have come, or the device has gone, since the last look at the port.
    bool takeNews() { return std::exchange(news_, false); }

  private:
    Socket* found();
    void use(Operation operation); // counts the operation; fails when the port is not open or gone
    std::size_t waiting() const { return received_.size() - readFrom_; }
    [[noreturn]] void fail(int number, const std::string& cause) const;

    VirtualClock& clock_;
    OperationGate operations_;
    std::map<int, Socket> sockets_;
    std::int16_t chosen_ = 1;
    std::string settings_;
    bool open_ = false;
    Socket* present_ = nullptr; // of the open port
    Micros openedAt_ = 0;
    bool lossSeen_ = false;
    int readLimit_ = 0;
    Bytes received_;
    std::size_t readFrom_ = 0; // what lies before has been read
    bool news_ = false;
};

} // namespace platform
