#include "story/player.h"

#include "app/program.h"
#include "state/variables.h"
#include "story/monitor.h"
#include "story/parts.h"
#include "story/record/recording.h"
#include "story/record/text.h"
#include "story/recordedHost.h"
#include "story/recorder.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

namespace story {

using namespace platform;

namespace {

using Kind = LineFault::Kind;
const std::map<std::string, Kind> lineFaults{
    {"lose", Kind::lose},     {"flip", Kind::flip},       {"twice", Kind::twice},
    {"insert", Kind::insert}, {"cut", Kind::cut},         {"drop", Kind::drop},
    {"repeat", Kind::repeat}, {"replace", Kind::replace}, {"delay", Kind::delay}};

void replaceLines(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from)) {
        text.replace(at, from.size(), to);
    }
}

// Performs the commands of stories in a World.
class Player : public Session {
  public:
    Player() {
        recorder_.messageBegins = [this] { messageBegins(); };
        recorder_.answer = [this](const Box& box) {
            return cancels(500) || (cancelsBox_ && box.style % 2 == 1) ? boxAnswer::cancel : boxAnswer::ok;
        };
    }

    World& world() override { return world_; }
    const Monitor* monitor() const override { return monitor_ ? &*monitor_ : nullptr; }
    bool goesOn() const override { return !world_.host.ended() && (!monitor_ || monitor_->violations.empty()); }

    std::string end() override {
        return change("amplifier", before_[1], unit_.amplifierImage) +
               change("interface unit", before_[0], unit_.interfaceUnitImage) +
               change("saved.bin", {}, bytesOf(content(World::savedPath)));
    }

    std::string perform(const std::string& script) override {
        std::string played;
        std::istringstream lines(script);
        for (std::string line; std::getline(lines, line) && (!monitor_ || monitor_->violations.empty());) {
            if (line.starts_with("* ") || line.starts_with(". ")) {
                performLine(line.substr(2));
                const std::string seen = recorder_.take() + obstacles();
                played += line + '\n' + (line[0] == '*' ? seen : "");
                if (line[0] == '*') {
                    due_.clear();
                    message_ = 0;
                }
            }
        }
        return played;
    }

  private:
    using UnitOptions = simulator::UnitOptions;

    // What keeps the operator from going on after a line.
    std::string obstacles() const {
        const Form* main = world_.host.form("frmMain"); // the first call of frmMain() would load it
        const bool started = main != nullptr && main->visible && !world_.host.ended();
        const std::string found = started ? obstaclesIn(world_) : "";
        return found.empty() ? "" : "{stays: " + found + "}\n";
    }

    void performLine(const std::string& line) {
        words_ = std::istringstream(line);
        const auto command = commands_.find(next());
        if (command == commands_.end()) {
            throw std::invalid_argument("No such command: " + line);
        }
        command->second();
    }

    // Read the arguments of a command.
    template <class Value = std::string>
    Value next() {
        Value value{};
        words_ >> value;
        return value;
    }
    std::string rest() {
        std::string text;
        std::getline(words_ >> std::ws, text);
        return unescaped(text);
    }
    std::string command() { // another one, as it is written
        std::string text;
        std::getline(words_ >> std::ws, text);
        return text;
    }
    Micros duration() { return static_cast<Micros>(next<double>() * 1e6); }
    Micros moment() { return world_.clock.now() + duration(); }
    SimulatedFile& file() {
        const auto path = next();
        SimulatedFile* file = world_.files.find(path);
        return file == nullptr ? throw std::invalid_argument("No such file: " + path) : *file;
    }

