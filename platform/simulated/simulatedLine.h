// The line between the program's port and a simulated unit, with hooks and faults.
#pragma once

#include "platform/simulated/lane.h"
#include "platform/simulated/lineFaults.h"
#include "simulator/unit.h"

#include <array>
#include <functional>
#include <map>
#include <span>
#include <vector>

namespace platform {

enum class Direction { toUnit, fromUnit };

// A write at one end of the line. A hook may change, remove or add bytes, and move `at` to a later time; later writes stay
// after it.
struct Transmission {
    Direction direction;
    Micros at = 0;
    Bytes bytes = {};
    Writes kind = Writes::any; // frames or transfer
};
using TransmissionHook = std::function<void(Transmission&)>;

class SimulatedLine {
  public:
    // Without a unit, written bytes are lost; a hook can answer with `put`.
    explicit SimulatedLine(simulator::Unit* unit, LinePace pace = {}) : unit_(unit), pace_(pace) {}
    SimulatedLine(const SimulatedLine&) = delete;
    SimulatedLine& operator=(const SimulatedLine&) = delete;

    // Hooks are called for every write of either side before it is sent, in the order in which they were added.
    void addHook(TransmissionHook hook) { hooks_.push_back(std::move(hook)); }
    void removeHooks() { hooks_.clear(); }

    // Faults of a direction. They apply after the hooks.
    std::vector<LineFault>& faults(Direction direction) { return faults_[static_cast<std::size_t>(direction)]; }
    // Seed of the random choices of the faults.
    void setSeed(std::uint64_t seed) { random_ = Random(seed); }

    // Puts bytes onto the line that neither side has sent. Hooks and faults do not apply.
    void put(Direction direction, Bytes bytes, Micros at);

    // Schedules an event that does not depend on the program: a restart of the unit, a burst of noise.
    void at(Micros moment, std::function<void()> event) { events_.emplace(moment, std::move(event)); }

    // For observers: called with what a fault has made of a write, and with bytes that neither side has sent.
    std::function<void(const Transmission&)> changed;

    void setPace(LinePace pace) { pace_ = pace; }

    // Used by the port.
    void write(std::span<const std::uint8_t> bytes, Micros now);
    void dropUnsent(Micros now) { toUnit_.dropUnsent(now); }
    void dropAll();
    // Runs everything on the line up to `now` and appends the bytes that reach the program to `received`. True when anything
    // happened.
    bool advance(Micros now, Bytes& received);
    // Time at which `advance` has something to do next; `never` without one.
    Micros next() const;

  private:
    Lane& lane(Direction direction) { return direction == Direction::toUnit ? toUnit_ : fromUnit_; }
    void pass(Direction direction, Bytes bytes, Micros at);
    Writes kindOf(Direction direction, const Bytes& bytes, Micros at);
    Micros nextAtUnit() const;
    void step(Micros moment);

    simulator::Unit* unit_;
    LinePace pace_;
    Lane toUnit_{pace_};
    Lane fromUnit_{pace_};
    std::vector<TransmissionHook> hooks_;
    std::array<std::vector<LineFault>, 2> faults_;
    Random random_;
    int frameParts_ = 0; // parts of the present frame that the program has not written yet
    Micros frameAt_ = 0; // time of its first part
    std::multimap<Micros, std::function<void()>> events_;
};

} // namespace platform
