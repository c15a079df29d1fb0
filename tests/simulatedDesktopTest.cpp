// The simulated desktop keeps the contract of all desktops. It also judges everything above the seam, so what it has by
// itself, line, faults and watchfulness, is held against fixed values.
#include "platform/simulated/world.h"
#include "simulator/frame.h"
#include "tests/platformContract.h"

using namespace platform;

namespace {

using contract::Text;

struct SimulatedSurroundings : contract::Surroundings {
    SimulatedSurroundings() {
        folder = "/contract/";
        world.files.put(folder + "there", "");
        desk.reactionTime = fromMilliseconds(50);
        desk.confirmOverwrite = [](const AskedFile&) { return false; };
        const auto press = [this](Text name) { world.person.perform(click("form", name)); };
        const auto hold = [this](Socket::State state) {
            return [=, this](Text) { world.port.socket(3).state = state; };
        };
        commands = {
            {"press", press},
            {"key", press},
            {"reader", press},
            {"choose", [this](Text entry) { world.person.perform(choose("form", "list", std::stoi(entry))); }},
            {"request", [this](Text) { world.person.perform(closing("form")); }},
            {"later",
             [this](Text wait) {
                 desk.schedule(after(std::stoi(wait)), [this] { form.events.emplace_back("later"); });
             }},
            {"atBox",
             [this](Text button) {
                 desk.answerBox = [this, button](const Box&) {
                     commands.at("press")("second");
                     commands.at("request")("");
                     return button == "ok" ? boxAnswer::ok : boxAnswer::cancel;
                 };
             }},
            {"atDialog",
             [this](Text names) {
                 desk.chooseFile = [this, names](const AskedFile& asked) {
                     const std::size_t comma = std::min(names.find(','), names.size());
                     const std::string name = asked.askedToOverwrite ? names.substr(comma + 1) : names.substr(0, comma);
                     return name.empty() ? std::nullopt : std::optional(folder + name);
                 };
             }},
            {"room",
             [this](Text most) {
                 const SimulatedFile* file = world.files.find(folder + "b");
                 world.files.setRoom(static_cast<std::size_t>(std::stoi(most)) - file->content.size());
             }},
            {"break",
             [this](Text) {
                 OperationGate& gate = world.files.operations();
                 gate.add(failNth(Operation::closeFile, gate.passed(Operation::closeFile) + 1, Lasting::once,
                                  Failure(failureNumber::fileBroken, "not all has reached the disk")));
             }},
            {"give", [this](Text text) { world.line.put(Direction::fromUnit, bytes(text), after(0)); }},
            {"arrived", [this](Text) { say(world.line.record().sent(Direction::toUnit)); }},
            {"chatter",
             [this](Text length) {
                 for (int at = 5; at <= std::stoi(length); at += 5) {
                     world.line.put(Direction::fromUnit, {'x'}, after(at));
                 }
             }},
            {"pull",
             [this](Text) {
                 desk.sleep(1);
                 world.port.socket(3).pulledAt = after(0);
                 world.port.socket(3).backAt = never;
             }},
            {"plug",
             [this](Text) {
                 desk.sleep(1);
                 world.port.socket(3).backAt = after(0);
             }},
            {"hold", hold(Socket::State::held)},
            {"free", hold(Socket::State::free)},
        };
    }

    Desktop& desktop() override { return desk; }
    Micros after(int wait) const { return world.clock.now() + fromMilliseconds(wait); }

    World world{{.pace = unpaced}};
    SimulatedDesktop& desk = world.desktop;
};

std::unique_ptr<contract::Surroundings> make() {
    return std::make_unique<SimulatedSurroundings>();
}

} // namespace

namespace contract {
INSTANTIATE_TEST_SUITE_P(Simulated, PlatformContract, testing::Values(make));
} // namespace contract

namespace {

class SimulatedDesktopTest : public testing::Test {
  protected:
    SimulatedDesktopTest() {
        desk.load(form);
        desk.show(form);
        world.port.choosePort(3);
        world.port.setSettings("38400,n,8,1");
        world.port.open();
    }

