// The line between the tool's port and a simulated unit, with the places where faults go in.
#pragma once

#include "platform/simulated/lane.h"
#include "platform/simulated/lineFaults.h"
#include "platform/simulated/wireRecord.h"
#include "simulator/unit.h"

#include <array>
#include <functional>
#include <map>
#include <vector>

namespace platform {

// Bytes at one end of the line. A hook may change them, take all of them away, add to them, and move `at` to a later
// moment; what was sent after them stays after them.
struct Passage {
    Direction direction;
    Micros at = 0;
    Bytes bytes = {};
    Writes kind = Writes::any; // frames or transfer
};
using PassageHook = std::function<void(Passage&)>;

class SimulatedLine {
  public:
    // Without a unit, what is written goes nowhere; a hook can then play the other side with `put`.
    explicit SimulatedLine(simulator::Unit* unit, LinePace pace = {}) : unit_(unit), pace_(pace) {}
    SimulatedLine(const SimulatedLine&) = delete;
    SimulatedLine& operator=(const SimulatedLine&) = delete;

    // Hooks see every write of either side before it goes onto the line, in the order in which they were added.
    void addHook(PassageHook hook) { hooks_.push_back(std::move(hook)); }
    void removeHooks() { hooks_.clear(); }

    // Faults of a direction. They strike what the hooks leave; the record has both.
    std::vector<LineFault>& faults(Direction direction) { return faults_[static_cast<std::size_t>(direction)]; }
    // All that the faults draw follows from the seed.
    void setSeed(std::uint64_t seed) { random_ = Random(seed); }

    // Puts bytes onto the line that neither side has sent. Hooks and faults do not see them.
    void put(Direction direction, Bytes bytes, Micros at);

    // Lets something happen at a moment, whatever the program does then: a restart of the unit, a flood of noise.
    void at(Micros moment, std::function<void()> happening) { happenings_.emplace(moment, std::move(happening)); }

    WireRecord& record() { return record_; }
    void setPace(LinePace pace) { pace_ = pace; }

    // The port's side.
    void write(std::span<const std::uint8_t> bytes, Micros now);
    void dropUnsent(Micros now) { toUnit_.dropUnsent(now); }
    void dropAll();
    // Does all that happens on the line up to `now` and moves the bytes that reach the tool to the end of `received`.
    // True when anything happened.
    bool advance(Micros now, Bytes& received);
    // The next moment at which `advance` has something to do.
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
    std::vector<PassageHook> hooks_;
    std::array<std::vector<LineFault>, 2> faults_;
    Random random_;
    int frameParts_ = 0; // that the tool has yet to write
    Micros frameAt_ = 0; // when it began to
    std::multimap<Micros, std::function<void()>> happenings_;
    WireRecord record_;
};

} // namespace platform
