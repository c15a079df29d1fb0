// What the monitor makes of the end of an operation and of the end of the program.
#include "soak/monitor.h"
#include "state/variables.h"

#include <algorithm>

namespace soak {

using platform::RunEnd;

namespace {

bool isWhole(const Bytes& image) {
    return image.size() == simulator::imageSize;
}

std::span<const std::uint8_t> imagePart(const Bytes& variable) {
    return std::span(variable).first(simulator::imageSize);
}

} // namespace

const Bytes& Monitor::unitImage() const {
    const simulator::UnitOptions& unit = world_.unit.options();
    return shared.targetUnit == 1 ? unit.amplifierImage : unit.interfaceUnitImage;
}

void Monitor::succeeded() {
    if (!write_.acknowledged()) {
        log_.violation("success without an ACK of the end");
    }
    if (unitImage() == loaded_) {
        ++tally_.upgrades;
        return;
    }
    if (!write_.explains(world_.unit.receivedImage(), loaded_)) {
        log_.violation("success, and the unit does not hold the file");
    }
    meet(write_.unearned() > 0 ? BlindSpot::unearnedAck : BlindSpot::agreeingBlock);
}

void Monitor::compared(bool equal) {
    if (equal != (shared.readBackImage == shared.firmwareImage)) {
        log_.violation("the verification tells of another comparison");
    }
    if (!portBad() && !read_.holds(imagePart(shared.readBackImage))) {
        log_.violation("what was read back is not what arrived");
    }
    const bool held = unitImage() == loaded_;
    const bool reported = operation_->boxCount() > 1; // that something was lost on the way back, say
    if (read_.clean(world_.unit) && !portBad() && equal != held && !(held && reported)) {
        log_.violation("the verification is wrong about the unit");
    }
    tally_.upgrades += equal && held ? 1 : 0;
    meetReadSpots();
}

void Monitor::checkLoaded() {
    const FrmMain& form = *mainForm(world_.desktop);
    if (form.cmdUpgrade.enabled != shared.fileLoaded) {
        log_.violation("the upgrade button does not fit the file");
    }
    const platform::SimulatedFile* file = operation_->file();
    const bool fits = file != nullptr && file->content.size() == simulator::imageSize;
    const auto present = imagePart(shared.firmwareImage);
    const Bytes named = fits ? Bytes(file->content.begin(), file->content.end()) : Bytes();
    if (fits && operation_->boxCount() == 0 && !shared.fileLoaded) {
        log_.violation("a file is not loaded and nobody says why");
    } else if (shared.fileLoaded && fits && std::ranges::equal(present, named)) {
        loaded_ = named;
    } else if (shared.fileLoaded && (!std::ranges::equal(present, loaded_) || (fits && operation_->boxCount() == 0))) {
        log_.violation("what is loaded is not the file");
    }
}

void Monitor::checkSaved() {
    const bool quiet = operation_->boxCount() == 1 && operation_->lastBoxIs(BoxKind::succeed);
    if (quiet && !operation_->cancelled() && !operation_->fileWritten()) {
        log_.violation("success, and there is no file");
    }
    if (!operation_->fileWritten() || operation_->diskFailed()) {
        return;
    }
    const std::string& content = operation_->file()->content;
    const Bytes saved(content.begin(),
                      content.begin() + std::min<std::ptrdiff_t>(simulator::imageSize, std::ssize(content)));
    if (!isWhole(saved) || (!portBad() && !read_.holds(saved))) {
        log_.violation("the file is not what arrived");
    }
    const bool equal = saved == unitImage();
    if (!equal && read_.clean(world_.unit)) {
        log_.violation("the file is not what the unit sent");
    }
    tally_.saves += equal ? 1 : 0;
    meetReadSpots();
}

void Monitor::meetReadSpots() {
    if (read_.clean(world_.unit)) {
        return;
    }
    // What the tool has stored tells the spots apart: too little, too much, or something else.
    meet(read_.blocks() < simulator::imageSize / simulator::blockSize   ? BlindSpot::unseenEnd
         : read_.blocks() > simulator::imageSize / simulator::blockSize ? BlindSpot::repeatedBlock
                                                                        : BlindSpot::storedDamage);
}

void Monitor::endOperation() {
    if (!operation_) {
        return;
    }
    if (operation_->kind() == Operation::Kind::load) {
        checkLoaded();
    } else if (operation_->kind() == Operation::Kind::save && !verifying()) {
        checkSaved();
    } else if (operation_->kind() == Operation::Kind::save && operation_->fileWritten()) {
        log_.violation("a read with verification has written a file");
    }
    const std::string outcome = operation_->outcome();
    if (outcome.empty()) {
        log_.violation("the operation ends without a word");
    }
    ++tally_.outcomes[outcome];
    log_.note(outcome);
    operation_.reset();
}

// The end of a shared.

void Monitor::ranTo(RunEnd end) {
    const auto& violations = world_.desktop.violations();
    for (; violationsSeen_ < violations.size(); ++violationsSeen_) {
        log_.violation(violations[violationsSeen_]);
    }
    if (end == RunEnd::stuck) {
        log_.violation("stuck: " + world_.desktop.stuckReason());
    } else if (end == RunEnd::programEnded) {
        checkEnd();
    }
}

void Monitor::checkEnd() {
    const std::string way = wayToEnd();
    if (way.empty()) {
        log_.violation("the program ends where it may not");
    }
    ++tally_.outcomes[way];
}

// How the program has come to its end; empty where none of the ways fits.
std::string Monitor::wayToEnd() const {
    const bool closes = deed_ && (deed_->kind == platform::Deed::Kind::close || deed_->control == "cmdEnd");
    if (closes && deed_->form != "frmWait") {
        return "ended by the operator";
    }
    const auto& boxes = world_.desktop.boxes();
    const BoxKind kind = boxes.empty() ? BoxKind::report : kindOf(boxes.back());
    if (kind == BoxKind::failureDialog && boxes.back().answer == platform::boxAnswer::cancel) {
        return "ended in the failure dialog";
    }
    const bool started = mainForm(world_.desktop)->visible || order_.phase() > Phase::resting;
    // The set button ends nothing before the identification, whose first frame may be lost with the port.
    const bool pressed = order_.phase() == Phase::asked && !world_.person.done().empty() && !portBad();
    return kind == BoxKind::fatal || !(started || pressed) ? "ended at start-up" : "";
}

} // namespace soak
