#include "story/monitor.h"

#include "startup/startUpWindow.h"
#include "state/variables.h"
#include "story/recorder.h"
#include "texts/language.h"
#include "texts/stringTable.h"
#include "transfer/programState.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <regex>

namespace story {

using namespace platform;
using simulator::ack;
using simulator::can;
using simulator::crcStart;
using simulator::nak;

namespace {

constexpr std::size_t mostBoxes = 12;           // of an operation
constexpr std::size_t mostBoxesWithoutPort = 9; // of one that loses its port

// How long the program waits.
constexpr Micros commandLimit = fromSeconds(5);
constexpr Micros operationLimit = fromSeconds(10);
constexpr Micros startLimit = fromSeconds(60);
constexpr Micros packetLimit = fromSeconds(10);
constexpr Micros silenceLimit = fromSeconds(3);

// Letters for what the program sends; uu is the number of the addressed unit. A block is b.
constexpr std::array<std::pair<std::string_view, char>, 13> letters{{
    {"0501", 'i'},
    {"0601", 's'},
    {"0101D40001000001", 'v'},
    {"0101D50001000001", 't'},
    {"300550uu0000", 'p'},
    {"300551uu0C00", 'w'},
    {"300552uu0C00", 'r'},
    {"300554uu0000", 'x'},
    {"300553uu0000", 'c'},
    {"\4", 'e'},
    {"\6", 'a'},
    {"\x15", 'n'},
    {"\x18", 'z'},
}};

// What an operation sends, blocks and ACKs in a row as one; "/" is with verification. If its port fails, messages may be
// missing.
#define READ "(r{3}|r{1,3}na?(na?)?(z{10})?)x"
const std::map<std::string, const char*> patterns{
    {"", "i?(s(v(ti?)?)?)?"},
    {"cmdTest", "i{0,2}(s(v(ti?)?)?)?"},
    {"cmdLoading", ""},
    {"cmdUpgrade", "(v((p{3}|p{1,3}w{1,3}(be*)?)xc)?)?"},
    {"cmdUpgrade/", "(v((p{3}|p{1,3}w{1,3}(be*)?)x(" READ "xc)?)?)?"},
    {"cmdPresent", "(" READ "c)?"},
    {"cmdPresent/", "(" READ ")?"},
    {"port",
     "i{0,2}s?v?t?i?|v?p{0,3}w{0,3}b?e*x?r{0,3}n?a?n?a?(za?){0,10}x{0,2}c?"}, // a tick may come in a box between two CAN
};

char letterOf(const Bytes& message) {
    if (message.size() >= simulator::checksumPacketSize) {
        return 'b';
    }
    std::string text(message.begin() + (message.size() > 1 ? 5 : 0), message.end());
    if (text.starts_with("3005") && text.substr(6, 2) == (shared.targetUnit == 1 ? "01" : "00")) {
        text.replace(6, 2, "uu");
    }
    const auto row = std::ranges::find(letters, text, &std::pair<std::string_view, char>::first);
    return row == letters.end() ? '?' : row->second;
}

// How long the program waits for the reply to its last message.
Micros replyLimit(const std::string& messages) {
    const char last = messages.empty() ? ' ' : messages.back();
    return std::string_view("isvt").find(last) != std::string_view::npos    ? commandLimit
           : std::string_view("pwrxc").find(last) != std::string_view::npos ? operationLimit
                                                                            : 0;
}

// A whole reply with the code of success.
bool acceptsCommand(const Bytes& reply) {
    constexpr std::size_t code = 11; // its place, behind STX, address, end code and command
    const std::uint8_t check = std::accumulate(reply.begin() + 1, reply.end(), std::uint8_t{0}, std::bit_xor());
    return reply.size() >= code + 6 && check == 0 &&
           std::string(reply.begin() + code, reply.begin() + code + 4) == "0000";
}

bool isSuccess(const Box& box) {
    return box.id == textId::succeed;
}

bool isFailure(const Box& box) {
    return box.id == textId::failed || box.id == textId::verifyFailed;
}

const FrmMain* mainForm(const World& world) {
    const auto* form = static_cast<const FrmMain*>(world.host.form("frmMain"));
    return form != nullptr && form->visible ? form : nullptr;
}

const Bytes& unitImage(World& world) {
    return shared.targetUnit == 1 ? world.unit.options().amplifierImage : world.unit.options().interfaceUnitImage;
}

Bytes imageOf(const Bytes& variable) {
    return {variable.begin(), variable.begin() + imageSize};
}

std::int64_t differences(const Bytes& image, const Bytes& other) {
    std::int64_t blocks = 0;
    for (std::ptrdiff_t at = 0; at < imageSize; at += blockSize) {
        blocks += std::equal(image.begin() + at, image.begin() + at + blockSize, other.begin() + at) ? 0 : 1;
    }
    return blocks;
}

} // namespace

Monitor::Monitor(World& world, std::function<void(const std::string&)> report)
    : world_(world), report_(std::move(report)) {
    world.line.addHook([this](const Transmission& transmission) { transmitted(transmission); });
    world.port.bytesTaken = [this](std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes) {
            byteRead(byte);
        }
    };
    world.port.operations().add([this](const OperationCall& call) { portUsed(call); });
    world.host.boxOpened = [this, first = world.host.boxOpened](const Box& box) {
        first(box); // the recorder's
        boxOpened(box);
    };
    world.host.eventRan = [this] { eventRan(); };
}

