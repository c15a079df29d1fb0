#include "story/recorder.h"

#include "base/checked.h"
#include "base/text.h"
#include "state/variables.h"
#include "story/parts.h"
#include "story/record/text.h"
#include "transfer/programState.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace story {

using namespace platform;

namespace {

// The form of the program, or its initial state before it is loaded.
template <class Shown>
const Shown& shown(const World& world, const char* name) {
    static const Shown none;
    const Form* loaded = world.host.form(name);
    return loaded == nullptr ? none : static_cast<const Shown&>(*loaded);
}

// The operations that have a line.
constexpr std::array recorded{Operation::choosePort, Operation::setSettings,    Operation::openPort,
                              Operation::closePort,  Operation::setBufferSizes, Operation::clearUnsent,
                              Operation::openFile,   Operation::readFile,       Operation::writeFile,
                              Operation::closeFile,  Operation::appendLine};

constexpr std::size_t shortestReply = 17; // STX, 10 digits, a result code, ETX, block check

std::string shortText(const Bytes& bytes) {
    return bytes.empty() ? "nothing" : bytes.size() >= simulator::checksumPacketSize ? "block" : bytesText(bytes);
}

// The visible controls of the first window.
std::string startWindow(const FrmStartUp& form) {
    if (!form.visible) {
        return "no start window";
    }
    std::string text = "start window at " + std::to_string(form.left) + ' ' + std::to_string(form.top);
    for (const Control* control : form.controls) {
        const bool shows = control->visible && control->kind != ControlKind::menu;
        text += shows ? ' ' + control->name : "";
        text += shows && !control->items.empty()
                    ? ' ' + at(control->items, control->listIndex) + " of " + std::to_string(control->items.size())
                    : "";
    }
    return text;
}

} // namespace

bool atRest() {
    using namespace FirmComm::state;
    return shared.programState == idle || shared.programState == idleAfterWrite || shared.programState == verified;
}

std::string obstaclesIn(const World& world) {
    const FrmMain& form = frmMain();
    const std::pair<bool, std::string> obstacles[]{
        {!form.visible, "no main window"},
        {!form.enabled, "window off"},
        {form.mousePointer == MousePointer::hourglass, "hourglass"},
        {frmWaitLoaded(), "progress dialog"},
        {world.host.keptAwake(), "awake"},
        {form.CommTimer.running(), "ticks"},
        {shared.stepBusy, "step busy"},
        {!atRest(), "state " + std::to_string(shared.programState)},
        {!world.host.violations().empty(), "violations"},
    };
    std::string text;
    for (const auto& [present, name] : obstacles) {
        text += present ? name + ". " : "";
    }
    return text;
}

Recorder::Recorder(World& world) : choose(world.host.chooseFile), world_(world) {
    world.line.addHook([this](const Transmission& transmission) { addTransmission(transmission); });
    world.line.changed = [this](const Transmission& transmission) { addArrival(transmission); };
    const auto onOperation = [this](const OperationCall& call) { addOperation(call.operation); };
    world.port.operations().add(onOperation);
    world.files.operations().add(onOperation);
    world.host.boxOpened = [this](const Box& box) {
        addEvent("box " + box.title + '|' + replaceAll(replaceAll(box.text, '\r', ' '), '\n', '/') + '|' +
                 std::to_string(box.style));
    };
    world.host.answerBox = [this](const Box& box) {
        lastAt_ = world_.clock.now(); // without the operator's reaction time
        addChanges();
        return answer(box);
    };
    world.host.chooseFile = [this](const FileRequest& request) {
        lastAt_ = world_.clock.now();
        const FileDialog& dialog = request.dialog;
        addEvent((request.save ? "save " : "open ") + dialog.initialDirectory + '|' + dialog.fileName + '|' +
                 dialog.filter + std::to_string(dialog.flags));
        scheduleEvent();
        return choose(request);
    };
    world.host.confirmOverwrite = [this](const FileRequest& request) {
        addEvent("overwrite " + *request.path);
        return true;
    };
    scheduleEvent();
}

void Recorder::addLine(const std::string& line) {
    addChanges();
    lines_.push_back({line});
}

std::string Recorder::take() {
    addChanges();
    std::string text;
    for (const Line& line : std::exchange(lines_, {})) {
        text += line.text + (line.count > 1 ? " x" + std::to_string(line.count) : "") + '\n';
    }
    return text;
}

