#include "transfer/outcome.h"

#include "base/failure.h"
#include "link/commPort.h"
#include "texts/messages.h"

#include <algorithm>
#include <array>
#include <utility>

namespace FirmComm {

bool lossShown = false;

namespace {

// The port is gone, closed, or not chosen.
constexpr std::array portFailures{failureNumber::portLost, failureNumber::portNotOpen, failureNumber::objectNotSet};

} // namespace

void beginOperation() {
    shared.outcome = Outcome::none;
    lossShown = false;
    CommonComm::subReopenPort();
}

void endWith(Outcome outcome) {
    if (shared.outcome == Outcome::none) {
        shared.outcome = outcome;
    }
}

void reportFailure() {
    if (std::ranges::find(portFailures, currentFailure().number) != portFailures.end()) {
        if (shared.outcome != Outcome::succeeded) {
            shared.outcome = Outcome::portLost;
        }
        if (std::exchange(lossShown, true)) {
            return;
        }
    }
    subReportError();
}

bool portStands() {
    try {
        CommonComm::serialPort().countReceived();
        return true;
    } catch (const std::exception&) {
        reportFailure();
        return false;
    }
}

} // namespace FirmComm