void Monitor::violation(const std::string& text) {
    violations.push_back(text);
    report_("VIOLATION: " + text);
}

bool Monitor::progressShown() const {
    const Form* form = world_.host.form("frmWait");
    return form != nullptr && form->visible;
}

// True if the port fails in this operation, or may have been lost since the last one.
bool Monitor::portBad() const {
    return !portWasOpen_ || world_.port.operations().failed() > portFailures_ ||
           (comPort_.pulledAt <= world_.clock.now() &&
            (comPort_.pulledAt >= begunBefore_ || comPort_.backAt >= begun_));
}

// The line.

void Monitor::portUsed(const OperationCall& call) {
    before_ = std::exchange(latest_, call.operation);
    writtenAt_ = call.operation == Operation::writePort ? call.at : writtenAt_;
    if (call.operation == Operation::reopenPort) {
        reopenedAt_ = call.at;
        if (!messages_.empty()) {
            violation("the port is opened again within an operation");
        }
    }
}

void Monitor::countLineFaults() {
    for (const Direction direction : {Direction::toUnit, Direction::fromUnit}) {
        for (LineFault& fault : world_.line.faults(direction)) {
            if (const std::int64_t applied = std::exchange(fault.applied, 0); applied > 0) {
                faultsApplied_ += applied;
                disturb(world_.clock.now() + fault.time + fromSeconds(1));
            }
        }
    }
}

void Monitor::transmitted(const Transmission& transmission) {
    countLineFaults();
    const bool frame = transmission.kind == Writes::frames;
    if (transmission.direction == Direction::fromUnit) {
        if (frame && (blocks_ > 0 || messages_.ends_with("rn") || messages_.ends_with("rr"))) {
            disturb(world_.clock.now()); // the reply to an earlier command
        }
        accepted_ = accepted_ || (frame && acceptsCommand(transmission.bytes));
        return;
    }
    if ((!frame || before_ != Operation::writePort) && !portBad() &&
        (before_ != Operation::clearReceived || world_.port.waiting() > 0)) {
        violation("the program sends without discarding what it has received");
    }
    if (!frame || transmission.bytes.size() > 1) {
        checkMessage(letterOf(transmission.bytes), transmission.bytes[transmission.bytes.size() > 1 ? 1 : 0]);
    }
}

void Monitor::checkMessage(char letter, std::uint8_t number) {
    const FrmMain* form = mainForm(world_);
    if (!running_ || (form != nullptr && (form->enabled || (letter != 'v' && !world_.host.keptAwake())))) {
        violation("the program sends while nothing runs, the window is enabled or the computer may sleep");
    }
    checkReply(letter);
    if (letter == 'w' || letter == 'r') {
        journal_ = world_.unit.journal();
        faultsApplied_ = 0;
        repeated_ = falseAck_ = false;
        blocks_ = 0;
        failures_ = cancels_ = unknown_ = 0;
    } else if (letter == 'b' || letter == 'e') {
        checkPacket(letter, number);
    } else if (letter == 'x' && !senderMayEnd()) {
        violation("the program gives up the write too early");
    }
    if ((letter != 'a' && letter != 'b') || !messages_.ends_with(letter)) {
        messages_ += letter;
    }
    quietSince_ = world_.clock.now();
    heard_ = false;
}

