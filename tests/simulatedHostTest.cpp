// The simulated host meets the contract of all hosts. All other tests rely on it, so its line, its faults and its
// checks are compared with fixed values.
#include "platform/simulated/world.h"
#include "simulator/frame.h"
#include "tests/failureOf.h"
#include "tests/platformContract.h"

namespace {

using namespace platform;
using contract::Text;

class SimulatedFixture : World, public contract::Fixture {
  public:
    SimulatedFixture() : World{{.pace = unpaced}}, Fixture(World::host, "/contract/") {
        line.addHook([this](const Transmission& write) {
            if (write.direction == Direction::toUnit) {
                sent.insert(sent.end(), write.bytes.begin(), write.bytes.end());
            }
        });
        World::files.put(folder + "there", "");
        World::host.reactionTime = fromMilliseconds(50);
        World::host.confirmOverwrite = [](const FileRequest&) { return false; };
        commands["input"] = [](Text) {};
        commands["press"] = [this](Text name) { theOperator.perform(click("form", name)); };
        commands["choose"] = [this](Text entry) { theOperator.perform(choose("form", "list", std::stoi(entry))); };
        commands["closeRequest"] = [this](Text) { theOperator.perform(closing("form")); };
        commands["later"] = [this](Text wait) { World::host.schedule(after(wait), [this] { add("later"); }); };
        commands["ok"] = [this](Text) { answer = boxAnswer::ok; };
        commands["escape"] = [this](Text) { answer = boxAnswer::cancel; };
        commands["atBox"] = [this](Text script) {
            World::host.answerBox = [=, this](const Box&) { return perform(script, ','), answer; };
        };
        commands["atDialog"] = [this](Text names) {
            World::host.chooseFile = [this, names](const FileRequest& request) {
                const std::size_t comma = std::min(names.find(','), names.size());
                const std::string name = request.askedToOverwrite ? names.substr(comma + 1) : names.substr(0, comma);
                return name.empty() ? std::nullopt : std::optional(folder + name);
            };
        };
        commands["room"] = [this](Text most) {
            World::files.setRoom(std::stoul(most) - World::files.find(folder + "b")->content.size());
        };
        commands["break"] = [this](Text) { fails(World::files.operations(), Operation::closeFile); };
        commands["give"] = [this](Text text) { line.put(Direction::fromUnit, bytes(text), after("0")); };
        commands["arrived"] = [this](Text count) {
            addBytes(std::span(sent).first(std::min<std::size_t>(sent.size(), std::stoul(count))));
            sent.clear();
        };
        commands["stream"] = [this](Text length) {
            for (int at = std::stoi(length); at > 0; at -= 5) {
                line.at(after(std::to_string(at)), [this] { commands.at("give")("x"); });
            }
        };
        commands["pull"] = [this](Text) { comPort().backAt = never, comPort().pulledAt = after("0"); };
        commands["plug"] = [this](Text) { comPort().backAt = after("0"); };
        commands["hold"] = [this](Text) { comPort().state = ComPort::State::held; };
        commands["free"] = [this](Text) { comPort().state = ComPort::State::free; };
    }

  private:
    Bytes sent;
    static void fails(OperationGate& gate, Operation operation) {
        gate.add(failNth(operation, gate.passed(operation) + 1, Persistence::once,
                         Failure(failureNumber::fileBroken, "full")));
    }
    Micros after(Text wait) const { return clock.now() + fromMilliseconds(std::stoi(wait)); }
    ComPort& comPort() {
        desk.sleep(1);
        return World::port.comPort(3);
    }

    int answer = boxAnswer::ok;
};

} // namespace

namespace contract {

std::unique_ptr<Fixture> makeFixture() {
    return std::make_unique<SimulatedFixture>();
}

INSTANTIATE_TEST_SUITE_P(Window, PlatformContract, testing::ValuesIn(sectionsOf("windowHost.txt")), testName);

} // namespace contract

namespace {

class SimulatedHostTest : public testing::Test {
  protected:
    SimulatedHostTest() {
        desk.load(form);
        desk.show(form);
        world.port.choosePort(3);
        world.port.setSettings("38400,n,8,1");
        world.port.open();
    }