    World world;
    SimulatedDesktop& desk = world.desktop;
    TestForm form;
};

TEST_F(SimulatedDesktopTest, TheLineTakesItsTime) {
    const std::pair<LinePace, std::vector<Micros>> rows[]{{{38400, false, 0}, {260, 520, 781}}, // three bytes
                                                          {{38400, true, 0}, {781, 781, 781}},
                                                          {{9600, false, 500}, {1500, 2500, 3500}},
                                                          {unpaced, {0, 0, 0}}};
    for (const auto& [pace, expected] : rows) {
        world.line.setPace(pace);
        const Micros start = fromMilliseconds(desk.timeGetTime() + 5);
        world.line.put(Direction::fromUnit, {7, 8, 9}, start);
        std::vector<Micros> arrivals;
        while (arrivals.size() < 3) {
            desk.waitForBytes(never);
            arrivals.resize(arrivals.size() + world.port.read().size(), world.clock.now() - start);
        }
        EXPECT_EQ(arrivals, expected);
    }
    world.line.setPace({});
    world.port.write(simulator::frameOf("000000501"));
    desk.sleep(1); // the fourth byte is on its way
    world.port.clearUnsent();
    world.port.write(Bytes{0x03, 0x03}); // ends the frame: STX 0 0 0 ETX check
    desk.sleep(20);
    EXPECT_EQ(world.unit.journal().frames.at(0).text, "000");
    EXPECT_EQ(world.person.possible().size(), 10u); // 6 clicks, 3 entries, the close box
}

TEST_F(SimulatedDesktopTest, WhatCanNeverGoOnIsStuckWhateverTheProgramCatches) {
    const std::function<void()> ways[]{
        // over and over
        [&] { desk.waitForEvents(never); },  [&] { desk.waitForBytes(never); }, [&] { desk.doEvents(); },
        [&] { world.port.countReceived(); }, [&] { form.timer.tick(); }, // a box in each tick, on top of the last
        [&] { desk.sleep(INT32_MAX); },
    };
    form.timer.tick = [&] {
        form.timer.setInterval(100);
        form.timer.setEnabled(true);
        desk.msgBox("", boxStyle::ok, "");
    };
    for (const auto& way : ways) {
        const RunEnd end = desk.run([&] {
            try {
                for (;;) {
                    way();
                }
            } catch (const std::exception&) {
            }
        });
        EXPECT_EQ(end, RunEnd::stuck);
    }
}

TEST_F(SimulatedDesktopTest, WhatNoDesktopWouldBearIsKept) {
    TestForm other;
    other.name = "other";
    desk.hide(other);
    desk.load(form);
    desk.schedule(1, [] { throw Failure(failureNumber::overflow, "Overflow"); });
    desk.schedule(2, [&] { desk.endProgram(); });
    EXPECT_EQ(desk.run({}), RunEnd::programEnded);
    EXPECT_THROW(desk.doEvents(), ProgramEnd);
    EXPECT_EQ(desk.violations(),
              (std::vector<std::string>{"other is shown, hidden or unloaded and was not loaded", "form is loaded twice",
                                        "a failure left an event: Overflow", "code of the program ran after its end"}));
}

TEST_F(SimulatedDesktopTest, TheNthOperationFailsOnceOrForGood) {
    const Failure lost(failureNumber::portLost, "lost");
    OperationGate& gate = world.port.operations();
    const std::pair<OperationHook, const char*> rows[]{
        {failNth(Operation::countReceived, 2, Lasting::once, lost), ".x.."},
        {failNth(Operation::countReceived, 6, Lasting::forGood, lost), ".xxx"},
        {failNth(Operation::readPort, 1, Lasting::forGood, lost), "...."},
        {failNthOfAll(gate.passed() + 16, Lasting::once, lost), "...x"},
    };
    for (const auto& [hook, expected] : rows) {
        gate.add(hook);
        std::string pattern;
        for (int i = 0; i < 4; ++i) {
            pattern += failureOf([&] { world.port.countReceived(); }) == 0 ? '.' : 'x';
        }
        gate.removeHooks();
        EXPECT_EQ(pattern, expected);
    }
}

TEST_F(SimulatedDesktopTest, TheLineDoesToAWriteWhatItsFaultsSay) {
    using Kind = LineFault::Kind;
    struct Row {
        LineFault fault;
        const char* arrives; // of "ABCD", written three times
    };
    const Row rows[]{
        {{.kind = Kind::lose, .first = 2, .last = 2, .place = 1}, "ABCDACDABCD"},
        {{.kind = Kind::flip, .last = 1, .place = 9}, "ABCEABCDABCD"},
        {{.kind = Kind::twice, .first = 3, .place = 0}, "ABCDABCDAABCD"},
        {{.kind = Kind::insert, .first = 2, .place = 4, .bytes = {'~', '~'}}, "ABCDABCD~~ABCD~~"},
        {{.kind = Kind::cut, .place = 2}, "ABABAB"},
        {{.kind = Kind::drop, .writes = Writes::transfer, .first = 2, .last = 2}, "ABCDABCD"},
        {{.kind = Kind::drop, .writes = Writes::frames}, "ABCDABCDABCD"},
        {{.kind = Kind::repeat, .last = 1}, "ABCDABCDABCDABCD"},
        {{.kind = Kind::replace, .last = 2, .bytes = {'x'}}, "xxABCD"},
        {{.kind = Kind::lose, .perMille = 0}, "ABCDABCDABCD"},
    };
    for (const Row& row : rows) {
        world.line.faults(Direction::toUnit) = {row.fault};
        world.line.setSeed(1);
        world.line.record().clear();
        for (int i = 0; i < 3; ++i) {
            world.port.write(Bytes{'A', 'B', 'C', 'D'});
        }
        std::string arrives; // an altered write stands behind the one that was sent
        for (const WireEntry& entry : world.line.record().entries()) {
            arrives.erase(arrives.size() - (entry.altered ? 4 : 0));
            arrives.append(entry.bytes.begin(), entry.bytes.end());
        }
        EXPECT_EQ(arrives, row.arrives);
    }
    // The four writes of a command are no transfer, whatever the block check is.
    world.line.faults(Direction::toUnit) = {{.kind = Kind::lose, .writes = Writes::transfer, .place = 0}};
    world.line.faults(Direction::fromUnit) = {
        {.kind = Kind::delay, .writes = Writes::frames, .time = fromMilliseconds(50)}};
    world.line.record().clear();
    for (const Bytes& part :
         {Bytes{0x02}, Bytes{'0', '0', '0', '0', '0', '0', '5', '0', '1'}, Bytes{0x03}, Bytes{0x02}}) {
        world.port.write(part);
    }
    desk.sleep(100);
    world.port.write(Bytes{0x04});
    EXPECT_EQ(world.line.record().text(), "     0.000000 tool: STX \"000000501\" ETX STX\n"
                                          "     0.034272 unit: STX \"000013\" ETX SOH\n"
                                          "     0.084272 unit altered: STX \"000013\" ETX SOH\n"
                                          "     0.100000 tool: EOT\n"
                                          "     0.100000 tool altered: nothing\n");
}

} // namespace
