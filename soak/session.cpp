#include "soak/session.h"

#include "app/program.h"
#include "simulator/frame.h"
#include "soak/monitor.h"
#include "state/variables.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace soak {

using namespace platform;
using Kind = LineFault::Kind;

namespace {

// Usual lines, and lines with unusual timing.
constexpr std::array paces{LinePace{},
                           LinePace{},
                           LinePace{.wholeWrites = true},
                           LinePace{.latency = 0},
                           LinePace{.latency = fromMilliseconds(16)},
                           unpaced};

// Files that the operator may name, the usual one first.
constexpr std::array loadPaths{
    World::firmwarePath, World::firmwarePath, World::firmwarePath, "/other", "/short", "/none"};
constexpr std::size_t timeWidth = 13; // of a line of the trace

constexpr std::array savePaths{World::savedPath, World::savedPath, "/long", "/readOnly"};

// How often the operator uses a control, compared with a control that is not listed.
constexpr std::array<std::pair<std::string_view, int>, 6> weights{
    {{"cmdUpgrade", 50}, {"cmdPresent", 25}, {"cmdLoading", 30}, {"chkVerify", 5}, {"cmdTest", 60}, {"cmdCancel", 9}}};

WorldOptions drawWorld(Random& random) {
    WorldOptions world;
    world.unit.crc = random.chance(500);
    world.unit.startDelay = fromMilliseconds(random.spread(1, 5000));
    world.unit.replyDelay = fromMilliseconds(random.spread(1, 300));
    world.unit.packetDelay = fromMilliseconds(random.chance(700) ? 0 : random.spread(1, 200));
    world.pace = random.pick(paces);
    world.image.seed = static_cast<std::uint32_t>(random.draw());
    return world;
}

// One session. Faults are injected when a message of the tool begins.
struct Session {
    Session(std::uint64_t seed, bool wire);
    Result play(const std::function<void(World&)>& tamper, bool save);

    void act(const Action& action);
    void run(const std::function<void()>& entry);
    void actUnexpectedly();
    void drawFaults(int perMille);
    void messageBegins();
    void stopFaults();
    void setPort();
    void finish(bool save);
    bool press(const char* control);
    bool goesOn() const { return !world.host.ended() && monitor.violations.empty(); }
    bool started() const { return world.host.form("frmMain") != nullptr && frmMain().visible; }

