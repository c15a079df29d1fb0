#include "platform/simulated/operationGate.h"

namespace platform {

namespace {

bool hit(std::int64_t count, std::int64_t n, Lasting lasting) {
    return count == n || (lasting == Lasting::forGood && count > n);
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
        throw;
    }
}

OperationHook failNth(Operation operation, std::int64_t n, Lasting lasting, const Failure& failure) {
    return [=](const OperationCall& call) {
        if (call.operation == operation && hit(call.occurrence, n, lasting)) {
            throw failure;
        }
    };
}

OperationHook failNthOfAll(std::int64_t n, Lasting lasting, const Failure& failure) {
    return [=](const OperationCall& call) {
        if (hit(call.number, n, lasting)) {
            throw failure;
        }
    };
}

} // namespace platform