    World world;
    SimulatedHost& desk = world.host;
    TestForm form;
};

TEST_F(SimulatedHostTest, DelaysBytesOnTheLine) {
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
    desk.sleep(1); // within the fourth byte
    world.port.clearUnsent();
    world.port.write(Bytes{0x03, 0x03}); // ends the frame: STX 0 0 0 ETX check
    desk.sleep(20);
    EXPECT_EQ(world.unit.journal().frames.at(0).text, "000");
    EXPECT_EQ(world.theOperator.possible().size(), 10u); // 6 clicks, 3 entries, the close box
}

TEST(LineFaults, ChangeOneWrite) {
    using Kind = LineFault::Kind;
    const Bytes xy{'X', 'Y'};
    const std::pair<LineFault, const char*> rows[]{{{.kind = Kind::lose}, "ac at 9"},
                                                   {{.kind = Kind::flip}, "a\"c at 9"}, // a bit of b
                                                   {{.kind = Kind::twice}, "abbc at 9"},
                                                   {{.kind = Kind::insert, .bytes = xy}, "aXYbc at 9"},
                                                   {{.kind = Kind::insert, .place = 7, .bytes = xy}, "abcXY at 9"},
                                                   {{.kind = Kind::cut}, "a at 9"},
                                                   {{.kind = Kind::drop}, " at 9"},
                                                   {{.kind = Kind::repeat}, "abcabc at 9"},
                                                   {{.kind = Kind::replace, .bytes = xy}, "XY at 9"},
                                                   {{.kind = Kind::delay, .time = 20}, "abc at 29"},
                                                   {{.kind = Kind::drop, .writes = Writes::transfer}, "abc at 9"},
                                                   {{.kind = Kind::drop, .first = 2}, "abc at 9"},
                                                   {{.kind = Kind::drop, .last = 0}, "abc at 9"},
                                                   {{.kind = Kind::drop, .perMille = 0}, "abc at 9"}};
    for (auto [fault, expected] : rows) {
        fault.place = fault.place.value_or(1);
        std::vector<LineFault> faults{fault};
        Random random;
        Bytes bytes{'a', 'b', 'c'};
        Micros at = 9;
        applyFaults(faults, Writes::frames, random, bytes, at);
        const std::string text = std::string(bytes.begin(), bytes.end()) + " at " + std::to_string(at);
        EXPECT_EQ(text, expected);
        EXPECT_EQ(faults[0].applied, text == "abc at 9" ? 0 : 1);
    }
}

TEST_F(SimulatedHostTest, ReportsWhatHangs) {
    const std::function<void()> nest = [&] { desk.schedule(0, nest), desk.doEvents(); };
    const std::pair<std::function<void()>, const char*> rows[]{
        {[&] { desk.waitForBytes(never); }, "the program waits for bytes that nothing will send"},
        {[&] { desk.waitForEvents(never); }, "the program waits and nothing will ever happen"},
        {nest, "window events run inside each other without end"},
        {[&] {
             while (desk.timeGetTime() == 0) {
             }
         },
         "the program loops without waiting, at 0 s"},
        {[&] { desk.sleep(24 * 3'600'001); }, "the program still runs after 86400 s"}};
    for (const auto& [action, expected] : rows) {
        EXPECT_EQ(desk.run(action), RunEnd::stuck);
        EXPECT_EQ(desk.stuckReason(), expected);
    }
}

TEST_F(SimulatedHostTest, RecordsViolations) {
    TestForm other("other");
    desk.hide(other);
    desk.load(form);
    desk.schedule(1, [] { throw Failure(failureNumber::overflow, "Overflow"); });
    desk.schedule(2, [&] { desk.endProgram(0); });
    EXPECT_EQ(desk.run({}), RunEnd::programEnded);
    EXPECT_THROW(desk.doEvents(), ProgramEnd);
    EXPECT_EQ(desk.violations(),
              (std::vector<std::string>{"other is shown, hidden or unloaded and was not loaded", "form is loaded twice",
                                        "a failure left an event: Overflow", "code of the program ran after its end"}));
}

TEST_F(SimulatedHostTest, DistinguishesCommandsFromTransfers) {
    std::vector<std::string> changed;
    world.line.changed = [&](const Transmission& write) {
        changed.push_back(std::to_string(write.at) + ' ' + std::string(write.bytes.begin(), write.bytes.end()));
    };
    world.line.faults(Direction::toUnit) = {{.writes = Writes::transfer, .place = 0}};
    world.line.faults(Direction::fromUnit) = {
        {.kind = LineFault::Kind::delay, .writes = Writes::frames, .time = fromMilliseconds(50)}};
    for (const std::string part : {"\x02", "000000501", "\x03", "\x02", "\x04"}) { // its block check looks like STX
        desk.sleep(part == "\x04" ? 100 : 0);
        world.port.write(Bytes(part.begin(), part.end()));
    }
    EXPECT_EQ(changed, (std::vector<std::string>{"55123 \x02"
                                                 "000013\x03\x01",
                                                 "100000 "}));
}

} // namespace
