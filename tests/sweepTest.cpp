// Single failures at each place: a packet of a write or its answer fails, once or from there on; or an operation of the port
// or the disk fails. In each case the result that the program shows is true, the window is usable again, and the next write
// without the fault succeeds. A usual run tests a share of the places, the disabled tests all of them (scripts/sweep).
#include "tests/session.h"

#include <set>

namespace {

constexpr int lastPlace = blockCount + 1; // EOT

const std::string succeed = "|Succeed|65>1\n";

struct Row {
    const char* name;
    Direction direction; // that of packets or that of the answers to them
    LineFault fault;
    bool onceSucceeds = true;
    bool permanentSucceeds = false; // otherwise the write fails
};

using Kind = LineFault::Kind;
constexpr auto toUnit = Direction::toUnit;
constexpr auto fromUnit = Direction::fromUnit;

const Row rows[] = {
    {"PacketDamaged", toUnit, {.kind = Kind::flip}},
    {"PacketLost", toUnit, {.kind = Kind::drop}},
    {"PacketLosesAByte", toUnit, {.kind = Kind::lose}},
    {"PacketCutShort", toUnit, {.kind = Kind::cut}},
    {"NoiseBeforePacket", toUnit, {.kind = Kind::insert, .place = 0, .bytes = {'~'}}},
    {"PacketDoubled", toUnit, {.kind = Kind::repeat}, true, true},
    {"AckLost", fromUnit, {.kind = Kind::drop}},
    {"AckBecomesNak", fromUnit, {.kind = Kind::replace, .bytes = {simulator::nak}}},
    {"AckBecomesNoise", fromUnit, {.kind = Kind::replace, .bytes = {'U'}}},
    {"AckBecomesTwoCan", fromUnit, {.kind = Kind::replace, .bytes = Bytes(2, simulator::can)}, false, false},
    {"AckDoubled", fromUnit, {.kind = Kind::repeat}, true, true},
    {"NoiseBeforeAck", fromUnit, {.kind = Kind::insert, .place = 0, .bytes = {'~'}}, true, true},
    {"AckLate", fromUnit, {.kind = Kind::delay, .time = fromMilliseconds(9500)}, true, true},
    {"AckLaterThanLimit", fromUnit, {.kind = Kind::delay, .time = fromMilliseconds(10500)}, true, true},
};
constexpr int rowCount = 2 * static_cast<int>(std::size(rows));

// Presses the button of the write; true when the last box says "Succeed", and then the unit holds the file.
bool writeSucceeds(Session& session) {
    if (frmMain().cmdUpgrade.enabled) {
        session.press("cmdUpgrade");
    }
    EXPECT_TRUE(session.atRest());
    const World& world = session.world;
    session.world.host.sleep(60'000); // what the program has sent may still be on the line
    const bool succeeded = session.boxes().ends_with(succeed);
    EXPECT_TRUE(!succeeded || (world.unit.journal().imageComplete && world.unit.receivedImage() == world.image));
    return succeeded;
}

bool succeedsWithFault(const Row& row, int place, bool once) {
    WorldOptions options;
    options.unit.crc = place % 2 != 0;
    options.unit.startPeriod = fromSeconds(15); // a start byte restarts the wait for an answer
    Session session(options);
    session.load();
    LineFault fault = row.fault;
    fault.writes = Writes::transfer;
    fault.first = place + (row.direction == fromUnit ? 1 : 0); // before the answers comes the start byte
    fault.last = once ? fault.first : never;
    auto& faults = session.world.line.faults(row.direction);
    faults = {fault};
    const bool succeeded = writeSucceeds(session);
    EXPECT_GT(faults[0].applied, 0);
    faults.clear();
    EXPECT_TRUE(writeSucceeds(session)) << session.boxes();
    return succeeded;
}

// Parameter: a row of the table, and whether the fault applies once or permanently.
class EachPlace : public testing::TestWithParam<int> {
  protected:
    // Tests the first and last places and every `step`-th of the others.
    static void tryPlaces(int step) {
        const Row& row = rows[GetParam() / 2];
        const bool once = GetParam() % 2 == 0;
        std::set<int> places{1, 2, 256, 257, lastPlace - 1, lastPlace};
        for (int place = 1 + GetParam() % step; place <= lastPlace; place += step) {
            places.insert(place);
        }
        for (const int place : places) {
            ASSERT_EQ(succeedsWithFault(row, place, once), once ? row.onceSucceeds : row.permanentSucceeds)
                << "at " << place;
        }
    }
};

TEST_P(EachPlace, EndsAsExpected) {
    tryPlaces(rowCount * (THINNED ? 16 : 2));
}

TEST_P(EachPlace, DISABLED_Full) {
    tryPlaces(1);
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachPlace, testing::Range(0, rowCount), [](const auto& test) {
    return rows[test.param / 2].name + std::string(test.param % 2 == 0 ? "Once" : "Permanent");
});

// One operation of port or disk fails, or this and all later ones, from the start of the program on.
class EachOperation : public testing::TestWithParam<int> {
  protected:
    static OperationGate& gate(World& world) {
        return GetParam() % 2 == 0 ? world.port.operations() : world.files.operations();
    }

    static void runWithFailure(std::int64_t number) {
        SCOPED_TRACE(number);
        Session session;
        const Persistence persistence = GetParam() < 2 ? Persistence::once : Persistence::permanent;
        gate(session.world).add(failNthOfAll(number, persistence, {failureNumber::portLost, "broken"}));
        if (session.start() == RunEnd::programEnded) {
            return;
        }
        EXPECT_FALSE(session.world.theOperator.possible().empty()) << "nothing is on the screen";
        if (frmMain().visible) {
            session.press("cmdLoading");
            writeSucceeds(session);
            gate(session.world).removeHooks();
            session.press("cmdLoading");
            EXPECT_EQ(writeSucceeds(session), !shared.ampTypeName.empty()); // an unknown model is refused
        }
    }
};

TEST_P(EachOperation, LeavesTheProgramUsable) {
    Session session;
    session.load();
    session.press("cmdUpgrade");
    const std::int64_t count = gate(session.world).passed();
    const std::int64_t edge = 150; // start, checks and some blocks; some blocks and the end
    for (std::int64_t number = 1; number <= count && !HasFailure(); number += THINNED ? 7 : 1) {
        if (number <= edge || number > count - edge) {
            runWithFailure(number);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachOperation, testing::Range(0, 4));

// The adapter is pulled and plugged in at once, at one call of the port in a write, a save or a verification. The loss has
// one box, "Succeed" stands over a whole image only, and the next operation succeeds.
class EachCall : public testing::TestWithParam<int> {
  protected:
    enum { write, save, verification };

    // Runs the operation with a loss at a call, counted from its start; 0: without one. Returns the number of its calls.
    static std::int64_t run(std::int64_t call) {
        SCOPED_TRACE(call);
        Session session;
        session.load();
        World& world = session.world;
        world.unit.options().amplifierImage = simulator::makeSampleImage({.seed = 7});
        const Bytes& held = world.unit.options().amplifierImage;
        frmMain().cmdPresent.visible = true;
        frmMain().chkVerify.value = GetParam() == verification ? 1 : 0;
        OperationGate& gate = world.port.operations();
        const std::int64_t before = gate.passed();
        gate.add([&world, before, call](const OperationCall& made) {
            if (made.number == before + call) {
                auto& port = world.port.comPort(defaultComPort);
                port.pulledAt = port.backAt = world.clock.now();
            }
        });
        const char* control = GetParam() == save ? "cmdPresent" : "cmdUpgrade";
        session.press(control);
        const std::int64_t calls = gate.passed() - before;
        EXPECT_TRUE(session.atRest());
        const auto named = std::ranges::count_if(
            world.host.boxes(), [](const Box& box) { return box.text.find(deviceGone) != std::string::npos; });
        constexpr std::int64_t last = 60; // the last answer has been received, and is read byte by byte
        EXPECT_TRUE(named == 1 || (named == 0 && (call <= 1 || call > calls - last))) << session.boxes();
        const bool succeeded = session.boxes().find("|Succeed|") != std::string::npos;
        EXPECT_EQ(succeeded, shared.outcome == Outcome::succeeded);
        const SimulatedFile* file = world.files.find(World::savedPath);
        const bool stored = file != nullptr && Bytes(file->content.begin(), file->content.end()) == held;
        EXPECT_EQ(stored, file != nullptr);
        EXPECT_TRUE(!succeeded || (GetParam() == save ? stored : held == world.image));
        EXPECT_TRUE(call > 1 || succeeded);
        if (GetParam() != verification) {
            session.press(control);
            EXPECT_TRUE(shared.outcome == Outcome::succeeded) << session.boxes();
        }
        return calls;
    }
};

TEST_P(EachCall, TellsTheTruthAfterALoss) {
    const std::int64_t calls = run(0);
    const std::int64_t edge = 40;
    for (std::int64_t call = 1; call <= calls && !HasFailure(); ++call) {
        if (call <= edge || call > calls - edge || call % (THINNED ? 1009 : 101) == 0) {
            run(call);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachCall, testing::Range(0, 3));

} // namespace
