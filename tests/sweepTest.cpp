// A write in which something fails at one place: at one of the blocks or at EOT after them, once or for good. Each
// fault has a row that says how such a write ends, wherever the place is. A usual run takes a share of the places,
// which the rows divide among themselves; the disabled tests take them all (scripts/sweep).
#include "tests/session.h"
#include "tests/thinned.h"

#include <algorithm>
#include <set>

namespace {

constexpr int lastPlace = blockCount + 1; // EOT

enum class End { succeed, failed, never };

// What the unit has stored at the end: all blocks, those ahead of the place, or that of the place with them.
enum class Stored { all, ahead, withPlace };

struct Outcome {
    End end;
    int transmissions; // of the packet at the place
    Stored stored;
    int succeedsFrom = lastPlace + 1; // from this place on the tool says that all went well
};

constexpr Outcome unharmed{End::succeed, 1, Stored::all};
constexpr Outcome repeated{End::succeed, 2, Stored::all};
constexpr Outcome unheard{End::failed, 10, Stored::ahead};        // the unit never gets the packet
constexpr Outcome unanswered{End::failed, 10, Stored::withPlace}; // the unit gets it and cannot say so
constexpr Outcome brokenOff{End::failed, 1, Stored::withPlace};
constexpr Outcome brokenOffAhead{End::failed, 1, Stored::ahead};
constexpr Outcome brokenOffBehind{End::failed, 1, Stored::withPlace, lastPlace};
constexpr Outcome unnoticed(int from) {
    return {End::failed, 1, Stored::ahead, from};
}
constexpr Outcome endless{End::never, 0, Stored::withPlace};

// What strikes a packet on its way to the unit, or what the unit says to it.
using Strike = std::function<void(Passage&, World&)>;

struct Fault {
    const char* name;
    Strike packet;
    Strike reply;
    Outcome once;
    Outcome forGood;
};

const Strike none = [](Passage&, World&) {};
const Strike damage = [](Passage& passage, World&) { passage.bytes[passage.bytes.size() / 2] ^= 0x20; };
const Strike lose = [](Passage& passage, World&) { passage.bytes.clear(); };
const Strike cutShort = [](Passage& passage, World&) { passage.bytes.resize(passage.bytes.size() / 2); };
const Strike putNoiseAhead = [](Passage& passage, World&) { passage.bytes.insert(passage.bytes.begin(), '~'); };
const Strike sendTwice = [](Passage& passage, World&) {
    const Bytes bytes = passage.bytes;
    passage.bytes.insert(passage.bytes.end(), bytes.begin(), bytes.end());
};
const Strike restartUnit = [](Passage& passage, World& world) {
    world.restartUnit(passage.at, passage.at + fromMilliseconds(1));
};
const Strike pullAdapter = [](Passage& passage, World& world) { world.port.socket(3).pulledAt = passage.at; };
Strike delay(Micros by) {
    return [=](Passage& passage, World&) { passage.at += by; };
}
Strike become(const Bytes& bytes) {
    return [=](Passage& passage, World&) { passage.bytes = bytes; };
}
Strike failNext(Operation operation) {
    const Failure lost(failureNumber::portLost, "lost");
    return [=](Passage&, World& world) {
        OperationGate& gate = world.port.operations();
        gate.add(failNth(operation, gate.passed(operation) + 1, Lasting::once, lost));
    };
}

const Fault faults[] = {
    {"PacketDamaged", damage, none, repeated, unheard},
    {"PacketLost", lose, none, repeated, unheard},
    {"PacketCutShort", cutShort, none, repeated, unheard},
    {"NoiseAheadOfPacket", putNoiseAhead, none, repeated, unheard},
    {"PacketDoubled", sendTwice, none, unharmed, unharmed},
    {"AckLost", none, lose, repeated, unanswered},
    {"AckBecomesNak", none, become({simulator::nak}), repeated, unanswered},
    {"AckBecomesNoise", none, become({'U'}), repeated, unanswered},
    // Each lone CAN clears the retry count, each time-out after it the CAN count: no limit is ever reached.
    {"AckBecomesCan", none, become({simulator::can}), repeated, endless},
    {"AckBecomesTwoCan", none, become({simulator::can, simulator::can}), brokenOff, brokenOff},
    {"AckDoubled", none, sendTwice, unharmed, unharmed},
    {"NoiseAheadOfAck", none, putNoiseAhead, unharmed, unharmed},
    {"AckLate", none, delay(fromMilliseconds(9500)), unharmed, unharmed},
    {"AckLaterThanLimit", none, delay(fromMilliseconds(10500)), repeated, repeated},
    {"UnitRestarts", restartUnit, none, unheard, unheard},
    {"CountFails", failNext(Operation::countReceived), none, brokenOff, brokenOff},
    {"NextWriteFails", failNext(Operation::writePort), none, brokenOffBehind, brokenOffBehind},
    {"AdapterPulled", pullAdapter, none, brokenOffAhead, brokenOffAhead},
    // The blind spot of the protocol: a NAK that reads as ACK. The unit breaks off at the next block, or after its
    // eleventh refusal; near the end it has no occasion to.
    {"DamageAcknowledged", damage, become({simulator::ack}), unnoticed(lastPlace - 1), unnoticed(lastPlace - 10)},
};

// Strikes the packets of a write and the answers to them.
class Striker {
  public:
    Striker(World& world, const Fault& fault, int place, Lasting lasting)
        : world_(world), fault_(fault), place_(place), lasting_(lasting) {
        world.line.addHook([this](Passage& passage) { pass(passage); });
    }