    static Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }
    std::string content(const std::string& path) {
        return world_.files.find(path) == nullptr ? "" : world_.files.find(path)->content;
    }

    std::string change(const std::string& name, const Bytes& before, const Bytes& now) const {
        const auto same = std::ranges::mismatch(now, unit_.amplifierImage).in1 - now.begin();
        return now == before         ? ""
               : now == world_.image ? "{" + name + ": the file}\n"
                                     : "{" + name + ": " + std::to_string(now.size()) + " bytes, " +
                                           std::to_string(same) + " as the unit's}\n";
    }

    void run(const std::function<void()>& event) {
        if (std::exchange(running_, true)) {
            return event();
        }
        const RunEnd end = world_.host.run(event);
        running_ = false;
        if (monitor_) {
            monitor_->runEnded(end);
        }
        if (end != RunEnd::idle) {
            recorder_.addLine(end == RunEnd::programEnded ? "the program ends" : world_.host.stuckReason());
        }
    }

    // The control of that name, of a visible form if there is one. Reads its index if it is in an array.
    Action found() {
        const std::string name = next();
        Action action = click("", name);
        for (const Form* form : world_.host.forms()) {
            const auto at = std::ranges::find(form->controls, name, [](auto* control) { return control->name; });
            if (at != form->controls.end() && (form->visible || action.form.empty())) {
                action.form = form->name;
                action.index = (*at)->index;
                found_ = *at;
            }
        }
        action.index = action.index < 0 ? -1 : next<int>();
        return action;
    }
    void act(const Action& action) {
        const std::string refused(world_.host.ended() ? "the program has ended" : world_.theOperator.refusal(action));
        if (!refused.empty()) {
            return recorder_.addLine("refused: " + refused);
        }
        run([&] {
            beginAction(action);
            world_.theOperator.perform(action);
        });
    }
    void beginAction(const Action& action) {
        if (monitor_) {
            monitor_->actionBegins(action);
        }
    }
    void start() {
        beginAction({});
        run(program::start);
    }
    // Something that the operator could do now; a seed chooses it.
    void doAnything(std::uint64_t seed) {
        const std::vector<Action> actions = world_.theOperator.possible();
        if (!faultless_ && !actions.empty()) {
            const Action action = Random(seed).pick(actions);
            recorder_.addLine("! " + action.form + ' ' + action.control);
            act(action);
        }
    }

    void performNow(const std::string& line) {
        recorder_.addLine("! " + line);
        performLine(line);
    }
    void doAfter() {
        const Micros at = moment();
        world_.host.schedule(at, [this, line = command()] { performNow(line); });
    }
    void doAtMessage() {
        next();
        const int number = next<int>();
        due_.emplace(number, command());
    }
    void messageBegins() {
        for (++message_; due_.contains(message_);) {
            performNow(due_.extract(due_.find(message_)).mapped());
        }
        if (pieces_) {
            constexpr std::array<std::size_t, 11> tricky{1, 2, 3, 4, 5, 126, 127, 128, 129, 130, 131};
            unit_.sendPieces = {pieces_->chance(500) ? pieces_->pick(tricky)
                                                     : static_cast<std::size_t>(pieces_->between(1, 131)),
                                fromMilliseconds(pieces_->spread(1, 4000))};
        }
    }

    bool cancels(int perMille) { return cancels_ && cancels_->chance(perMille); }

    // The operator of the service screen.
    void showControls() {
        world_.host.formChanges = [](Form& form, FormChange) {
            for (Control* control : form.controls) {
                const std::string& name = control->name;
                control->visible = control->visible || name == "cmdPresent" || name == "chkVerify" ||
                                   name == "fraLanguage" || name == "cmdCancel";
            }
        };
    }

    bool started() const { return world_.host.form("frmMain") != nullptr && frmMain().visible; }
    void pressIf(bool needed, const char* form, const char* control, int index = -1) {
        if (needed && goesOn()) {
            act(click(form, control, index));
        }
    }
    // All faults stop, and the operator writes or saves, which must succeed.
    void finish(const std::string& what) {
        if (!goesOn()) { // the operator has ended the program, maybe within an operation
            return;
        }
        endFaults();
        world_.host.schedule(world_.clock.now() + fromSeconds(120), [] {});
        run({});
        for (int press = 0; press < 4 && goesOn() && !started(); ++press) {
            act(choose("frmStartUp", "cmbCom", defaultComPort - 1));
            pressIf(true, "frmStartUp", "cmdTest");
        }
        if (!goesOn() || !started()) {
            return;
        }
        recorder_.addLine("no more faults");
        pressIf(frmMain().chkVerify.value == 1, "frmMain", "chkVerify");
        pressIf(true, "frmMain", "optPresent", 0);
        pressIf(true, "frmMain", "cmdLoading");
        const bool writes = what == "write" && frmMain().lblTitle[0].caption == frmMain().lblTitle[2].caption;
        const bool mayFail = shared.serialPort == nullptr; // a verification has closed the port
        pressIf(true, "frmMain", writes ? "cmdUpgrade" : "cmdPresent");
        if (monitor_ && !monitor_->succeeded && !mayFail && goesOn()) {
            monitor_->violation("an operation without faults does not succeed");
        }
    }
    void endFaults() {
        faultless_ = true;
        pieces_.reset();
        cancels_.reset();
        due_.clear();
        setDialogPath(World::firmwarePath);
        savePath_ = World::savedPath;
        for (const Direction direction : {Direction::toUnit, Direction::fromUnit}) {
            world_.line.faults(direction).clear();
        }
        world_.files.setRoom({});
        ComPort& comPort = world_.port.comPort(defaultComPort);
        comPort.pulledAt = comPort.pulledAt > world_.clock.now() ? never : comPort.pulledAt;
        comPort.backAt = std::min(comPort.backAt, world_.clock.now());
        const UnitOptions usual;
        unit_.replies.clear();
        unit_.sendPieces = {};
        unit_.sendDelay = usual.sendDelay;
        unit_.answerLimit = usual.answerLimit;
        unit_.repeatsEnd = usual.repeatsEnd;
    }

    void breakOperations(OperationGate& gate, int failure) {
        const std::int64_t n = gate.passed() + next<int>();
        const auto lasting = next() == "forever" ? Persistence::permanent : Persistence::once;
        addFailure(gate, failNthOfAll(n, lasting, {failure, "It broke."}));
    }
    void addFailure(OperationGate& gate, const OperationHook& fail) {
        gate.add([this, fail](const OperationCall& call) {
            if (!faultless_) {
                fail(call);
            }
        });
    }
    void disturb() {
        const Direction direction = next() == "toUnit" ? Direction::toUnit : Direction::fromUnit;
        LineFault fault{.kind = lineFaults.at(next())};
        fault.last = next<std::int64_t>();
        fault.perMille = next<int>();
        fault.time = fault.kind == Kind::delay ? duration() : 0;
        if (fault.kind == Kind::replace) {
            fault.writes = Writes::transfer;
            fault.bytes = bytesOf(rest());
        }
        world_.line.faults(direction).push_back(fault);
    }
    void makeNoise() {
        const Micros at = moment();
        world_.line.put(Direction::fromUnit, bytesOf(rest()), at);
        if (monitor_) {
            monitor_->disturb(at + fromSeconds(1));
        }
    }
    void setPace() {
        LinePace pace;
        pace.bitsPerSecond = next<int>();
        pace.latency = duration();
        pace.wholeWrites = next() == "whole";
        world_.line.setPace(pace);
    }
    void makeSample(const std::string& path, std::uint32_t seed) {
        const Bytes image = simulator::makeSampleImage({.typeText = rest(), .seed = seed});
        world_.files.put(path, std::string(image.begin(), image.end()));
        world_.image = path == World::firmwarePath ? image : world_.image;
    }

    void reply() {
        simulator::ReplyRule rule{next(), next<int>()};
        const std::string what = next();
        simulator::CommandReply& reply = rule.reply;
        reply.ignored = what == "ignored";
        reply.silent = what == "silent" || reply.ignored;
        reply.wrongCheck = what == "wrongCheck";
        reply.delay = what == "delayed" ? duration() : 0;
        rule.prefix = rule.prefix == "any" ? "" : rule.prefix;
        if (what == "end") {
            reply.endCode = next();
        }
        if (what == "data") {
            reply.data = rest();
        } else if (what.size() == 4) {
            reply.resultCode = what;
        }
        unit_.replies.push_back(rule);
    }

    void fail() {
        const auto named = std::ranges::find(operationNames, next());
        if (named == operationNames.end()) {
            throw std::invalid_argument("No such operation");
        }
        const auto operation = static_cast<Operation>(named - operationNames.begin());
        const int n = std::max(1, next<int>());
        for (OperationGate* gate : {&world_.port.operations(), &world_.files.operations()}) {
            addFailure(*gate, failNth(operation, gate->passed(operation) + n, Persistence::once,
                                      {failureNumber::portLost, "It broke."}));
        }
    }

    void packets(int first) {
        using Handling = simulator::PacketAnswer::Handling;
        const int last = next<int>();
        const std::string handling = next();
        for (int number = first; number <= last; ++number) {
            simulator::PacketAnswer& packet = unit_.packetAnswers[number];
            packet.handling = handling == "ignored"   ? Handling::ignored
                              : handling == "cancels" ? Handling::cancels
                                                      : Handling::normal;
            packet.bytes = handling == "unanswered" ? std::optional(Bytes()) : std::nullopt;
            if (handling == "lost") { // although the unit acknowledges it
                packet = {.handling = Handling::ignored, .bytes = Bytes{simulator::ack}};
            }
        }
    }

    void setDialogPath(const std::string& path) {
        openPath_ = savePath_ = path;
        recorder_.choose = [this](const FileRequest& request) {
            const std::string& chosen = request.save ? savePath_ : openPath_;
            return chosen.empty() || cancels(500) ? std::nullopt : std::optional(chosen);
        };
    }
    void put(const std::string& path) { world_.files.put(path, content(path) + rest()); }
    void makeFirmware(std::uint16_t version) {
        world_.image = simulator::makeSampleImage({.typeText = rest(), .rawVersion = version});
        world_.files.put(World::firmwarePath, std::string(world_.image.begin(), world_.image.end()));
    }
    void flip(std::int64_t write) {
        world_.line.faults(Direction::fromUnit) = {{.kind = LineFault::Kind::flip,
                                                    .writes = Writes::transfer,
                                                    .first = write,
                                                    .last = write,
                                                    .place = next<std::size_t>()}};
    }
    void send(int packet) { unit_.sentInstead[packet] = bytesOf(rest()); }
    void restart(Micros at) {
        const Micros off = duration();
        world_.restartUnit(at, at + (off == 0 ? fromSeconds(2) : off));
    }
    void holdImage(Bytes& image, std::size_t unit) {
        before_[unit] = image = simulator::makeSampleImage({.seed = next<std::uint32_t>()});
    }
    void repair() { unit_ = {.amplifierImage = unit_.amplifierImage, .interfaceUnitImage = unit_.interfaceUnitImage}; }

    World world_;
    UnitOptions& unit_ = world_.unit.options();
    Recorder recorder_{world_};
    std::optional<Monitor> monitor_;
    std::array<Bytes, 2> before_{unit_.interfaceUnitImage, unit_.amplifierImage};
    bool running_ = false, faultless_ = false, cancelsBox_ = false;
    std::optional<Random> cancels_, pieces_;
    std::string openPath_, savePath_;
    std::multimap<int, std::string> due_; // commands, by messages of the program since the last "*" line
    int message_ = 0;
    Control* found_ = nullptr;
    std::istringstream words_;
    const std::map<std::string, std::function<void()>> commands_{
        // the operator
        {"start", [this] { start(); }},
        {"press", [this] { act(found()); }},
        {"choose", [this] { act(choose("frmStartUp", "cmbCom", next<int>() - 1)); }},
        {"close", [this] { act(closing(next())); }},
        {"after", [this] { doAfter(); }},
        {"at", [this] { doAtMessage(); }},
        {"anything", [this] { doAnything(next<std::uint64_t>()); }},
        {"finish", [this] { finish(next()); }},
        {"controls", [this] { showControls(); }},
        {"cancelBox", [this] { cancelsBox_ = true; }},
        {"cancels", [this] { cancels_.emplace(next<std::uint64_t>()); }},
        {"dialog", [this] { setDialogPath(rest()); }},
        {"save", [this] { savePath_ = rest(); }},
        {"reaction", [this] { world_.host.reactionTime = duration(); }},
        // the host
        {"show", [this] { found(), found_->visible = found_->enabled = true; }},
        {"wait", [this] { world_.clock.advanceTo(moment()); }},
        {"instance", [this] { world_.host.otherInstance = true; }},
        {"fail", [this] { fail(); }},
        {"failPort", [this] { breakOperations(world_.port.operations(), failureNumber::portLost); }},
        {"failDisk", [this] { breakOperations(world_.files.operations(), failureNumber::fileBroken); }},
        {"endRequest", [this] { world_.host.endRequested(); }},
        // files
        {"put", [this] { put(next()); }},
        {"remove", [this] { world_.files.remove(next()); }},
        {"unreadable", [this] { file().unreadable = true; }},
        {"readOnly", [this] { file().readOnly = true; }},
        {"cutAt", [this] { file().content.resize(next<std::size_t>()); }},
        {"readable", [this] { file().readable.emplace(next<std::size_t>()); }},
        {"room", [this] { world_.files.setRoom(next<std::size_t>()); }},
        {"copy",
         [this] {
             auto from = next();
             world_.files.put(next(), content(from));
         }},
        {"sample",
         [this] {
             auto path = next();
             makeSample(path, next<std::uint32_t>());
         }},
        {"firmware", [this] { makeFirmware(next<std::uint16_t>()); }},
        // the line
        {"pull", [this] { world_.port.comPort(defaultComPort).pulledAt = moment(); }},
        {"plug", [this] { world_.port.comPort(defaultComPort).backAt = moment(); }},
        {"missing", [this] { world_.port.removeComPort(next<int>()); }},
        {"held", [this] { world_.port.comPort(next<int>()).state = ComPort::State::held; }},
        {"connect", [this] { world_.port.comPort(next<int>()).line = &world_.line; }},
        {"pace", [this] { setPace(); }},
        {"line", [this] { disturb(); }},
        {"lineSeed", [this] { world_.line.setSeed(next<std::uint64_t>()); }},
        {"noise", [this] { makeNoise(); }},
        {"flip", [this] { flip(next<int>()); }},
        // the unit
        {"reply", [this] { reply(); }},
        {"packets", [this] { packets(next<int>()); }},
        {"send", [this] { send(next<int>()); }},
        {"repair", [this] { repair(); }},
        {"restart", [this] { restart(moment()); }},
        {"silence", [this] { unit_.silentFrom = world_.clock.now(); }},
        {"image", [this] { holdImage(unit_.amplifierImage, 1); }},
        {"interfaceImage", [this] { holdImage(unit_.interfaceUnitImage, 0); }},
        {"checksum", [this] { unit_.crc = false; }},
        {"state", [this] { unit_.stateText = next(), unit_.sensorCount = next<int>(); }},
        {"model", [this] { unit_.modelText = rest(); }},
        {"version", [this] { unit_.versionText = rest(); }},
        {"type", [this] { unit_.typeKey = next<char>(), unit_.rawVersion = next<std::uint16_t>(); }},
        {"startDelay", [this] { unit_.startDelay = duration(); }},
        {"replyDelay", [this] { unit_.replyDelay = duration(); }},
        {"packetDelay", [this] { unit_.packetDelay = duration(); }},
        {"varyPieces", [this] { pieces_.emplace(next<std::uint64_t>()); }},
        {"pieces", [this] { unit_.sendPieces.size = next<std::size_t>(), unit_.sendPieces.pause = duration(); }},
        {"sendDelay", [this] { unit_.sendDelay = duration(); }},
        {"answerLimit", [this] { unit_.answerLimit = duration(); }},
        {"oneEnd", [this] { unit_.repeatsEnd = false; }},
        // the rules
        {"rules", [this] { monitor_.emplace(world_, [this](const std::string& line) { recorder_.addLine(line); }); }},
    };
};

} // namespace

