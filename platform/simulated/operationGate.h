// Counts the operations of the simulated port or disk and makes them fail.
#pragma once

#include "base/failure.h"
#include "platform/operation.h"
#include "platform/simulated/virtualClock.h"

#include <array>
#include <functional>
#include <vector>

namespace platform {

// An operation that is about to run. Both counts begin at 1.
struct OperationCall {
    Operation operation;
    std::int64_t occurrence; // count of this operation
    std::int64_t number;     // count of all operations of the gate
    Micros at;
};

// Called before an operation has any effect. A Failure that it throws becomes the failure of the operation.
using OperationHook = std::function<void(const OperationCall&)>;

class OperationGate {
  public:
    explicit OperationGate(const VirtualClock& clock) : clock_(clock) {}

    void pass(Operation operation);

    void add(OperationHook hook) { hooks_.push_back(std::move(hook)); }
    void removeHooks() { hooks_.clear(); }

    // Number of all operations so far and of one operation; of those that a hook has made fail.
    std::int64_t passed() const { return passed_; }
    std::int64_t passed(Operation operation) const { return counts_[static_cast<std::size_t>(operation)]; }
    std::int64_t failed() const { return failed_; }
    std::int64_t failed(Operation operation) const { return failures_[static_cast<std::size_t>(operation)]; }

  private:
    const VirtualClock& clock_;
    std::vector<OperationHook> hooks_;
    std::array<std::int64_t, operationCount> counts_{};
    std::array<std::int64_t, operationCount> failures_{};
    std::int64_t passed_ = 0;
    std::int64_t failed_ = 0;
};

enum class Persistence { once, permanent };

// The nth call of one operation, or the nth of all, fails; with `permanent` all later ones fail too.
OperationHook failNth(Operation operation, std::int64_t n, Persistence persistence, const Failure& failure);
OperationHook failNthOfAll(std::int64_t n, Persistence persistence, const Failure& failure);

} // namespace platform