    int transmissions() const { return transmissions_; }

  private:
    void pass(Passage& passage) {
        if (passage.direction == Direction::toUnit) {
            passPacket(passage);
        } else if (passage.bytes.size() <= 2 && strikes(repliesThere_)) { // no reply to a command
            fault_.reply(passage, world_);
        }
    }

    void passPacket(Passage& passage) {
        const bool block = passage.bytes.size() >= simulator::checksumPacketSize;
        if (!block && (passage.bytes != Bytes{simulator::eot} || at_ < blockCount)) {
            return;
        }
        at_ += passage.bytes == packet_ ? 0 : 1;
        packet_ = passage.bytes;
        transmissions_ += at_ == place_ ? 1 : 0;
        if (strikes(packetsThere_)) {
            fault_.packet(passage, world_);
        }
    }

    // Counts what comes at the place; true when the fault strikes now.
    bool strikes(int& there) {
        there += at_ == place_ ? 1 : 0;
        return lasting_ == Lasting::once ? at_ == place_ && there == 1 : at_ >= place_;
    }

    World& world_;
    const Fault& fault_;
    int place_;
    Lasting lasting_;
    int at_ = 0;
    Bytes packet_;
    int transmissions_ = 0;
    int packetsThere_ = 0;
    int repliesThere_ = 0;
};

std::string described(End end, int transmissions, std::size_t blocks) {
    const char* text = end == End::succeed ? "succeeds" : end == End::failed ? "fails" : "never ends";
    return text + (", sent " + std::to_string(transmissions)) + " times, " + std::to_string(blocks) + " blocks stored";
}

// The blocks in the unit, or one more than there are when one of them is wrong.
std::size_t blocksIn(const World& world) {
    const Bytes& stored = world.unit.receivedImage();
    const bool right =
        stored.size() <= world.image.size() && std::equal(stored.begin(), stored.end(), world.image.begin());
    return right ? stored.size() / blockSize : blockCount + 1;
}

std::string expected(const Outcome& outcome, int place) {
    const auto ahead = static_cast<std::size_t>(place - 1);
    const std::size_t blocks = outcome.stored == Stored::all     ? blockCount
                               : outcome.stored == Stored::ahead ? ahead
                                                                 : std::min<std::size_t>(ahead + 1, blockCount);
    return described(place < outcome.succeedsFrom ? outcome.end : End::succeed, outcome.transmissions, blocks);
}

// What a receiver repeats its start byte after. With less than the 10 s of a reply wait see RepeatedStartBytes.
constexpr Micros startPeriod = fromSeconds(15);

std::string write(const Fault& fault, int place, Lasting lasting, Micros period = startPeriod) {
    WorldOptions options;
    options.unit.crc = place % 2 != 0;
    options.unit.startPeriod = period;
    Session session(options);
    World& world = session.world;
    session.load();
    const Striker striker(world, fault, place, lasting);
    const bool never = lasting == Lasting::forGood && fault.forGood.end == End::never;
    world.clock.setLimit(fromSeconds(never ? 3600 : 24 * 3600));
    const RunEnd end = world.desktop.run([&] { world.person.perform(click("frmMain", "cmdUpgrade")); });
    if (end == RunEnd::stuck) {
        return described(End::never, 0, blocksIn(world));
    }
    EXPECT_TRUE(session.atRest());
    const bool succeeded = world.desktop.boxes().back().text == "Succeed";
    world.desktop.sleep(60'000); // what the tool has sent may still be on the line
    return described(succeeded ? End::succeed : End::failed, striker.transmissions(), blocksIn(world));
}

// A row of the tests: a fault that strikes once or for good.
class EachPlace : public testing::TestWithParam<int> {
  protected:
    const Fault& fault = faults[GetParam() / 2];
    const Lasting lasting = GetParam() % 2 == 0 ? Lasting::once : Lasting::forGood;

    // At the ends of the places and at one in so many of the others.
    void tryPlaces(int step) const {
        const Outcome& outcome = lasting == Lasting::once ? fault.once : fault.forGood;
        std::set<int> places{1, 2, 256, 257, lastPlace - 1, lastPlace};
        for (int place = 1 + GetParam() % step; place <= lastPlace; place += step) {
            places.insert(place);
        }
        for (const int place : places) {
            ASSERT_EQ(write(fault, place, lasting), expected(outcome, place)) << "at " << place;
        }
    }
};

constexpr int rowCount = 2 * static_cast<int>(std::size(faults));

TEST_P(EachPlace, EndsAsItsRowSays) {
    tryPlaces(rowCount * (thinned ? 8 : 1));
}

TEST_P(EachPlace, DISABLED_Full) {
    tryPlaces(1);
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachPlace, testing::Range(0, rowCount), [](const auto& row) {
    return faults[row.param / 2].name + std::string(row.param % 2 == 0 ? "Once" : "ForGood");
});

// A "C" that comes again counts as noise and begins the wait for the reply anew, so that the first block is not
// sent again before the unit has given up.
TEST(Sweep, RepeatedStartBytesHoldBackTheFirstBlock) {
    const Fault& lost = *std::ranges::find(faults, std::string_view("PacketLost"), &Fault::name);
    EXPECT_EQ(write(lost, 1, Lasting::once, fromSeconds(3)), expected(unheard, 1));
}

constexpr auto ofPort = [](World& world) -> OperationGate& { return world.port.operations(); };
constexpr auto ofDisk = [](World& world) -> OperationGate& { return world.files.operations(); };

// One operation of the port or of the disk fails, once or it and all behind it, from the start of the program on.
class EachOperation : public testing::TestWithParam<std::tuple<OperationGate& (*)(World&), Lasting>> {
  protected:
    // Whatever has failed, the operator can go on, and a box tells the truth. True when that is "Succeed".
    static bool loadAndWrite(Session& session) {
        session.press("cmdLoading");
        if (frmMain().cmdUpgrade.enabled) {
            session.press("cmdUpgrade");
        }
        EXPECT_TRUE(session.atRest());
        const bool succeeded = session.boxes().ends_with("|Succeed|65>1\n");
        EXPECT_TRUE(!succeeded || blocksIn(session.world) == blockCount);
        return succeeded;
    }

    static void runWithFailure(std::int64_t number) {
        SCOPED_TRACE(number);
        Session session;
        World& world = session.world;
        const Failure failure(failureNumber::portLost, "broken");
        const auto& [gate, lasting] = GetParam();
        gate(world).add(failNthOfAll(number, lasting, failure));
        if (session.start() == RunEnd::programEnded) {
            return;
        }
        EXPECT_FALSE(world.person.possible().empty()) << "nothing is on the screen";
        if (!frmMain().visible) {
            return;
        }
        loadAndWrite(session);
        gate(world).removeHooks();
        const bool modelKnown = !shared.ampTypeName.empty(); // else the write is refused
        EXPECT_EQ(loadAndWrite(session), modelKnown);
    }
};

TEST_P(EachOperation, LeavesTheOperatorAWayOn) {
    Session session;
    session.load();
    session.press("cmdUpgrade");
    const std::int64_t count = std::get<0>(GetParam())(session.world).passed();
    const std::int64_t edge = 150; // start, checks and some blocks; some blocks and the end
    for (std::int64_t number = 1; number <= count && !HasFailure(); number += thinned ? 7 : 1) {
        if (number <= edge || number > count - edge) {
            runWithFailure(number);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachOperation,
                         testing::Combine(testing::Values(ofPort, ofDisk),
                                          testing::Values(Lasting::once, Lasting::forGood)));

} // namespace