// What the program has waited for before this message.
void Monitor::checkReply(char letter) {
    if (!heard_ && !portBad() && !quietFor(replyLimit(messages_))) {
        violation("the program does not wait for a reply");
    }
    const std::string step = messages_.empty() ? "" : std::string{messages_.back(), letter};
    const bool asked = boxes() > std::exchange(boxesBefore_, boxes());
    const bool needsReply =
        !step.empty() && std::string_view("is sv vt ti pw wb rn").find(step) != std::string_view::npos;
    if ((needsReply || (step == "vp" && !asked)) && !accepted_ && disturbedUntil_ < begun_) {
        violation("the program goes on, and the unit has refused");
    }
    accepted_ = accepted_ && messages_.ends_with(letter); // the reply may just have missed the time limit
    if (letter == 'b' || letter == 'e' || letter == 'a' || letter == 'n') {
        const std::int64_t failed = transferFailures();
        if (failed > std::exchange(transferFailures_, failed) && step != "wb" && step != "rn") {
            violation("a transfer goes on after a failure of the port");
        }
    }
}

// Failures that end a transfer.
std::int64_t Monitor::transferFailures() const {
    const OperationGate& port = world_.port.operations();
    return port.failed(Operation::clearReceived) + port.failed(Operation::readPort) + port.failed(Operation::writePort);
}

// No byte has come or gone for this time.
bool Monitor::quietFor(Micros time) const {
    return world_.clock.now() - quietSince_ >= time;
}

// A packet is sent again after NAK or a time-out; the next one needs ACK, the first one a start byte.
void Monitor::checkPacket(char letter, std::uint8_t number) {
    const bool again =
        letter == 'b' ? blocks_ > 0 && number == blocks_ % 256 : letter == 'e' && messages_.ends_with('e');
    const bool due = letter == 'b' ? number == (blocks_ + 1) % 256 && blocks_ < blockCount : blocks_ == blockCount;
    const bool asked = again          ? answer_ == nak || (answer_ != ack && quietFor(packetLimit))
                       : blocks_ == 0 ? answer_ == nak || answer_ == crcStart
                                      : answer_ == ack;
    if ((!again && !due) || !asked) {
        violation("a packet without the answer that it needs, or out of order");
    }
    blocks_ += letter == 'b' && !again ? 1 : 0;
    repeated_ = repeated_ || again;
    failures_ = again ? failures_ + 1 : 0;
    cancels_ = 0;
    answer_ = 0;
}

// True if the message before is not one of a write, or if the write has ended, or failed as often as it may.
bool Monitor::senderMayEnd() const {
    const char last = messages_.empty() ? ' ' : messages_.back();
    if (portBad() || cancels_ == 2 || (last == 'e' && answer_ == ack)) {
        return true;
    }
    if (last == 'w') {
        return progressShown() ? unknown_ == 10 || quietFor(startLimit) : messages_.ends_with("www");
    }
    return (last != 'b' && last != 'e') || (failures_ == 9 && (answer_ == nak || quietFor(packetLimit)));
}

void Monitor::byteRead(std::uint8_t byte) {
    answer_ = byte;
    heard_ = true;
    quietSince_ = world_.clock.now();
    const bool sending = messages_.ends_with('b') || messages_.ends_with('e');
    const bool starting = messages_.ends_with('w') && progressShown();
    if ((sending || starting) && byte == can) {
        ++cancels_;
        failures_ = unknown_ = 0;
    } else if (starting) {
        ++unknown_;
    }
    const std::size_t accepted = world_.unit.receivedImage().size() / blockSize;
    if (sending && byte == ack &&
        (messages_.ends_with('e') ? world_.unit.journal().ends == journal_.ends : accepted < blocks_)) {
        falseAck_ = true;
        countLineFaults();
        if (!repeated_ && disturbedUntil_ < begun_) {
            violation("the program takes an ACK for what the unit has not accepted");
        }
    }
}

