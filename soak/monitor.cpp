#include "soak/monitor.h"

#include "state/variables.h"
#include "transfer/programState.h"

#include <algorithm>

namespace soak {

using platform::Box;
using platform::Direction;
using platform::FormChange;
using platform::MousePointer;
using platform::Passage;

namespace {

constexpr int mostBoxesWithoutPort = 4;
constexpr Micros slack = fromMilliseconds(250); // for ticks, and for bytes on their way

bool resting(std::int32_t programState) {
    using namespace FirmComm::state;
    return programState == idle || programState == idleAfterWrite || programState == verified;
}

std::string deedText(const platform::Deed& deed) {
    return "operator: " + deed.form + ' ' + (deed.kind == platform::Deed::Kind::close ? "close box" : deed.control) +
           (deed.index < 0 ? "" : ' ' + std::to_string(deed.index)) +
           (deed.entry < 0 ? "" : ", entry " + std::to_string(deed.entry));
}

} // namespace

Monitor::Monitor(platform::World& world, Log& log) : world_(world), log_(log) {
    world.desktop.boxStands = [this](const Box& box) { boxStands(box); };
    world.port.bytesTaken = [this](std::span<const std::uint8_t> bytes) { bytesTaken(bytes); };
}

void Monitor::judge(std::string_view complaint) {
    if (!complaint.empty()) {
        log_.violation(std::string(complaint));
    }
}

bool Monitor::portBad() const {
    return portFailed_ || world_.port.lost();
}

// The line.

void Monitor::sent(const Passage& passage) {
    sent_ = passage.bytes;
    sentAt_ = passage.at;
    if (passage.direction == Direction::fromUnit) {
        sentByUnit(passage.bytes);
        return;
    }
    signOfLife(world_.clock.now());
    const ToolReader::Heard heard = reader_.take(passage.bytes);
    if (heard.brokenOff && !portBad()) {
        log_.violation("a frame was never finished");
    }
    if (heard.begins && world_.port.ready() && !portBad()) {
        log_.violation("the tool speaks and has not thrown away what came before");
    }
    if (heard.word) {
        hear(*heard.word);
    }
    if (heard.begins && messageBegins) {
        messageBegins();
    }
}

void Monitor::sentByUnit(const Bytes& bytes) {
    if (log_.story()) {
        log_.note("unit:" + platform::wireText(bytes));
    }
    if (order_.reads() && !bytes.empty() && bytes.front() == simulator::stx) {
        read_.disturb(); // the reply to an earlier command
    }
}

void Monitor::passed(const Passage& passage) {
    const bool toUnit = passage.direction == Direction::toUnit;
    const bool late = passage.at > sentAt_;
    write_.passed(toUnit, sent_, passage.bytes, late);
    if (!late && passage.bytes == sent_) {
        return;
    }
    read_.disturb();
    if (late) {
        disturbedUntil_ = std::max(disturbedUntil_, passage.at);
    }
    if (log_.story()) {
        log_.note((toUnit ? "  on the way to the unit:" : "  on the way to the tool:") +
                  platform::wireText(passage.bytes) + (late ? ", late" : ""));
    }
}

void Monitor::strayBytes(Micros until) {
    disturbedUntil_ = std::max(disturbedUntil_, until);
    write_.disturb();
    read_.disturb();
}

void Monitor::hear(Word word) {
    if (log_.story()) {
        log_.note("tool:" + platform::wireText(reader_.message()));
    }
    const FrmMain* form = mainForm(world_.desktop);
    if (!operation_ && form != nullptr && form->visible) {
        log_.violation("the tool speaks unasked");
    }
    if (!order_.take(word, verifying(), portBad())) {
        log_.violation("the tool says " + std::string(wordName(word)) + " where nothing allows it");
    }
    hearTransfer(word);
    checkWindows();
}

void Monitor::hearTransfer(Word word) {
    const bool disturbed = world_.clock.now() <= disturbedUntil_;
    switch (word) {
    case Word::startWrite: write_.begin(world_.unit, disturbed); break;
    case Word::block:
    case Word::endOfImage: judge(write_.packetSent(reader_.message(), loaded_)); break;
    case Word::startRead: read_.begin(world_.unit, disturbed); break;
    case Word::ack: judge(order_.phase() == Phase::reading ? read_.acknowledged() : read_.endAnswered()); break;
    case Word::nak: judge(order_.phase() == Phase::readEnding ? read_.endAnswered() : std::string()); break;
    default: break;
    }
}

void Monitor::bytesTaken(std::span<const std::uint8_t> bytes) {
    signOfLife(world_.clock.now());
    if (order_.writes()) {
        judge(write_.byteTaken(bytes.front(), world_.unit));
    } else if (order_.reads()) {
        read_.polled(bytes);
    }
}

// Time.

// The longest that the program may let pass without a word to the unit, a look at what the unit says, or a box.
Micros Monitor::patience() const {
    constexpr Micros command =
        fromSeconds(5) + fromSeconds(10); // a link that is not free, and the reply to an operation
    switch (order_.phase()) {
    case Phase::startingWrite: return fromSeconds(60) + slack;
    case Phase::sending:
    case Phase::ending: return (portBad() ? command : fromSeconds(10)) + slack;
    case Phase::reading:
    case Phase::readEnding: return (portBad() ? command : fromSeconds(3)) + slack;
    default: return command + slack;
    }
}

void Monitor::signOfLife(Micros until) {
    const Micros now = world_.clock.now();
    const bool atWork = operation_ || order_.phase() < Phase::resting;
    portFailed_ = portFailed_ || world_.port.lost(); // also when the program closes the port then
    if (atWork && now - sign_ > patience()) {
        log_.violation("the program let " + std::to_string((now - sign_) / 1000) + " ms pass");
    }
    sign_ = std::max(sign_, until);
}

// Windows.

void Monitor::formChanges(const platform::Form& form, FormChange change) {
    constexpr std::array<std::string_view, 4> changes{" loaded", " shown", " hidden", " unloaded"};
    log_.note(form.name + std::string(changes[static_cast<std::size_t>(change)]));
    if (form.name == "frmMain" && change == FormChange::shown && !operation_) {
        order_.rest(); // the hand-over
    }
}

void Monitor::deedBegins(const platform::Deed& deed) {
    log_.note(deedText(deed));
    deed_ = deed;
    sign_ = world_.clock.now() + 2 * world_.desktop.reactionTime; // for a file dialog
    if (auto operation = Operation::begunBy(deed, world_)) {
        operation_ = operation;
        portFailed_ = !world_.port.isOpen();
        boxesWithoutPort_ = 0;
        reader_.dropFrame();
    } else if (deed.control == "cmdCancel" && operation_) {
        operation_->cancel();
    }
}

void Monitor::boxStands(const Box& box) {
    log_.note("box: " + box.title + " | " + box.text + " | " + std::to_string(box.style));
    signOfLife(world_.clock.now() + world_.desktop.reactionTime);
    if (!operation_) {
        return;
    }
    const BoxKind kind = kindOf(box);
    if (kind == BoxKind::report && operation_->fileWritten()) {
        operation_->failDisk();
    }
    if (world_.port.lost() && ++boxesWithoutPort_ > mostBoxesWithoutPort) {
        log_.violation("one box follows another, and the port is gone");
    }
    if (operation_->kind() != Operation::Kind::write) {
        return;
    }
    if (kind == BoxKind::verificationFailed || (kind == BoxKind::succeed && verifying())) {
        compared(kind == BoxKind::succeed);
    } else if (kind == BoxKind::succeed) {
        succeeded();
    }
}

// At every message.
void Monitor::checkWindows() {
    const FrmMain* form = mainForm(world_.desktop);
    if (form == nullptr || !form->visible || order_.phase() == Phase::checked) {
        return;
    }
    if (form->enabled) {
        log_.violation("the main window can be used while firmware moves");
    }
    if (!world_.desktop.keptAwake()) {
        log_.violation("the computer may go to sleep while firmware moves");
    }
    if (const FrmWait* wait = waitForm(world_.desktop)) {
        const platform::Control& bar = wait->prbComm;
        if (bar.value < bar.min || bar.value > bar.max) {
            log_.violation("the progress bar stands outside its limits");
        }
    }
}

void Monitor::eventRan() {
    deed_.reset();
    if (shared.stepBusy || shared.settingPort) {
        log_.violation("a mark of work under way is left behind");
    }
    const FrmMain* form = mainForm(world_.desktop);
    if (form == nullptr || !form->visible) {
        return;
    }
    if (!form->CommTimer.running()) {
        checkRest(*form);
        endOperation();
    } else if (resting(shared.programState)) {
        log_.violation("CommTimer runs while nothing is under way");
    } else if (!world_.desktop.keptAwake()) {
        log_.violation("the computer may go to sleep between two steps");
    }
}

// Without CommTimer nothing goes on by itself, so the operator must be able to.
void Monitor::checkRest(const FrmMain& form) {
    const std::array<std::pair<bool, const char*>, 8> demands{{
        {form.enabled, "the main window is left disabled"},
        {form.mousePointer != MousePointer::hourglass, "the pointer is left at the hourglass"},
        {!frmWaitLoaded(), "the progress dialog is left behind"},
        {!world_.desktop.keptAwake(), "the computer is left kept awake"},
        {resting(shared.programState), "the procedures are left in the midst of something"},
        {!shared.verifying, "a verification is left under way"},
        {shared.programState != FirmComm::state::verified || shared.serialPort == nullptr,
         "a verification keeps the port"},
        {portBad() || !operation_ || order_.settled(verifying()), "the unit is not told that the procedure is over"},
    }};
    for (const auto& [met, complaint] : demands) {
        if (!met) {
            log_.violation(complaint);
        }
    }
    order_.rest();
}

} // namespace soak
