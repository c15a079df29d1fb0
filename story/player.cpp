#include "story/player.h"

#include "app/program.h"
#include "story/record/recording.h"
#include "story/record/text.h"
#include "story/recordedHost.h"
#include "story/recorder.h"
#include "ui/forms.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace story {

using namespace platform;

namespace {

// Splits a text at the lines that begin with `mark`. The first part is the text above them.
std::vector<std::string> partsOf(const std::string& text, const std::string& mark) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1 + mark.size()) {
        end = text.find('\n' + mark, begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? end : end + 1 - begin));
    }
    return parts;
}

// Performs the commands of scripts in a World.
class Player {
  public:
    Player() { world_.line.record().keep(0); }

    // Performs both scripts and returns the second one with what was seen.
    std::string play(const std::string& preamble, const std::string& script) {
        perform(preamble);
        const std::string played = perform(script);
        return played + change("amplifier", before_, unit_.amplifierImage) +
               change("interface unit", UnitOptions().interfaceUnitImage, unit_.interfaceUnitImage) +
               change("saved.bin", {}, bytesOf(content(World::savedPath)));
    }

  private:
    using UnitOptions = simulator::UnitOptions;

    std::string perform(const std::string& script) {
        std::string played;
        std::istringstream lines(script);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("* ") || line.starts_with(". ")) {
                performLine(line.substr(2));
                const std::string seen = recorder_.take() + obstacles();
                played += line + '\n' + (line[0] == '*' ? seen : "");
            }
        }
        return played;
    }

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
    Micros duration() { return static_cast<Micros>(next<double>() * 1e6); }
    Micros moment() { return world_.clock.now() + duration(); }
    SimulatedFile& file() { return *world_.files.find(next()); }

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
        const std::string refused(world_.person.refusal(action));
        refused.empty() ? run([&] { world_.person.perform(action); }) : recorder_.addLine("refused: " + refused);
    }

    void doAfter() {
        const Micros at = moment();
        world_.host.schedule(at, [this, line = rest()] {
            recorder_.addLine("! " + line);
            performLine(line);
        });
    }

    void answer() {
        simulator::AnswerRule rule{next(), next<int>()};
        const std::string what = next();
        simulator::CommandAnswer& answer = rule.answer;
        answer.ignored = what == "ignored";
        answer.silent = what == "silent" || answer.ignored;
        answer.wrongCheck = what == "wrongCheck";
        answer.delay = what == "delayed" ? duration() : 0;
        if (what == "data") {
            answer.data = rest();
        } else if (what.size() == 4) {
            answer.resultCode = what;
        }
        unit_.answers.push_back(rule);
    }

    void fail() {
        const Operation operation = operations.at(next());
        const int n = std::max(1, next<int>());
        for (OperationGate* gate : {&world_.port.operations(), &world_.files.operations()}) {
            gate->add(failNth(operation, gate->passed(operation) + n, Persistence::once,
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
        }
    }

    void setDialogPath(const std::string& path) {
        recorder_.choose = [path](const FileRequest&) { return path.empty() ? std::nullopt : std::optional(path); };
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
    void restart(Micros at) { world_.restartUnit(at, at + fromSeconds(2)); }
    void holdImage(std::uint32_t seed) { before_ = unit_.amplifierImage = simulator::makeSampleImage({.seed = seed}); }
    void repair() { unit_ = {.amplifierImage = unit_.amplifierImage, .interfaceUnitImage = unit_.interfaceUnitImage}; }

    World world_;
    UnitOptions& unit_ = world_.unit.options();
    Recorder recorder_{world_};
    Bytes before_ = unit_.amplifierImage;
    bool running_ = false;
    Control* found_ = nullptr;
    std::istringstream words_;
    const std::map<std::string, std::function<void()>> commands_{
        // the operator
        {"start", [this] { run(program::start); }},
        {"press", [this] { act(found()); }},
        {"choose", [this] { act(choose("frmStartUp", "cmbCom", next<int>() - 1)); }},
        {"close", [this] { act(closing(next())); }},
        {"after", [this] { doAfter(); }},
        {"cancelBox", [this] { recorder_.answer = [](const Box& box) { return box.style % 2 + 1; }; }},
        {"dialog", [this] { setDialogPath(rest()); }},
        {"reaction", [this] { world_.host.reactionTime = duration(); }},
        // the host
        {"show", [this] { found(), found_->visible = found_->enabled = true; }},
        {"wait", [this] { world_.clock.advanceTo(moment()); }},
        {"instance", [this] { world_.host.otherInstance = true; }},
        {"fail", [this] { fail(); }},
        {"endRequest", [this] { world_.host.endRequested(); }},
        // files
        {"put", [this] { put(next()); }},
        {"remove", [this] { world_.files.remove(next()); }},
        {"unreadable", [this] { file().unreadable = true; }},
        {"readOnly", [this] { file().readOnly = true; }},
        {"cutAt", [this] { file().content.resize(next<std::size_t>()); }},
        {"readable", [this] { file().readable.emplace(next<std::size_t>()); }},
        {"room", [this] { world_.files.setRoom(next<std::size_t>()); }},
        {"firmware", [this] { makeFirmware(next<std::uint16_t>()); }},
        // the line
        {"pull", [this] { world_.port.comPort(defaultComPort).pulledAt = moment(); }},
        {"plug", [this] { world_.port.comPort(defaultComPort).backAt = moment(); }},
        {"missing", [this] { world_.port.removeComPort(next<int>()); }},
        {"held", [this] { world_.port.comPort(next<int>()).state = ComPort::State::held; }},
        {"connect", [this] { world_.port.comPort(next<int>()).line = &world_.line; }},
        {"flip", [this] { flip(next<int>()); }},
        // the unit
        {"answer", [this] { answer(); }},
        {"packets", [this] { packets(next<int>()); }},
        {"send", [this] { send(next<int>()); }},
        {"repair", [this] { repair(); }},
        {"restart", [this] { restart(moment()); }},
        {"silence", [this] { unit_.silentFrom = world_.clock.now(); }},
        {"image", [this] { holdImage(next<std::uint32_t>()); }},
        {"checksum", [this] { unit_.crc = false; }},
        {"state", [this] { unit_.stateText = next(), unit_.sensorCount = next<int>(); }},
        {"model", [this] { unit_.modelText = rest(); }},
        {"version", [this] { unit_.versionText = rest(); }},
        {"type", [this] { unit_.typeKey = next<char>(), unit_.rawVersion = next<std::uint16_t>(); }},
        {"startDelay", [this] { unit_.startDelay = duration(); }},
        {"sendDelay", [this] { unit_.sendDelay = duration(); }},
        {"answerLimit", [this] { unit_.answerLimit = duration(); }},
        {"oneEnd", [this] { unit_.repeatsEnd = false; }},
    };
};

} // namespace

std::string play(const std::string& file) {
    std::vector<std::string> stories = partsOf('\n' + file, "== "); // the first may have no text above it
    const std::vector<std::string> blocks = partsOf(stories.front(), ":= ");
    std::string played = stories.front();
    for (std::size_t story = 1; story < stories.size(); ++story) {
        const std::string& script = stories[story];
        const std::size_t nameEnd = script.find('\n') + 1;
        if (script.substr(nameEnd).starts_with(recordedMark)) {
            played += "== " + script.substr(0, nameEnd) + RecordedHost(script.substr(nameEnd)).play();
            continue;
        }
        std::string text = script.substr(0, nameEnd) + Player().play(blocks[0], script);
        for (std::size_t block = 1; block < blocks.size(); ++block) {
            const std::size_t bodyAt = blocks[block].find('\n');
            const std::string name = "\n:: " + blocks[block].substr(0, bodyAt + 1);
            const std::string body = blocks[block].substr(bodyAt);
            for (std::size_t at = text.find(body); at != std::string::npos; at = text.find(body)) {
                text.replace(at, body.size(), name);
            }
        }
        played += "== " + text;
    }
    return played.substr(1);
}

} // namespace story
