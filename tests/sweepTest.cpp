// Failures one by one: a write of which one packet, or the answer to it, fails, at one place after the other, once or for
// good; and a session of which one operation of port or disk fails. Wherever it is, the tool tells the truth, the window
// comes back, and without the fault the next write succeeds. A usual run takes a share of the places; the disabled tests
// take them all (scripts/sweep).
#include "tests/session.h"
#include "tests/thinned.h"

#include <set>

namespace {

constexpr int lastPlace = blockCount + 1; // EOT

const std::string succeed = "|Succeed|65>1\n";

using End = std::string_view;
constexpr End succeeds = "succeeds";
constexpr End breaksOff = "breaks off";

struct Row {
    const char* name;
    Direction direction; // that of packets or that of the answers to them
    LineFault fault;
    End once, forGood;
};

using Kind = LineFault::Kind;
constexpr auto toUnit = Direction::toUnit;
constexpr auto fromUnit = Direction::fromUnit;

const Row rows[] = {
    {"PacketDamaged", toUnit, {.kind = Kind::flip}, succeeds, breaksOff},
    {"PacketLost", toUnit, {.kind = Kind::drop}, succeeds, breaksOff},
    {"PacketLosesAByte", toUnit, {.kind = Kind::lose}, succeeds, breaksOff},
    {"PacketCutShort", toUnit, {.kind = Kind::cut}, succeeds, breaksOff},
    {"NoiseAheadOfPacket", toUnit, {.kind = Kind::insert, .place = 0, .bytes = {'~'}}, succeeds, breaksOff},
    {"PacketDoubled", toUnit, {.kind = Kind::repeat}, succeeds, succeeds},
    {"AckLost", fromUnit, {.kind = Kind::drop}, succeeds, breaksOff},
    {"AckBecomesNak", fromUnit, {.kind = Kind::replace, .bytes = {simulator::nak}}, succeeds, breaksOff},
    {"AckBecomesNoise", fromUnit, {.kind = Kind::replace, .bytes = {'U'}}, succeeds, breaksOff},
    {"AckBecomesTwoCan", fromUnit, {.kind = Kind::replace, .bytes = Bytes(2, simulator::can)}, breaksOff, breaksOff},
    {"AckDoubled", fromUnit, {.kind = Kind::repeat}, succeeds, succeeds},
    {"NoiseAheadOfAck", fromUnit, {.kind = Kind::insert, .place = 0, .bytes = {'~'}}, succeeds, succeeds},
    {"AckLate", fromUnit, {.kind = Kind::delay, .time = fromMilliseconds(9500)}, succeeds, succeeds},
    {"AckLaterThanLimit", fromUnit, {.kind = Kind::delay, .time = fromMilliseconds(10500)}, succeeds, succeeds},
};
constexpr int rowCount = 2 * static_cast<int>(std::size(rows));

bool unitHoldsFile(const World& world) {
    return world.unit.journal().imageComplete && world.unit.receivedImage() == world.image;
}

End write(const Row& row, int place, Lasting lasting) {
    WorldOptions options;
    options.unit.crc = place % 2 != 0;
    options.unit.startPeriod = fromSeconds(15); // one within a reply wait begins it anew
    Session session(options);
    World& world = session.world;
    session.load();
    LineFault fault = row.fault;
    fault.writes = Writes::transfer;
    fault.first = place + (row.direction == fromUnit ? 1 : 0); // ahead of the answers comes the start byte
    fault.last = lasting == Lasting::once ? fault.first : never;
    world.line.faults(row.direction) = {fault};
    session.press("cmdUpgrade");
    EXPECT_TRUE(session.atRest());
    EXPECT_GT(world.line.faults(row.direction)[0].struck, 0);
    const bool succeeded = session.boxes().ends_with(succeed);
    world.desktop.sleep(60'000); // what the tool has sent may still be on the line
    EXPECT_TRUE(!succeeded || unitHoldsFile(world));
    world.line.faults(row.direction).clear();
    session.press("cmdUpgrade");
    EXPECT_TRUE(session.boxes().ends_with(succeed) && unitHoldsFile(world)) << session.boxes();
    return succeeded ? succeeds : breaksOff;
}

// A row of the tests: a fault that strikes once or for good.
class EachPlace : public testing::TestWithParam<int> {
  protected:
    // At the ends of the places and at one in so many of the others.
    static void tryPlaces(int step) {
        const Row& row = rows[GetParam() / 2];
        const Lasting lasting = GetParam() % 2 == 0 ? Lasting::once : Lasting::forGood;
        const End expected = lasting == Lasting::once ? row.once : row.forGood;
        std::set<int> places{1, 2, 256, 257, lastPlace - 1, lastPlace};
        for (int place = 1 + GetParam() % step; place <= lastPlace; place += step) {
            places.insert(place);
        }
        for (const int place : places) {
            ASSERT_EQ(write(row, place, lasting), expected) << "at " << place;
        }
    }
};

TEST_P(EachPlace, EndsAsItsRowSays) {
    tryPlaces(rowCount * (thinned ? 16 : 2));
}

TEST_P(EachPlace, DISABLED_Full) {
    tryPlaces(1);
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachPlace, testing::Range(0, rowCount), [](const auto& test) {
    return rows[test.param / 2].name + std::string(test.param % 2 == 0 ? "Once" : "ForGood");
});

// One operation fails, once or it and all behind it, from the start of the program on.
class EachOperation : public testing::TestWithParam<std::tuple<bool, Lasting>> {
  protected:
    static OperationGate& gate(World& world) {
        return std::get<0>(GetParam()) ? world.port.operations() : world.files.operations();
    }

    // True when the last box says "Succeed".
    static bool loadAndWrite(Session& session) {
        session.press("cmdLoading");
        if (frmMain().cmdUpgrade.enabled) {
            session.press("cmdUpgrade");
        }
        EXPECT_TRUE(session.atRest());
        const bool succeeded = session.boxes().ends_with(succeed);
        EXPECT_TRUE(!succeeded || unitHoldsFile(session.world));
        return succeeded;
    }

    static void runWithFailure(std::int64_t number) {
        SCOPED_TRACE(number);
        Session session;
        gate(session.world).add(failNthOfAll(number, std::get<1>(GetParam()), {failureNumber::portLost, "broken"}));
        if (session.start() == RunEnd::programEnded) {
            return;
        }
        EXPECT_FALSE(session.world.person.possible().empty()) << "nothing is on the screen";
        if (!frmMain().visible) {
            return;
        }
        loadAndWrite(session);
        gate(session.world).removeHooks();
        const bool modelKnown = !shared.ampTypeName.empty(); // else the write is refused
        EXPECT_EQ(loadAndWrite(session), modelKnown);
    }
};

TEST_P(EachOperation, LeavesTheOperatorAWayOn) {
    Session session;
    session.load();
    session.press("cmdUpgrade");
    const std::int64_t count = gate(session.world).passed();
    const std::int64_t edge = 150; // start, checks and some blocks; some blocks and the end
    for (std::int64_t number = 1; number <= count && !HasFailure(); number += thinned ? 7 : 1) {
        if (number <= edge || number > count - edge) {
            runWithFailure(number);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, EachOperation,
                         testing::Combine(testing::Bool(), testing::Values(Lasting::once, Lasting::forGood)));

} // namespace
