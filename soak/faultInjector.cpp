#include "soak/faultInjector.h"

#include "simulator/frame.h"
#include "soak/alterations.h"

#include <algorithm>

namespace soak {

using platform::Direction;
using platform::Lasting;
using platform::Passage;
using platform::World;
namespace failureNumber = failureNumber;

namespace {

// Pieces with a few bytes on one side of the cut are the tricky ones.
simulator::Pieces somePieces(Random& random) {
    constexpr std::array<std::size_t, 11> tricky{1, 2, 3, 4, 5, 126, 127, 128, 129, 130, 131};
    const std::size_t size = random.chance(50) ? random.pick(tricky) : static_cast<std::size_t>(random.between(1, 131));
    return {size, fromMilliseconds(random.spread(1, 4000))};
}

void removeFile(World& world, const char* name) {
    world.files.remove(world.desktop.directory + name);
}

void nameComPort(World& world, int number) {
    world.files.put(world.desktop.directory + "Setting.INI", "[IFU]\r\nCOM=" + std::to_string(number) + "\r\n");
}

} // namespace

FaultInjector::FaultInjector(World& world, Monitor& monitor, Log& log, const std::vector<Fault>& faults)
    : world_(world), monitor_(monitor), log_(log) {
    for (const Fault& fault : faults) {
        faults_.push_back({fault, Random(fault.seed)});
    }
}

void FaultInjector::count(const Fault& fault) {
    ++counts_[static_cast<std::size_t>(fault.kind)];
    if (log_.story()) {
        log_.note("fault: " + std::string(rowOf(fault.kind).name));
    }
}

// The start.

void FaultInjector::prepareStart() {
    for (Running& running : faults_) {
        if (rowOf(running.fault.kind).site != Site::start) {
            continue;
        }
        count(running.fault);
        simulator::UnitOptions& unit = world_.unit.options();
        switch (running.fault.kind) {
        case FaultKind::portMissing: nameComPort(world_, 5); break;
        case FaultKind::portHeld:
            nameComPort(world_, 4);
            world_.port.socket(4).state = platform::Socket::State::held;
            break;
        case FaultKind::portOutsideList: nameComPort(world_, 99); break;
        case FaultKind::noSettingFile: removeFile(world_, "Setting.INI"); break;
        case FaultKind::noTypeFile: removeFile(world_, "TYPE.INI"); break;
        case FaultKind::secondInstance: world_.desktop.otherInstance = true; break;
        case FaultKind::unitLate:
            unit.silentFrom = 0;
            world_.line.at(fromMilliseconds(running.random.spread(100, 30'000)), [&unit] { unit.silentFrom.reset(); });
            break;
        default: // unusual sensors
            unit.stateText = running.random.chance(50) ? "00" : "01";
            unit.sensorCount = running.random.chance(50) ? 0 : 2;
        }
    }
}

// Messages of the tool.

void FaultInjector::beginJob() {
    ++job_;
    message_ = 0;
}

void FaultInjector::beginMessage() {
    ++message_;
    for (Running& running : faults_) {
        const Fault& fault = running.fault;
        const bool on = fault.job == job_ && message_ >= fault.message && message_ - fault.message < fault.span;
        if (on != running.on) {
            running.on = on;
            on ? switchOn(running) : switchOff(running);
        }
        if (on && fault.kind == FaultKind::halvedBlocks && running.random.chance(fault.percent)) {
            world_.unit.options().sendPieces = somePieces(running.random);
        }
    }
}

void FaultInjector::switchOn(Running& running) {
    if (rowOf(running.fault.kind).site != Site::moment) {
        return;
    }
    count(running.fault);
    switch (running.fault.kind) {
    case FaultKind::earlyAnswer: answerEarly(running); break;
    case FaultKind::noiseFlood: floodLine(running); break;
    case FaultKind::portFailsOnce: hitPort(running, Lasting::once); break;
    case FaultKind::portFailsForGood: hitPort(running, Lasting::forGood); break;
    case FaultKind::adapterPulled: pullAdapter(running, false); break;
    case FaultKind::adapterBack: pullAdapter(running, true); break;
    case FaultKind::diskFailsOnce: hitDisk(running, Lasting::once); break;
    case FaultKind::diskFailsForGood: hitDisk(running, Lasting::forGood); break;
    case FaultKind::diskFull: world_.files.setRoom(static_cast<std::size_t>(running.random.below(300'000))); break;
    case FaultKind::operatorActs: stirOperator(running, running.random.spread(1, 12)); break;
    case FaultKind::operatorCloses: stirOperator(running, 1); break;
    case FaultKind::operatorCancels: cancelNext_ = true; break;
    default: hitUnit(running);
    }
}

// What the unit has left unsaid follows.
void FaultInjector::wakeUnit() {
    if (world_.unit.options().silentFrom) {
        world_.unit.options().silentFrom.reset();
        settleLater(world_.clock.now() + fromSeconds(1));
    }
}

void FaultInjector::switchOff(const Running& running) {
    simulator::UnitOptions& unit = world_.unit.options();
    switch (running.fault.kind) {
    case FaultKind::silence: wakeUnit(); break;
    case FaultKind::refusal: unit.answers.clear(); break;
    case FaultKind::piecedBlocks:
    case FaultKind::halvedBlocks: unit.sendPieces = {}; break;
    case FaultKind::slowSender: unit.sendDelay = 0; break;
    default: break;
    }
}

// What strikes at a moment.

void FaultInjector::stirOperator(Running& running, std::int64_t deeds) {
    const bool close = running.fault.kind == FaultKind::operatorCloses;
    for (Micros moment = world_.clock.now(); deeds > 0; --deeds) {
        moment += fromMilliseconds(running.random.spread(1, 10'000));
        world_.desktop.schedule(moment, [this, close] { act(close); });
    }
}

void FaultInjector::answerEarly(Running& running) {
    const Bytes answers[]{simulator::frameOf("00000030050000"), {simulator::ack}, {simulator::nak}};
    const Micros now = world_.clock.now();
    monitor_.strayBytes(now + fromSeconds(1));
    settleLater(now + fromSeconds(1)); // the answer itself
    world_.line.put(Direction::fromUnit, running.random.pick(answers), now);
}

void FaultInjector::floodLine(Running& running) {
    Micros moment = world_.clock.now();
    for (std::int64_t burst = running.random.spread(1, 30); burst > 0; --burst) {
        Bytes noise(static_cast<std::size_t>(running.random.spread(1, 400)));
        std::ranges::generate(noise, [&] { return static_cast<std::uint8_t>(running.random.below(256)); });
        moment += fromMilliseconds(running.random.spread(1, 5000));
        world_.line.put(Direction::fromUnit, std::move(noise), moment);
    }
    monitor_.strayBytes(moment + fromSeconds(1));
    settleLater(moment + fromSeconds(1));
}

void FaultInjector::hitUnit(Running& running) {
    simulator::UnitOptions& unit = world_.unit.options();
    const Micros soon = world_.clock.now() + running.random.spread(1, fromMilliseconds(100));
    const Micros later = soon + fromMilliseconds(running.random.spread(10, 30'000));
    switch (running.fault.kind) {
    case FaultKind::silence: unit.silentFrom = soon; break;
    case FaultKind::restart:
        world_.restartUnit(soon, later);
        settleLater(later + fromSeconds(1));
        break;
    case FaultKind::refusal: unit.answers = {{.answer = {.resultCode = someResultCode(running.random)}}}; break;
    case FaultKind::piecedBlocks: unit.sendPieces = somePieces(running.random); break;
    case FaultKind::halvedBlocks: break; // from block to block
    case FaultKind::slowSender: unit.sendDelay = fromMilliseconds(running.random.spread(1, 4000)); break;
    case FaultKind::hastySender: unit.answerLimit = fromMilliseconds(running.random.spread(50, 2500)); break;
    default: unit.repeatsEnd = false;
    }
}

void FaultInjector::hitPort(Running& running, Lasting lasting) {
    platform::OperationGate& gate = world_.port.operations();
    const auto fail = platform::failNthOfAll(gate.passed() + running.random.spread(1, 64), lasting,
                                             Failure(failureNumber::portLost, "COM3: the device does not answer"));
    gate.add([this, fail](const platform::OperationCall& call) {
        try {
            fail(call);
        } catch (const Failure&) {
            monitor_.portFailed();
            throw;
        }
    });
}

void FaultInjector::hitDisk(Running& running, Lasting lasting) {
    platform::OperationGate& gate = world_.files.operations();
    gate.add(platform::failNthOfAll(gate.passed() + running.random.spread(1, 16), lasting,
                                    Failure(failureNumber::fileBroken, "the disk does not answer")));
}

void FaultInjector::pullAdapter(Running& running, bool back) {
    platform::Socket& socket = world_.port.socket(platform::usualComPort);
    socket.pulledAt = world_.clock.now() + running.random.spread(1, fromMilliseconds(200));
    if (back) {
        socket.backAt = socket.pulledAt + fromMilliseconds(running.random.spread(10, 10'000));
        settleLater(socket.backAt);
    }
}

// What falls on the bytes under way.

void FaultInjector::pass(Passage& passage) {
    if (passage.direction == Direction::fromUnit) {
        sendRestWhole();
    }
    const Site site = passage.direction == Direction::toUnit ? Site::toUnit : Site::fromUnit;
    for (Running& running : faults_) {
        if (running.on && !running.spent && rowOf(running.fault.kind).site == site && !passage.bytes.empty() &&
            running.random.chance(running.fault.percent)) {
            alter(running, passage);
        }
    }
}

// Behind its first part a block in two parts goes out as one.
void FaultInjector::sendRestWhole() {
    const auto halves = [](const Running& running) {
        return running.on && running.fault.kind == FaultKind::halvedBlocks;
    };
    if (std::ranges::any_of(faults_, halves)) {
        world_.unit.options().sendPieces.size = 0;
    }
}

void FaultInjector::alter(Running& running, Passage& passage) {
    const Bytes before = passage.bytes;
    const Micros beforeAt = passage.at;
    Bytes& bytes = passage.bytes;
    Random& random = running.random;
    switch (running.fault.kind) {
    case FaultKind::flippedToUnit:
    case FaultKind::flippedFromUnit: flipBits(bytes, random); break;
    case FaultKind::lostToUnit:
    case FaultKind::lostFromUnit: loseBytes(bytes, random); break;
    case FaultKind::doubledToUnit:
    case FaultKind::doubledFromUnit: doubleByte(bytes, random); break;
    case FaultKind::insertedToUnit:
    case FaultKind::insertedFromUnit: insertBytes(bytes, random); break;
    case FaultKind::hiddenToUnit: hideInSum(bytes, random); break;
    case FaultKind::vanishedToUnit:
    case FaultKind::vanishedFromUnit: bytes.clear(); break;
    case FaultKind::lateToUnit:
    case FaultKind::lateFromUnit: passage.at += fromMilliseconds(random.spread(1, 25'000)); break;
    case FaultKind::cutFromUnit: cutShort(bytes, random); break;
    case FaultKind::naksInstead: bytes = {simulator::nak}; break;
    case FaultKind::ackInstead: bytes = {simulator::ack}; break;
    case FaultKind::canAhead: bytes.insert(bytes.begin(), simulator::can); break;
    case FaultKind::cansInstead: bytes = {simulator::can, simulator::can}; break;
    case FaultKind::otherCommand: changeCommandCode(bytes, random); break;
    case FaultKind::otherResult: changeResultCode(bytes, random); break;
    case FaultKind::otherData: changeData(bytes, random); break;
    default: changeEndCode(bytes, random);
    }
    if (bytes != before || passage.at != beforeAt) {
        running.spent = running.fault.span == 1;
        settleLater(passage.at + fromSeconds(1));
        count(running.fault);
    }
}

Micros FaultInjector::stop() {
    faults_.clear();
    cancelNext_ = false;
    world_.port.operations().removeHooks();
    world_.files.operations().removeHooks();
    world_.files.setRoom({});
    platform::Socket& socket = world_.port.socket(platform::usualComPort);
    if (socket.pulledAt > world_.clock.now()) {
        socket.pulledAt = never;
    }
    simulator::UnitOptions& unit = world_.unit.options();
    const simulator::UnitOptions usual;
    wakeUnit();
    unit.answers.clear();
    unit.sendPieces = {};
    unit.sendDelay = usual.sendDelay;
    unit.answerLimit = usual.answerLimit;
    unit.repeatsEnd = usual.repeatsEnd;
    unit.stateText = usual.stateText;
    unit.sensorCount = usual.sensorCount;
    return settled_;
}

} // namespace soak