// The windows.

void Monitor::actionBegins(const Action& action) {
    action_ = action.kind == Action::Kind::close ? "close " + action.form : action.control;
    if (!patterns.contains(action_)) {
        cancelled_ = cancelled_ || action_ == "cmdCancel";
        return;
    }
    operation_ = action_;
    running_ = true;
    succeeded = cancelled_ = false;
    verifying_ = mainForm(world_) != nullptr && mainForm(world_)->chkVerify.value == 1;
    portWasOpen_ = world_.port.isOpen() || mainForm(world_) == nullptr;
    firstBox_ = world_.host.boxes().size();
    boxesBefore_ = 0;
    portFailures_ = world_.port.operations().failed();
    fileWrites_ = world_.files.operations().passed(Operation::writeFile);
    const OperationGate& disk = world_.files.operations();
    fileFailures_ = disk.failed() - disk.failed(Operation::appendLine); // the link log may fail
    reopenedAt_ = writtenAt_ = -1;
    begunBefore_ = messages_.empty() ? begunBefore_ : begun_; // an operation that sends nothing does not notice a loss
    begun_ = action_ == "cmdLoading" ? begun_ : world_.clock.now();
    messages_.clear();
}

void Monitor::boxOpened(const Box& box) {
    countLineFaults();
    if (action_ == "cmdCancel") {
        transferFailures_ = transferFailures(); // Cancel has failed, and the operator can press it again
    }
    if (boxes() > (portBad() ? mostBoxesWithoutPort : mostBoxes)) {
        violation("one box follows another");
    }
    const bool silent = box.text.ends_with(selectedText(textId::silentNothingSaved)) ||
                        box.text.ends_with(selectedText(textId::silentNotVerified));
    if (silent && !quietFor(silenceLimit)) {
        violation("the program does not wait for a block");
    }
    if (silent && transferFailures() > transferFailures_) {
        violation("a transfer goes on after a failure of the port");
    }
    const bool notEqual = isFailure(box) && (box.style == boxStyle::critical || box.id == textId::verifyFailed);
    if (operation_ == "cmdUpgrade" && (isSuccess(box) || notEqual)) {
        checkWritten(isSuccess(box));
    }
}

void Monitor::eventRan() {
    action_.clear();
    if (shared.stepBusy || StartUpWindow::settingPort) {
        violation("a busy flag is still set");
    }
    const FrmMain* form = mainForm(world_);
    if (form == nullptr) {
        return;
    }
    if (form->CommTimer.running()) {
        if (atRest() || !world_.host.keptAwake()) {
            violation("nothing is under way, and CommTimer runs; or the computer may sleep between two steps");
        }
        return;
    }
    // Nothing runs, so the operator must be able to go on.
    const bool portKept = shared.programState == FirmComm::state::verified && shared.serialPort != nullptr;
    if (const std::string found = obstaclesIn(world_); !found.empty() || shared.verifying || portKept) {
        violation("nothing runs, but the windows are not idle: " + found);
    }
    endOperation();
}

// The end of an operation.

void Monitor::endOperation() {
    if (!std::exchange(running_, false)) {
        return;
    }
    countLineFaults();
    const bool bad = portBad();
    const std::string pattern = bad ? "port" : operation_ + (verifying_ && operation_ != "cmdLoading" ? "/" : "");
    if (!std::regex_match(messages_, std::regex(patterns.at(pattern)))) {
        violation("the program sends \"" + messages_ + "\"");
    }
    const Box* box = boxes() == 0 ? nullptr : &world_.host.boxes().back();
    const bool success = box != nullptr && isSuccess(*box);
    if (operation_ == "cmdPresent" && !verifying_) {
        checkSaved(success);
    } else if (operation_ == "cmdUpgrade" && success != (shared.outcome == Outcome::succeeded) &&
               !(verifying_ && success)) {
        violation("the outcome of the write is not that of its box");
    }
    const bool refused = messages_.starts_with("vpppx") || messages_.starts_with("rrrx");
    if (refused && !bad && shared.outcome != Outcome::refused) {
        violation("the outcome is not the refusal of the unit");
    }
    checkLoss();
    const bool needsNotice =
        operation_ == "cmdUpgrade" ? messages_.size() > 1 : messages_.starts_with('r') && !verifying_;
    if (needsNotice && (box == nullptr || (!isSuccess(*box) && !isFailure(*box)))) {
        violation("the operation ends without a message");
    }
    ++counts[pattern + (box == nullptr ? "" : ": " + box->text.substr(0, box->text.find('\r')))];
}