std::unique_ptr<Session> newSession() {
    return std::make_unique<Player>();
}

std::string play(const std::string& file) {
    const Parts stories = partsOf(file, "== ");
    const Parts head = partsOf(stories.front(), ":= ");
    std::vector<std::pair<std::string, std::string>> blocks; // whole lines: a name, and the lines that it stands for
    for (auto block = head.begin() + 1; block != head.end(); ++block) {
        const std::size_t nameEnd = block->find('\n');
        blocks.emplace_back("\n:: " + block->substr(3, nameEnd - 2), block->substr(nameEnd));
    }
    std::string played = stories.front();
    for (auto story = stories.begin() + 1; story != stories.end(); ++story) {
        const std::size_t nameEnd = story->find('\n') + 1;
        std::string lines = story->substr(nameEnd);
        std::string text = story->substr(0, nameEnd);
        if (lines.starts_with(recordedMark)) {
            played += text + RecordedHost(lines).play();
            continue;
        }
        lines.insert(0, "\n");
        std::for_each(blocks.rbegin(), blocks.rend(),
                      [&](const auto& block) { replaceLines(lines, block.first, block.second); });
        const auto session = newSession();
        session->perform(head.front());
        text += session->perform(lines);
        text += session->end();
        for (const auto& [name, body] : blocks) {
            replaceLines(text, body, name);
        }
        played += text;
    }
    return played;
}

} // namespace story