// What the operator sees, a line for each part. It is called at each event, so it makes few texts of its own.
std::string Recorder::state() const {
    const auto& form = shown<FrmMain>(world_, "frmMain");
    const auto& wait = shown<FrmWait>(world_, "frmWait");
    std::string text;
    text.reserve(300);
    const auto add = [&text](const auto&... parts) { ((text += parts), ..., (text += '\n')); };
    const auto addRow = [&](const char* name, std::size_t row) {
        add(name, form.lblTitle[row].caption, " ", form.lblVersion[row].caption);
    };
    add(startWindow(shown<FrmStartUp>(world_, "frmStartUp")));
    add(form.visible ? "main window" : "no main window");
    add(form.enabled ? "window on" : "window off");
    add(form.mousePointer == MousePointer::hourglass ? "hourglass"
        : form.mousePointer == MousePointer::arrow   ? "arrow"
                                                     : "usual pointer");
    addRow("amplifier ", 0);
    addRow("interface unit ", 1);
    addRow("file ", 2);
    add(form.cmdUpgrade.enabled ? "upgrade on" : "upgrade off");
    add(form.CommTimer.enabled() ? "ticks " : "no ticks ", std::to_string(form.CommTimer.interval()));
    if (frmWaitLoaded() && wait.visible) {
        add(wait.lblMsg.caption, " 0 to ", std::to_string(static_cast<int>(wait.prbComm.max)));
    } else {
        add(frmWaitLoaded() ? "progress hidden" : "no progress");
    }
    add(wait.cmdCancel.enabled ? "cancel on" : "cancel off");
    add(world_.host.keptAwake() ? "awake" : "may sleep");
    return text;
}

// Adds the time without events before this moment, and what has changed.
void Recorder::addChanges() {
    if (const Micros quiet = world_.clock.now() - std::exchange(lastAt_, world_.clock.now()); quiet >= fromSeconds(1)) {
        char length[32];
        std::snprintf(length, sizeof length, "(%.1f s)", static_cast<double>(quiet) / 1e6);
        add(length, length[0]);
    }
    if (std::string now = state(); now != state_) {
        std::string changes;
        const Parts before = linesOf(state_), parts = linesOf(now);
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const bool same = part < before.size() && parts[part] == before[part];
            changes += same ? "" : (changes.empty() ? "" : ", ") + parts[part].substr(0, parts[part].size() - 1);
        }
        lines_.push_back({'[' + changes + ']'});
        state_ = std::move(now);
    }
}

// `waits`: a packet or command, which the other side answers.
void Recorder::addEvent(const std::string& event, bool waits) {
    addChanges();
    const auto bar = frmWaitLoaded() ? static_cast<int>(frmWait().prbComm.value) : 0;
    const int moved = bar - std::exchange(bar_, bar);
    add(std::exchange(clears_, {}) + event + (bar > 0 && moved != 0 ? '+' + std::to_string(moved) : ""), event[0],
        waits);
}

// Adds a new line, or completes a line that waits for an answer.
void Recorder::add(const std::string& text, char side, bool waits) {
    const char waiting = lines_.empty() ? '\0' : lines_.back().waits;
    if (waiting != 0 && ((side == '<' && waiting == '>') || (side == '>' && waiting == '<') || side == '(')) {
        lines_.back() = {lines_.back().text + ' ' + text};
    } else {
        lines_.push_back({text, waits ? side : '\0'});
    }
    if (const std::size_t last = lines_.size() - 1;
        last > 0 && lines_[last].waits == 0 && lines_[last - 1].text == lines_[last].text) {
        lines_.pop_back();
        ++lines_.back().count;
    }
}

void Recorder::addOperation(Operation operation) {
    clears_ += operation == Operation::clearReceived ? "-" : "";
    if (std::ranges::find(recorded, operation) != recorded.end()) {
        addEvent(std::string(nameOf(operation)));
    }
    if (operation == Operation::closePort || operation == Operation::readFile) {
        scheduleEvent();
    }
}

void Recorder::scheduleEvent() {
    if (!std::exchange(eventPending_, true)) {
        world_.host.schedule(world_.clock.now(), [this] {
            eventPending_ = false;
            addEvent("~");
        });
    }
}

void Recorder::addArrival(const Transmission& transmission) {
    char delay[32] = "";
    if (const Micros late = transmission.at - world_.clock.now(); late >= fromMilliseconds(100)) {
        std::snprintf(delay, sizeof delay, " in %.1f s", static_cast<double>(late) / 1e6);
    }
    const char* side = transmission.direction == Direction::toUnit ? ">" : "<";
    const Bytes& bytes = transmission.bytes;
    addEvent("arrives " + (side + shortText(bytes)) + delay);
}

void Recorder::addTransmission(const Transmission& transmission) {
    const Bytes& bytes = transmission.bytes;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!frame_.empty() && transmission.direction == Direction::toUnit && transmission.at != frameAt_) {
        addEvent(">part of a command"); // its port has failed
        frame_.clear();
    }
    if (transmission.direction == Direction::toUnit && frame_.empty() && messageBegins) {
        messageBegins();
    }
    if (transmission.direction == Direction::toUnit && (!frame_.empty() || text[0] == simulator::stx)) {
        frameAt_ = transmission.at;
        frame_ += text; // STX, the text, ETX and the block check are written one by one
        if (frame_.size() > 3 && frame_[frame_.size() - 2] == simulator::etx) {
            addEvent('>' + frame_.substr(6, frame_.size() - 8), true);
            frame_.clear();
        }
    } else if (transmission.direction == Direction::fromUnit && text[0] == simulator::stx &&
               text.size() >= shortestReply) {
        addEvent('<' + std::string(text.substr(11, 4)));
        scheduleEvent();
    } else if (!text.empty()) {
        const bool packet = bytes.size() > 10 || bytes[0] == simulator::eot;
        std::string event = transmission.direction == Direction::toUnit ? ">" : "<";
        event += shortText(bytes);
        addEvent(event, packet);
    }
}

} // namespace story