    Random random;
    World world;
    Monitor monitor{world};
    simulator::UnitOptions& unit = world.unit.options();
    ComPort& comPort = world.port.comPort(defaultComPort);
    std::multimap<int, std::function<void()>> due; // by messages of the tool since the latest action
    int message = 0;
    int cancels = 0;         // of 1000 boxes and dialogs
    bool faults = true;      // can be injected
    bool piecesVary = false; // from block to block
};

simulator::Pieces somePieces(Random& random) {
    constexpr std::array<std::size_t, 11> tricky{1, 2, 3, 4, 5, 126, 127, 128, 129, 130, 131};
    return {random.chance(500) ? random.pick(tricky) : static_cast<std::size_t>(random.between(1, 131)),
            fromMilliseconds(random.spread(1, 4000))};
}

void addLineFault(Session& s, Direction direction, LineFault fault) {
    constexpr std::array rates{1000, 300, 50, 10};
    fault.last = s.random.chance(500) ? 1 : s.random.spread(2, 2000);
    fault.perMille = fault.last == 1 ? 1000 : s.random.pick(rates);
    s.world.line.faults(direction).push_back(fault);
}

Direction someDirection(Session& s) {
    return s.random.chance(500) ? Direction::toUnit : Direction::fromUnit;
}

void flood(Session& s) {
    const Bytes answers[]{simulator::frameOf("00000030050000"), {simulator::ack}, {simulator::nak}, Bytes(400, '~')};
    Micros moment = s.world.clock.now();
    for (std::int64_t burst = s.random.spread(1, 20); burst > 0; --burst) {
        s.world.line.put(Direction::fromUnit, s.random.pick(answers), moment);
        moment += fromMilliseconds(s.random.spread(1, 5000));
    }
    s.monitor.disturb(moment + fromSeconds(1));
}

void answerOtherwise(Session& s) {
    constexpr std::array prefixes{"", "0501", "0601", "0101", "300550", "300551", "300552", "300554"};
    constexpr std::array codes{"0000", "0101", "1001", "1004", "1101", "2204", "1234", "1234", "5555", "A0F1"};
    constexpr std::array endCodes{"00", "0F", "11", "13", "FF"};
    simulator::CommandAnswer answer;
    switch (s.random.below(6)) {
    case 0: answer.endCode = s.random.pick(endCodes); break;
    case 1: answer.silent = true; break;
    case 2: answer.wrongCheck = true; break;
    case 3: answer.delay = fromMilliseconds(s.random.spread(1, 16'000)); break;
    default: answer.resultCode = s.random.pick(codes); break;
    }
    s.unit.answers.push_back({s.random.pick(prefixes), s.random.chance(600) ? 0 : 1, answer});
}

void breakOperations(Session& s, OperationGate& gate, std::int64_t within, int failure) {
    const Persistence lasting = s.random.chance(500) ? Persistence::once : Persistence::permanent;
    const auto fail = failNthOfAll(gate.passed() + s.random.spread(1, within), lasting, Failure(failure, "It broke."));
    gate.add([&s, fail](const OperationCall& call) {
        if (s.faults) {
            fail(call);
        }
    });
}

struct FaultRow {
    const char* name;
    void (*inject)(Session&);
};
const FaultRow faultRows[]{
    {"bytes changed",
     [](Session& s) {
         constexpr std::array kinds{Kind::lose,   Kind::flip, Kind::twice, Kind::insert,
                                    Kind::insert, Kind::cut,  Kind::drop,  Kind::repeat};
         addLineFault(s, someDirection(s), {.kind = s.random.pick(kinds)});
     }},
    {"bytes late",
     [](Session& s) {
         addLineFault(s, someDirection(s), {.kind = Kind::delay, .time = fromMilliseconds(s.random.spread(1, 25'000))});
     }},
    {"another answer to packets",
     [](Session& s) {
         using namespace simulator;
         const Bytes answers[]{{ack}, {nak}, {can, can}, {can, ack}, {eot}, {crcStart}};
         addLineFault(s, Direction::fromUnit,
                      {.kind = Kind::replace, .writes = Writes::transfer, .bytes = s.random.pick(answers)});
     }},
    {"noise and early answers", flood},
    {"another answer to commands", answerOtherwise},
    {"silence or restart",
     [](Session& s) {
         const Micros off = s.world.clock.now() + s.random.spread(1, fromMilliseconds(100));
         s.world.restartUnit(off, off + fromMilliseconds(s.random.spread(10, 60'000)));
     }},
    {"blocks in pieces",
     [](Session& s) {
         s.unit.sendPieces = somePieces(s.random);
         s.piecesVary = s.random.chance(500);
     }},
    {"blocks late", [](Session& s) { s.unit.sendDelay = fromMilliseconds(s.random.spread(1, 4000)); }},
    {"packets sent again soon", [](Session& s) { s.unit.answerLimit = fromMilliseconds(s.random.spread(50, 2500)); }},
    {"EOT sent once", [](Session& s) { s.unit.repeatsEnd = false; }},
    {"port fails", [](Session& s) { breakOperations(s, s.world.port.operations(), 64, failureNumber::portLost); }},
    {"adapter pulled",
     [](Session& s) {
         s.comPort.pulledAt = s.world.clock.now() + s.random.spread(1, fromMilliseconds(200));
         s.comPort.backAt =
             s.random.chance(300) ? never : s.comPort.pulledAt + fromMilliseconds(s.random.spread(1, 60'000));
     }},
    {"disk fails", [](Session& s) { breakOperations(s, s.world.files.operations(), 16, failureNumber::fileBroken); }},
    {"disk full", [](Session& s) { s.world.files.setRoom(static_cast<std::size_t>(s.random.below(300'000))); }},
    {"unexpected actions of the operator",
     [](Session& s) {
         for (std::int64_t actions = s.random.spread(1, 8); actions > 0; --actions) {
             s.world.host.schedule(s.world.clock.now() + fromMilliseconds(s.random.spread(1, 60'000)),
                                   [&s] { s.actUnexpectedly(); });
         }
     }},
    {"operator cancels", [](Session& s) { s.cancels = 500; }},
};

Session::Session(std::uint64_t seed, bool wire) : random(seed), world(drawWorld(random)) {
    world.line.setSeed(random.draw());
    world.line.record().keep(wire ? SIZE_MAX : 0);
    // The unit holds another image than the file.
    unit.amplifierImage = unit.interfaceUnitImage = world.image;
    std::ranges::reverse(unit.amplifierImage);
    std::string usual(world.image.begin(), world.image.end());
    world.files.put("/short", usual.substr(1));
    world.files.put("/long", usual + std::string(100, 'x'));
    world.files.put("/readOnly", "");
    world.files.find("/readOnly")->readOnly = true;
    world.files.put("/other", usual.replace(simulator::typeTextOffset, 8, "KP42FIRM"));

    monitor.messageBegins = [this] { messageBegins(); };
    SimulatedHost& host = world.host;
    host.reactionTime = fromMilliseconds(random.spread(10, 8000));
    host.answerBox = [this](const Box&) { return random.chance(cancels) ? boxAnswer::cancel : boxAnswer::ok; };
    host.chooseFile = [this](const FileRequest& request) {
        const bool usualFile = !faults;
        const char* path = request.save ? savePaths[usualFile ? 0 : static_cast<std::size_t>(random.below(4))]
                                        : loadPaths[usualFile ? 0 : static_cast<std::size_t>(random.below(6))];
        return random.chance(cancels) ? std::nullopt : std::optional<std::string>(path);
    };
    // This operator also has the controls that the delivered screen hides.
    host.formChanges = [](Form& form, FormChange) {
        for (Control* control : form.controls) {
            const std::string& name = control->name;
            control->visible = control->visible || name == "cmdPresent" || name == "chkVerify" ||
                               name == "fraLanguage" || name == "cmdCancel";
        }
    };
}

void Session::run(const std::function<void()>& entry) {
    monitor.runEnded(world.host.run(entry));
}

void Session::act(const Action& action) {
    if (goesOn()) {
        run([&] {
            monitor.actionBegins(action);
            world.person.perform(action);
        });
    }
}

void Session::actUnexpectedly() {
    const std::vector<Action> actions = world.person.possible();
    if (faults && !actions.empty()) {
        const Action action = random.pick(actions);
        monitor.actionBegins(action);
        world.person.perform(action);
    }
}

// The beginning and the end of a transfer get more faults than the middle.
void Session::drawFaults(int perMille) {
    constexpr int endOfTransfer = 1925; // messages
    message = 0;
    due.clear();
    for (; random.chance(perMille); perMille = 350) {
        const std::int64_t part = random.below(100);
        const std::int64_t place = part < 45   ? random.between(0, 10)
                                   : part < 70 ? random.spread(1, endOfTransfer)
                                               : random.between(endOfTransfer - 10, endOfTransfer + 5);
        const FaultRow& row = random.pick(faultRows);
        due.emplace(static_cast<int>(place), [this, &row] {
            monitor.note(std::string("fault: ") + row.name);
            ++monitor.counts[row.name];
            row.inject(*this);
        });
    }
    messageBegins();
}

void Session::messageBegins() {
    for (; faults && due.contains(message); due.erase(due.find(message))) {
        due.find(message)->second();
    }
    if (faults && piecesVary) {
        unit.sendPieces = somePieces(random);
    }
    ++message;
}

// Stops all faults and lets running operations end.
void Session::stopFaults() {
    faults = piecesVary = false;
    cancels = 0;
    for (const Direction direction : {Direction::toUnit, Direction::fromUnit}) {
        world.line.faults(direction).clear();
    }
    world.files.setRoom({});
    const Micros now = world.clock.now();
    comPort.pulledAt = comPort.pulledAt > now ? never : comPort.pulledAt;
    comPort.backAt = std::min(comPort.backAt, now);
    const simulator::UnitOptions usual;
    unit.answers.clear();
    unit.sendPieces = {};
    unit.sendDelay = usual.sendDelay;
    unit.answerLimit = usual.answerLimit;
    unit.repeatsEnd = usual.repeatsEnd;
    world.host.schedule(now + fromSeconds(120), [] {});
    run({});
}

// Chooses the port as long as the program asks for it.
void Session::setPort() {
    for (int press = 0; press < 4 && goesOn() && !started(); ++press) {
        act(choose("frmStartUp", "cmbCom", defaultComPort - 1));
        act(click("frmStartUp", "cmdTest"));
    }
}

bool Session::press(const char* control) {
    act(click("frmMain", control));
    return monitor.succeeded;
}

void Session::finish(bool save) {
    if (!goesOn()) { // the operator has ended the program, maybe within an operation
        return;
    }
    stopFaults();
    setPort();
    if (!goesOn() || !started()) {
        return;
    }
    monitor.note("no more faults");
    if (frmMain().chkVerify.value == 1) {
        press("chkVerify");
    }
    act(click("frmMain", "optPresent", 0));
    press("cmdLoading");
    const bool writes = !save && frmMain().lblTitle[0].caption == frmMain().lblTitle[2].caption;
    const char* control = writes ? "cmdUpgrade" : "cmdPresent";
    const bool mayFail = shared.serialPort == nullptr; // a verification has closed the port
    if (!press(control) && !mayFail && goesOn()) {
        monitor.violation("an operation without faults does not succeed");
    }
}

Action weightedAction(Session& s) {
    std::vector<Action> actions;
    for (const Action& action : s.world.person.possible()) {
        const auto weight = std::ranges::find(weights, action.control, &std::pair<std::string_view, int>::first);
        actions.insert(actions.end(), weight == weights.end() ? 1 : static_cast<std::size_t>(weight->second), action);
    }
    return s.random.pick(actions);
}

Result Session::play(const std::function<void(World&)>& tamper, bool save) {
    monitor.actionBegins({});
    drawFaults(tamper ? 0 : 100);
    run(program::start);
    for (std::int64_t actions = tamper ? 0 : random.between(2, 6); actions > 0 && goesOn(); --actions) {
        drawFaults(700);
        act(weightedAction(*this));
    }
    if (tamper) {
        tamper(world);
    }
    finish(save);
    std::istringstream wire(world.line.record().text());
    for (std::string line; std::getline(wire, line);) {
        monitor.notes.push_back(line);
    }
    std::ranges::stable_sort(monitor.notes, {}, [](const std::string& line) { return line.substr(0, timeWidth); });
    return {monitor.violations, monitor.notes, monitor.counts, world.clock.now()};
}

} // namespace

Result runSession(std::uint64_t seed, bool wire, const std::function<void(World&)>& tamper) {
    return Session(seed, wire).play(tamper, seed % 2 == 1);
}

} // namespace soak
