#include "platform/simulated/operationGate.h"

namespace platform {

namespace {

bool isDue(std::int64_t count, std::int64_t n, Persistence persistence) {
    return count == n || (persistence == Persistence::permanent && count > n);
}

} // namespace

void OperationGate::pass(Operation operation) {
    const OperationCall call{operation, ++counts_[static_cast<std::size_t>(operation)], ++passed_, clock_.now()};
    try {
        for (const OperationHook& hook : hooks_) {
            hook(call);
        }
    } catch (const Failure&) {
        ++failed_;
        ++failures_[static_cast<std::size_t>(operation)];
        throw;
    }
}

OperationHook failNth(Operation operation, std::int64_t n, Persistence persistence, const Failure& failure) {
    return [=](const OperationCall& call) {
        if (call.operation == operation && isDue(call.occurrence, n, persistence)) {
            throw failure;
        }
    };
}

OperationHook failNthOfAll(std::int64_t n, Persistence persistence, const Failure& failure) {
    return [=](const OperationCall& call) {
        if (isDue(call.number, n, persistence)) {
            throw failure;
        }
    };
}

} // namespace platform
