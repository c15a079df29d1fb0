// The rules of a session. They are checked at each message of the program, each byte that it reads, each box and each window
// event.
#pragma once

#include "platform/simulated/world.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace story {

class Monitor {
  public:
    // `report` is called with each violation.
    Monitor(platform::World& world, std::function<void(const std::string&)> report);
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    // Marks the line as disturbed until a moment: it carries bytes that neither side has sent, or that come late.
    void disturb(Micros until) { disturbedUntil_ = std::max(disturbedUntil_, until); }
    // The operator does something, or the program starts.
    void actionBegins(const platform::Action& action);
    // The program waits for the operator, or has ended.
    void runEnded(platform::RunEnd end);
    void violation(const std::string& text);

    bool succeeded = false; // the last operation: the image is where it belongs
    std::vector<std::string> violations;
    std::map<std::string, int> counts; // of the ways in which operations end

  private:
    void transmitted(const platform::Transmission& transmission);
    void portUsed(const platform::OperationCall& call);
    void checkMessage(char letter, std::uint8_t number);
    void checkReply(char letter);
    void checkPacket(char letter, std::uint8_t number);
    bool senderMayEnd() const;
    bool quietFor(Micros time) const;
    bool progressShown() const;
    std::int64_t transferFailures() const;
    void byteRead(std::uint8_t byte);
    void boxOpened(const platform::Box& box);
    void eventRan();
    void endOperation();
    void checkSaved(bool success);
    void checkLoss();
    bool shown(const std::string& text) const;
    void checkWritten(bool equal);
    void countLineFaults();
    bool portBad() const;
    bool readClean() const;
    std::size_t boxes() const { return world_.host.boxes().size() - firstBox_; }

    platform::World& world_;
    std::function<void(const std::string&)> report_;
    platform::ComPort& comPort_ = world_.port.comPort(platform::defaultComPort);
    // The operation under way.
    std::string action_, operation_; // by their controls
    bool running_ = false, cancelled_ = false, verifying_ = false, portWasOpen_ = true;
    std::size_t firstBox_ = 0, boxesBefore_ = 0; // the latter before the last message
    std::int64_t portFailures_ = 0, fileWrites_ = 0, fileFailures_ = 0, faultsApplied_ = 0;
    Micros begun_ = 0, begunBefore_ = 0, reopenedAt_ = -1, writtenAt_ = -1; // the last two by its calls of the port
    std::string messages_;                                                  // a letter for each message
    simulator::Journal journal_;                                            // when its transfer began
    std::size_t blocks_ = 0;                                                // sent, each once
    std::uint8_t answer_ = 0;                                               // the last byte since the last packet
    bool repeated_ = false, falseAck_ = false;                              // packets; an ACK
    bool heard_ = false, accepted_ = false; // since the last message: any byte; the unit has accepted it
    std::int64_t transferFailures_ = 0;
    int failures_ = 0, cancels_ = 0, unknown_ = 0; // NAKs and time-outs of the packet, CANs, other start bytes
    Micros quietSince_ = 0;                        // the last byte of either side
    // The session.
    Micros disturbedUntil_ = -1;
    platform::Operation before_ = {}, latest_ = {}; // operations of the port
    std::size_t violationsSeen_ = 0;                // of the host
};

} // namespace story
