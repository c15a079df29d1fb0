#include "cli/session.h"

#include "app/program.h"
#include "base/exitCode.h"
#include "base/failure.h"
#include "base/text.h"
#include "cli/ports.h"
#include "platform/portList.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "transfer/programState.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

namespace cli {

namespace {

using json = nlohmann::ordered_json;
namespace state = FirmComm::state;

constexpr int signalBase = 128; // exit code of a program that a signal ends, without the signal's number

struct ResultRow {
    int exitCode;
    const char* name;
};
constexpr std::array resultRows{
    ResultRow{exitCode::done, "done"},
    ResultRow{exitCode::failed, "failed"},
    ResultRow{exitCode::portUnusable, "portUnusable"},
    ResultRow{exitCode::unitNotReady, "unitNotReady"},
    ResultRow{exitCode::fileUnusable, "fileUnusable"},
    ResultRow{exitCode::configurationWrong, "configurationWrong"},
};

std::string resultName(int exitCode) {
    const auto row = std::ranges::find(resultRows, exitCode, &ResultRow::exitCode);
    return row == resultRows.end() ? "brokenOff" : row->name;
}

std::size_t selectedRow() {
    return frmMain().optPresent[0].value == 1 ? 0 : 1;
}

bool sameVersion(const std::string& a, const std::string& b) {
    const auto first = parseNumber(a);
    return a == b || (first && first == parseNumber(b));
}

json partOf(const std::string& model, const std::string& version) {
    return {{"model", model}, {"version", version}};
}

bool operationRuns() {
    return shared.programState != state::idle && shared.programState != state::idleAfterWrite &&
           shared.programState != state::verified;
}

} // namespace

Session::Session(const CommandLine& line)
    : line_(line), japanese_(line.language.empty() ? platform::userIsJapanese() : line.language == "ja"),
      report_(line.json, line.quiet), operator_(terminalOperator()) {
    platform::setHost(&host_);
    choosePort();
}

platform::TerminalOperator Session::terminalOperator() {
    return {.folder = line_.folder,
            .portNumber = {},
            .device = {},
            .answer = [this](const platform::Message& box) { return answer(box); },
            .openPath = [this](const platform::FileDialog&) { return line_.file; },
            .savePath = [this](const platform::FileDialog&) { return line_.file; },
            .progress = [this](double value, double all) { report_.progress(operation(), value, all); },
            .waiting = [this](bool events) { whileWaiting(events); },
            .transfer =
                [this](bool on) {
                    transfer_ = on;
                    started_ = true;
                },
            .ended = [this](int exitCode) { return explainEnd(exitCode); }};
}

// A device has the COM number that Setting.INI or the system gives it, else the first one.
void Session::choosePort() {
    if (line_.device.empty()) {
        operator_.portNumber = line_.portNumber;
        return;
    }
    std::int16_t number = 1;
    for (std::int16_t tried = highestPort; tried >= 1; --tried) {
        if (platform::sameDevice(host_.deviceOf(tried), line_.device)) {
            number = tried;
        }
    }
    operator_.portNumber = number;
    operator_.device = line_.device;
}

void Session::run() {
    platform::setEnglishErrors();
    platform::catchSignals();
    if (line_.command == "ports") {
        shared.language = japanese_ ? Language::japanese : Language::english;
        reportPorts(host_, report_);
        end(exitCode::done, {});
    }
    requireReadableTypeFile();
    start();
    if (line_.command == "identify") {
        const bool known = !shared.ampTypeName.empty() || !shared.ifuTypeName.empty();
        end(known ? exitCode::done : exitCode::unitNotReady, known ? "" : selectedText(textId::unitUnknown));
    }
    selectUnit();
    line_.command == "upgrade" ? upgrade() : save();
}

// A missing one has a box of the program.
void Session::requireReadableTypeFile() {
    const std::string path = host_.programDirectory() + "TYPE.INI";
    try {
        if (host_.files().exists(path)) {
            host_.files().readAll(path);
        }
    } catch (const Failure& failure) {
        end(exitCode::configurationWrong, failure.description());
    }
}

void Session::start() {
    recording_.emplace(host_, line_.record, story::ProgramNames{"command line", platform::systemName()});
    recording_->run(japanese_ ? "start ja" : "start",
                    [this] { program::startIn(japanese_ ? Language::japanese : Language::english); });
    if (!frmMain().visible) {
        failStart();
    }
    if (met(failureNumber::outOfRange)) {
        end(exitCode::configurationWrong, filledText(textId::typeFileWrong, {host_.programDirectory()}));
    }
    reportIdentified();
}

// The start-up window offers other ports.
void Session::failStart() {
    if (host_.port().isOpen()) {
        end(exitCode::unitNotReady, filledText(textId::noUnitAnswers, {portName()}));
    }
    const std::optional<Failure>& failure = host_.port().openFailure();
    if (!failure) {
        end(exitCode::portUnusable, lastBox_);
    }
    std::string text = filledText(textId::portUnusable, {portName(), failure->description()});
    if (failure->number() == failureNumber::portMissing) {
        text += ' ' + selectedText(textId::portListAdvice);
    } else if (failure->number() == failureNumber::portHeld) {
        const std::string holder = platform::holderOf(host_.deviceOf(shared.comPortNumber));
        text += holder.empty() ? "" : ' ' + filledText(textId::portHeldBy, {holder});
    }
    end(exitCode::portUnusable, text);
}

void Session::reportIdentified() {
    const FrmMain& form = frmMain();
    const auto part = [&](int name, std::size_t row) {
        const std::string& model = form.lblTitle[row].caption;
        return selectedText(name) + ": " + (model.empty() ? "-" : model + ' ' + form.lblVersion[row].caption);
    };
    const bool wanted = line_.command == "identify" || !line_.quiet;
    report_.event(wanted ? part(textId::amplifier, 0) + '\n' + part(textId::interfaceUnit, 1) : std::string(),
                  {{"event", "identified"},
                   {"port", "COM" + std::to_string(shared.comPortNumber)},
                   {"device", host_.deviceOf(shared.comPortNumber)},
                   {"amplifier", partOf(form.lblTitle[0].caption, form.lblVersion[0].caption)},
                   {"interfaceUnit", partOf(form.lblTitle[1].caption, form.lblVersion[1].caption)}});
}

void Session::selectUnit() {
    FrmMain& form = frmMain();
    const std::size_t row = line_.interfaceUnit ? 1 : 0;
    form.optPresent[row].value = 1;
    form.optPresent[1 - row].value = 0;
    form.optPresent[row].click();
}

void Session::upgrade() {
    FrmMain& form = frmMain();
    load();
    versionBefore_ = form.lblVersion[selectedRow()].caption;
    const bool sameModel = form.lblTitle[selectedRow()].caption == shared.fileTypeName;
    if (line_.ifDifferent && sameModel && sameVersion(versionBefore_, shared.fileVersionText)) {
        unchanged_ = true;
        end(exitCode::done, filledText(textId::unchanged, {shared.fileTypeName, versionBefore_}));
    }
    form.chkVerify.value = line_.verify ? 1 : 0;
    form.cmdUpgrade.click();
    waitForEnd();
    endUpgrade();
}

// The windows pass over a file of another size in silence, and over one that TYPE.INI does not know until it is written.
void Session::load() {
    frmMain().cmdLoading.click();
    if (met(failureNumber::outOfRange)) {
        end(exitCode::configurationWrong, filledText(textId::typeFileWrong, {host_.programDirectory()}));
    }
    if (shared.fileLoaded && shared.fileTypeName.empty()) {
        end(exitCode::fileUnusable, filledText(textId::fileUnknown, {line_.file}));
    }
    if (shared.fileLoaded) {
        return;
    }
    if (!fileFailure_.empty()) {
        end(exitCode::fileUnusable, fileFailure_);
    }
    const std::string length = std::to_string(host_.files().length(line_.file));
    end(exitCode::fileUnusable, filledText(textId::fileSize, {line_.file, length, std::to_string(imageSize)}));
}

void Session::endUpgrade() {
    if (shown(textId::fileNotAdapted)) {
        end(exitCode::fileUnusable, lastBox_);
    }
    if (shown(textId::sensorNotChecked) && !line_.acceptUnchecked) {
        end(exitCode::unitNotReady, selectedText(textId::notChecked));
    }
    if (shared.outcome == Outcome::succeeded) {
        end(exitCode::done, filledText(textId::written, {shared.fileTypeName, versionBefore_, shared.fileVersionText}));
    }
    end(exitCode::failed, selectedText(textId::transferFailed));
}

// Fails before the read, which takes minutes.
void Session::requireWritableFile() {
    platform::Files& files = host_.files();
    if (!line_.overwrite && files.exists(line_.file)) {
        end(exitCode::fileUnusable, filledText(textId::fileExists, {line_.file}));
    }
    try {
        files.openBinary(line_.file, platform::FileAccess::write);
    } catch (const Failure& failure) {
        end(exitCode::fileUnusable, failure.description());
    }
}

void Session::save() {
    requireWritableFile();
    frmMain().cmdPresent.click();
    waitForEnd();
    if (!fileFailure_.empty()) {
        end(exitCode::fileUnusable, fileFailure_);
    }
    const bool saved = shared.outcome == Outcome::succeeded;
    end(saved ? exitCode::done : exitCode::failed,
        saved ? filledText(textId::saved, {line_.file}) : selectedText(textId::transferFailed));
}

std::string Session::operation() const {
    return line_.command == "save" ? "save" : shared.verifying ? "verify" : "write";
}

void Session::waitForEnd() {
    while (operationRuns()) {
        host_.waitForEvents(never);
    }
}

// Every question has the answer of a careful operator. A link failure is tried again: by OK.
int Session::answer(const platform::Message& box) {
    if (breaksOff_) {
        return platform::boxAnswer::cancel;
    }
    if (box.id == textId::succeed && shared.outcome == Outcome::failed) {
        return platform::boxAnswer::ok; // of a read; the result says more
    }
    const int failure = currentFailure().number;
    const bool refuses = box.id == textId::sensorNotChecked && !line_.acceptUnchecked;
    const bool asks = (box.style & platform::boxStyle::okCancel) != 0 && box.id != textId::succeed;
    boxes_.insert(box.id);
    failures_.insert(failure);
    lastBox_ = withPortName(box.text);
    if (failure == failureNumber::fileNotFound || failure == failureNumber::fileRefused ||
        failure == failureNumber::fileBroken) {
        fileFailure_ = lastBox_;
    }
    std::string text = lastBox_;
    json object = {{"event", "message"}, {"id", box.id}, {"text", lastBox_}};
    if (asks) {
        object["answer"] = refuses ? "cancel" : "ok";
        text += "\r\n" + selectedText(refuses ? textId::answeredCancel : textId::answeredOk);
    }
    report_.message(text, object, (box.style & platform::boxStyle::information) != 0 && box.id == textId::succeed);
    return refuses ? platform::boxAnswer::cancel : platform::boxAnswer::ok;
}

void Session::whileWaiting(bool events) {
    report_.flush();
    if (const int number = platform::takeSignal(); number != 0) {
        takeSignal(number);
    }
    if (events && breakOff_ != 0 && transfer_ && !std::exchange(breaksOff_, true)) {
        host_.endRequested();
    }
}

void Session::takeSignal(int number) {
    constexpr Micros patience = fromSeconds(3);
    if (!transfer_ || breakOff_ != 0) {
        end(signalBase + number, selectedText(transfer_ ? textId::brokenOff : textId::ended));
    }
    const Micros now = platform::clockMicros();
    if (warnedAt_ != 0 && now - warnedAt_ <= patience) {
        breakOff_ = number;
        return;
    }
    warnedAt_ = now;
    const std::int32_t id = operation() == "write" ? textId::breakOffMeans : textId::breakOffReadMeans;
    const std::string text = selectedText(id);
    report_.message(text, {{"event", "message"}, {"id", id}, {"text", text}}, false);
}

// The program ends the process: after a box that has said why, or in silence.
int Session::explainEnd(int exitCode) {
    if (over_) {
        return exitCode;
    }
    if (breaksOff_) {
        report(signalBase + breakOff_, selectedText(textId::brokenOff));
        return signalBase + breakOff_;
    }
    shared.language = japanese_ ? Language::japanese : Language::english;
    const auto& [command, result] = shared.refusal;
    if (exitCode == exitCode::configurationWrong) {
        report(exitCode, filledText(textId::typeFileMissing, {host_.programDirectory()}));
    } else if (result == "9999") {
        report(exitCode, filledText(textId::unitSilent, {command}));
    } else if (!result.empty()) {
        report(exitCode, filledText(textId::unitRefuses, {command, result}));
    } else {
        report(exitCode, lastBox_);
    }
    return exitCode;
}

std::string Session::portName() {
    const std::string device = host_.deviceOf(shared.comPortNumber);
    const std::string name = "COM" + std::to_string(shared.comPortNumber);
    return !operator_.device.empty() ? device : device == name ? name : name + " (" + device + ")";
}

// A port that the command line names by its device has that name in every text.
std::string Session::withPortName(std::string text) {
    if (operator_.device.empty()) {
        return text;
    }
    const std::string number = "COM" + std::to_string(*operator_.portNumber);
    for (const std::string& name : {number + " (" + operator_.device + ")", number}) {
        if (const std::size_t place = text.find(name); place < text.size()) {
            return text.replace(place, name.size(), operator_.device);
        }
    }
    return text;
}

void Session::report(int exitCode, const std::string& text) {
    over_ = true;
    json object = {{"event", "result"},
                   {"result", unchanged_ ? "unchanged" : resultName(exitCode)},
                   {"exitCode", exitCode},
                   {"text", text}};
    if (line_.command == "upgrade" && !versionBefore_.empty()) {
        object["model"] = shared.fileTypeName;
        object["had"] = versionBefore_;
        object["has"] = exitCode == exitCode::done ? json(shared.fileVersionText)
                        : started_                 ? json() // unknown until the unit is identified again
                                                   : json(versionBefore_);
    }
    const bool told = !line_.json && text == lastBox_; // by the last box
    report_.result(told ? std::string() : text, object, exitCode != exitCode::done);
    report_.finish();
}

void Session::end(int exitCode, const std::string& text) {
    report(exitCode, text);
    const auto end = [exitCode] { platform::host().endProgram(exitCode); };
    recording_ ? recording_->run("end " + std::to_string(exitCode), end) : end();
    std::abort(); // not reached
}

} // namespace cli