bool Monitor::shown(const std::string& text) const {
    const auto& all = world_.host.boxes();
    return std::any_of(all.begin() + static_cast<std::ptrdiff_t>(firstBox_), all.end(),
                       [&](const Box& box) { return box.text.find(text) != std::string::npos; });
}

// A write to a device that was gone has met its loss, unless the operation of the port itself was made to fail.
void Monitor::checkLoss() {
    const bool lost = comPort_.pulledAt > reopenedAt_ || comPort_.backAt > reopenedAt_;
    if (reopenedAt_ >= 0 && portWasOpen_ && lost && writtenAt_ >= std::max(comPort_.pulledAt, reopenedAt_) &&
        world_.port.operations().failed() == portFailures_ && !shown(deviceGone)) {
        violation("no box names the loss of the port");
    }
}

// The line was not disturbed, and the unit has sent each packet once.
bool Monitor::readClean() const {
    const simulator::Journal& now = world_.unit.journal();
    constexpr int ends = 2;
    return disturbedUntil_ < begun_ &&
           now.packetsSent - journal_.packetsSent == now.blocksSent - journal_.blocksSent + ends;
}

// A file that is written is the unit's image, whatever happened; after a loss there is no success without it.
void Monitor::checkSaved(bool success) {
    const std::string path = world_.host.fileRequests().back().path.value_or("");
    const SimulatedFile* file = world_.files.find(path);
    const OperationGate& disk = world_.files.operations();
    const bool diskFailed =
        disk.failed() - disk.failed(Operation::appendLine) > fileFailures_ || (!path.empty() && shown(path));
    const bool written = disk.passed(Operation::writeFile) > fileWrites_ && file != nullptr && !diskFailed;
    const std::string content = written ? file->content.substr(0, imageSize) : "";
    succeeded = std::ranges::equal(content, unitImage(world_), {}, [](char c) { return static_cast<std::uint8_t>(c); });
    if (written && messages_.find("nana") == std::string::npos && messages_.find("nna") == std::string::npos) {
        violation("the file is written before the unit has ended");
    }
    if (written && (content.size() != imageSize || (!succeeded && readClean()))) {
        violation("the file is not what the unit sent");
    }
    const bool mustBeWritten = success && (shown(deviceGone) || (boxes() == 1 && !cancelled_));
    if (!written && (mustBeWritten || shared.outcome == Outcome::succeeded)) {
        violation("success without a file");
    }
}

// For a box that says that the unit holds the file or, with verification, that it does not.
void Monitor::checkWritten(bool equal) {
    const Bytes loaded = imageOf(shared.firmwareImage);
    const std::int64_t different = differences(unitImage(world_), loaded);
    succeeded = equal && different == 0;
    if (verifying_) {
        const bool cleanAndQuiet = readClean() && boxes() == 1;
        const bool readBack = imageOf(shared.readBackImage) == loaded;
        if ((equal && !readBack) || (readBack && !equal && shared.outcome != Outcome::portLost) ||
            (cleanAndQuiet && equal != (different == 0))) {
            violation("the verification is wrong");
        }
    } else if (!falseAck_ && different > faultsApplied_) { // each may damage a block without changing its check bytes
        violation("success, and the unit does not hold the file");
    }
}

void Monitor::runEnded(RunEnd end) {
    const auto& seen = world_.host.violations();
    for (; violationsSeen_ < seen.size(); ++violationsSeen_) {
        violation(seen[violationsSeen_]);
    }
    if (end == RunEnd::stuck) {
        violation("stuck: " + world_.host.stuckReason());
    }
}

} // namespace story
