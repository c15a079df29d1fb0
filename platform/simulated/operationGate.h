// Where the operations of the simulated port and disk are counted and made to fail.
#pragma once

#include "base/failure.h"
#include "platform/simulated/virtualClock.h"

#include <array>
#include <functional>
#include <vector>

namespace platform {

enum class Operation {
    choosePort,
    setSettings,
    openPort,
    closePort,
    setBufferSizes,
    countReceived,
    clearReceived,
    clearUnsent,
    setReadLimit,
    readPort,
    writePort,
    fileExists,
    fileLength,
    openFile,
    readFile,
    writeFile,
    closeFile,
    readWholeFile,
    appendLine,
};
constexpr std::size_t operationCount = static_cast<std::size_t>(Operation::appendLine) + 1;

// An operation about to be carried out. Both counts begin at 1.
struct OperationCall {
    Operation operation;
    std::int64_t occurrence; // among those of its kind
    std::int64_t number;     // among all that passed the same gate
    Micros at;
};

// Called before an operation has any effect; a Failure that it throws is the operation's own.
using OperationHook = std::function<void(const OperationCall&)>;

class OperationGate {
  public:
    explicit OperationGate(const VirtualClock& clock) : clock_(clock) {}

    void pass(Operation operation);

    void add(OperationHook hook) { hooks_.push_back(std::move(hook)); }
    void removeHooks() { hooks_.clear(); }

    // All operations so far, those of a kind, and those that a hook has made fail.
    std::int64_t passed() const { return passed_; }
    std::int64_t passed(Operation operation) const { return counts_[static_cast<std::size_t>(operation)]; }
    std::int64_t failed() const { return failed_; }

  private:
    const VirtualClock& clock_;
    std::vector<OperationHook> hooks_;
    std::array<std::int64_t, operationCount> counts_{};
    std::int64_t passed_ = 0;
    std::int64_t failed_ = 0;
};

enum class Lasting { once, forGood };

// The usual faults: the nth operation of a kind, or the nth of all, fails, and with forGood all after it.
OperationHook failNth(Operation operation, std::int64_t n, Lasting lasting, const Failure& failure);
OperationHook failNthOfAll(std::int64_t n, Lasting lasting, const Failure& failure);

} // namespace platform
