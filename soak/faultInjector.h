// Brings the faults of a plan over a world: onto the line, the unit, the port, the disk and the operator.
#pragma once

#include "platform/simulated/world.h"
#include "soak/faults.h"
#include "soak/log.h"
#include "soak/monitor.h"
#include "soak/random.h"

#include <vector>

namespace soak {

using FaultCounts = std::array<std::int64_t, faultKindCount>;

class FaultInjector {
  public:
    FaultInjector(platform::World& world, Monitor& monitor, Log& log, const std::vector<Fault>& faults);
    FaultInjector(const FaultInjector&) = delete;
    FaultInjector& operator=(const FaultInjector&) = delete;

    // Does what is to be found at the start.
    void prepareStart();

    // The next job of the plan begins; a message of it begins.
    void beginJob();
    void beginMessage();

    // The line's hook.
    void pass(platform::Passage& passage);

    // The operator answers a box or a file dialog: true when a fault has made up his mind to cancel.
    bool takeCancel() { return std::exchange(cancelNext_, false); }

    // What the operator does out of turn: closes something, or anything else.
    std::function<void(bool close)> act;

    // No fault from here on. Gives the moment at which all that is still under way will have come to its end.
    Micros stop();

    const FaultCounts& counts() const { return counts_; }

  private:
    struct Running {
        Fault fault;
        Random random;
        bool on = false;
        bool spent = false; // a fault of one message falls on one passage only
    };

    void count(const Fault& fault);
    void settleLater(Micros moment) { settled_ = std::max(settled_, moment); }
    void switchOn(Running& running);
    void switchOff(const Running& running);
    void wakeUnit();
    void stirOperator(Running& running, std::int64_t deeds);
    void hitUnit(Running& running);
    void hitPort(Running& running, platform::Lasting lasting);
    void hitDisk(Running& running, platform::Lasting lasting);
    void pullAdapter(Running& running, bool back);
    void answerEarly(Running& running);
    void floodLine(Running& running);
    void sendRestWhole();
    void alter(Running& running, platform::Passage& passage);

    platform::World& world_;
    Monitor& monitor_;
    Log& log_;
    std::vector<Running> faults_;
    FaultCounts counts_{};
    int job_ = -1;
    int message_ = 0;
    bool cancelNext_ = false;
    Micros settled_ = 0;
};

} // namespace soak
