#include "story/record/recordingHost.h"

#include "base/failure.h"
#include "story/record/packets.h"
#include "story/record/text.h"

#include <cstdlib>
#include <utility>

namespace story {

using platform::BinaryFile;
using platform::Control;
using platform::FileAccess;
using platform::FileDialog;
using platform::Form;
using platform::Message;
using platform::Timer;

namespace {

std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The rows of a content below its line, which adds the last line end.
std::string rowsBelow(std::string_view content) {
    std::string rows = rowsOf(content);
    rows.insert(0, 1, '\n');
    rows.pop_back();
    return rows;
}

} // namespace

// Runs an operation. A failure becomes a line.
template <class Action>
auto RecordingHost::attempt(Call call, Action action) {
    try {
        return action();
    } catch (const Failure& failure) {
        given('!' + std::string(nameOf(call)) + ' ' + std::to_string(failure.number()) + ' ' +
                  escaped(failure.description()),
              lines_.without(call));
        throw;
    }
}

template <class Action>
auto RecordingHost::attemptSettled(Call call, Action action) {
    settle();
    return attempt(call, action);
}

class RecordingPort : public platform::SerialPort {
  public:
    RecordingPort(RecordingHost& host, SerialPort& inner) : host_(host), inner_(inner) {}

    void choosePort(std::int16_t number) override {
        run(Call::choosePort, ' ' + std::to_string(number), [&] { inner_.choosePort(number); });
    }
    bool isOpen() const override { return inner_.isOpen(); }
    void setSettings(const std::string& settings) override {
        run(Call::setSettings, ' ' + settings, [&] { inner_.setSettings(settings); });
    }
    void open() override {
        run(Call::openPort, "", [&] { inner_.open(); });
    }
    void close() override {
        run(Call::closePort, "", [&] { inner_.close(); });
    }
    void setBufferSizes(int input, int output) override {
        run(Call::setBufferSizes, ' ' + std::to_string(input) + ' ' + std::to_string(output),
            [&] { inner_.setBufferSizes(input, output); });
    }
    void clearUnsent() override {
        run(Call::clearUnsent, "", [&] { inner_.clearUnsent(); });
    }
    void reopenIfLost() override { inner_.reopenIfLost(); }
    void setReadLimit(int bytes) override { inner_.setReadLimit(bytes); }
    void clearReceived() override;
    std::int16_t countReceived() override;
    Bytes read() override;
    void write(std::span<const std::uint8_t> bytes) override;

    // Adds the lines of what has been held back: a number of received bytes that the program has not read, and the
    // parts of a frame that was not completed.
    void settle();

  private:
    template <class Action>
    void run(Call call, const std::string& arguments, Action action) {
        host_.attemptSettled(call, action);
        host_.screenDue_ = true;
        host_.did(std::string(nameOf(call)) + arguments);
    }
    void addSent(std::span<const std::uint8_t> bytes);

    RecordingHost& host_;
    SerialPort& inner_;
    std::int16_t counted_ = 0; // received bytes that the program knows of
    Bytes frame_;              // written so far
    BlockNames sent_;
    BlockNames taken_;
    std::string line_; // in work
};

void RecordingPort::settle() {
    if (const std::int16_t count = std::exchange(counted_, std::int16_t{0}); count > 0) {
        host_.lines_.given("count " + std::to_string(count), host_.lines_.emptyPolls());
    }
    if (!frame_.empty()) {
        addSent(std::exchange(frame_, {}));
    }
}

void RecordingPort::addSent(std::span<const std::uint8_t> bytes) {
    line_.assign(1, '>');
    if (!sent_.addName(line_, bytes, host_.image_)) {
        const std::string command = commandText(bytes).value_or("");
        line_ += command.empty() ? bytesText(bytes) : command;
    }
    host_.lines_.did(line_);
}

void RecordingPort::clearReceived() {
    settle();
    host_.attempt(Call::clearReceived, [&] { inner_.clearReceived(); });
    host_.lines_.cleared();
    host_.lines_.nothing(Call::clearReceived);
}

std::int16_t RecordingPort::countReceived() {
    const std::int16_t count = host_.attempt(Call::countReceived, [&] { return inner_.countReceived(); });
    if (count != counted_ || !frame_.empty()) {
        settle();
    }
    if (count == 0) {
        host_.lines_.nothing(Call::countReceived);
    }
    return counted_ = count;
}

Bytes RecordingPort::read() {
    if (!frame_.empty()) {
        settle();
    }
    const auto counted = static_cast<std::size_t>(std::exchange(counted_, std::int16_t{0}));
    const Bytes bytes = host_.attempt(Call::readPort, [&] { return inner_.read(); });
    if (bytes.empty()) {
        host_.lines_.nothing(Call::readPort);
        return bytes;
    }
    line_.assign(1, '<');
    if (!taken_.addName(line_, bytes, host_.image_)) {
        line_ += bytesText(bytes);
    }
    if (counted > 0 && counted != bytes.size()) {
        line_ += " of " + std::to_string(counted);
    }
    host_.lines_.given(line_, host_.lines_.emptyPolls());
    return bytes;
}

void RecordingPort::write(std::span<const std::uint8_t> bytes) {
    if (frame_.empty()) {
        settle();
    }
    try {
        host_.attempt(Call::writePort, [&] { inner_.write(bytes); });
    } catch (const Failure&) {
        Bytes unsent = std::exchange(frame_, {});
        unsent.insert(unsent.end(), bytes.begin(), bytes.end());
        addSent(unsent);
        throw;
    }
    if (frame_.empty() && (bytes.size() != 1 || bytes[0] != frameStart)) {
        return addSent(bytes);
    }
    frame_.insert(frame_.end(), bytes.begin(), bytes.end());
    host_.lines_.nothing(Call::writePort);
    if (frameComplete(frame_)) {
        addSent(std::exchange(frame_, {}));
    }
}

class RecordingFile : public BinaryFile {
  public:
    RecordingFile(RecordingHost& host, std::string path, std::unique_ptr<BinaryFile> inner)
        : host_(host), path_(std::move(path)), inner_(std::move(inner)) {}

    void read(std::int64_t offset, std::span<std::uint8_t> bytes) override {
        host_.attemptSettled(Call::readFile, [&] { inner_->read(offset, bytes); });
        if (host_.known_.content(path_, offset, asText(bytes))) {
            host_.lines_.nothing(Call::readFile);
        } else {
            host_.given("content " + std::to_string(offset) + ' ' + std::to_string(bytes.size()) + ' ' +
                            escaped(path_) + rowsBelow(asText(bytes)),
                        host_.lines_.without(Call::readFile));
        }
        host_.image_ = host_.known_.find(path_)->content;
    }
    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        host_.attemptSettled(Call::writeFile, [&] { inner_->write(offset, bytes); });
        host_.known_.write(path_, offset, bytes);
        host_.did("writeFile " + std::to_string(offset) + ' ' + std::to_string(bytes.size()) + ' ' + digestOf(bytes));
    }
    void close() override {
        host_.attemptSettled(Call::closeFile, [&] { inner_->close(); });
        host_.did("closeFile");
    }

  private:
    RecordingHost& host_;
    std::string path_;
    std::unique_ptr<BinaryFile> inner_;
};

class RecordingFiles : public platform::Files {
  public:
    RecordingFiles(RecordingHost& host, Files& inner) : host_(host), inner_(inner) {}

    bool exists(const std::string& path) override {
        host_.settle();
        const bool exists = inner_.exists(path);
        note(Call::fileExists, host_.known_.exists(path, exists),
             std::string("exists ") + (exists ? "yes " : "no ") + escaped(path));
        return exists;
    }
    std::int64_t length(const std::string& path) override {
        const std::int64_t length = host_.attemptSettled(Call::fileLength, [&] { return inner_.length(path); });
        note(Call::fileLength, host_.known_.length(path, length),
             "length " + std::to_string(length) + ' ' + escaped(path));
        return length;
    }
    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override {
        auto file = host_.attemptSettled(Call::openFile, [&] { return inner_.openBinary(path, access); });
        host_.did((access == FileAccess::read ? "openFile read " : "openFile write ") + escaped(path));
        return std::make_unique<RecordingFile>(host_, path, std::move(file));
    }
    std::string readAll(const std::string& path) override {
        const std::string content = host_.attemptSettled(Call::readWholeFile, [&] { return inner_.readAll(path); });
        const KnownFile* known = host_.known_.find(path);
        const bool same = known != nullptr && known->exists && known->content == content;
        if (!same) {
            host_.known_.forget(path);
        }
        host_.known_.content(path, 0, content);
        note(Call::readWholeFile, same,
             "content 0 " + std::to_string(content.size()) + ' ' + escaped(path) + rowsBelow(content));
        return content;
    }
    void appendLine(const std::string& path, const std::string& text) override {
        host_.attemptSettled(Call::appendLine, [&] { inner_.appendLine(path, text); });
        host_.did("appendLine " + escaped(path) + '|' + escaped(text));
    }

  private:
    void note(Call call, bool known, const std::string& line) {
        known ? host_.lines_.nothing(call) : host_.given(line, host_.lines_.without(call));
    }

    RecordingHost& host_;
    Files& inner_;
};

RecordingHost::RecordingHost(Host& inner, SessionSink& sink, KnownFiles known, std::function<std::int64_t()> clock)
    : inner_(inner), lines_(
                         sink, clock ? std::move(clock) : [&inner] { return inner.timeGetTime(); }),
      known_(std::move(known)), port_(std::make_unique<RecordingPort>(*this, inner.commPort())),
      files_(std::make_unique<RecordingFiles>(*this, inner.files())) {
    inner.endRequested = [this] {
        event(
            "endRequest", endRequested ? endRequested : [] {});
    };
}

RecordingHost::~RecordingHost() = default;

platform::SerialPort& RecordingHost::commPort() {
    return *port_;
}

platform::Files& RecordingHost::files() {
    return *files_;
}

// The lines.

void RecordingHost::settle() {
    port_->settle();
}

void RecordingHost::did(std::string_view line) {
    settle();
    screenDue_ = true;
    lines_.did(line);
}

void RecordingHost::given(std::string_view line, std::int64_t without) {
    settle();
    screenDue_ = true;
    lines_.given(line, without);
}

void RecordingHost::addScreen() {
    if (std::exchange(screenDue_, false)) {
        for (const std::string& line : screen_.changes()) {
            settle();
            lines_.did(line);
        }
    }
}

void RecordingHost::addSettings() {
    for (const std::string& line : screen_.settings()) {
        addEvent(line, lines_.now());
    }
}

// Window events.

// "*": the program was idle. "~": in a wait. "~~": in the same wait as the event before. "again": as the line above, and the
// program has not looked at the time since.
void RecordingHost::addEvent(const std::string& name, std::int64_t now) {
    const std::string mark = waits_ == 0 ? "* " : std::exchange(eventInWait_, true) ? "~~ " : "~ ";
    if (name == lastEvent_ && name.starts_with("tick ") && lines_.onlyWaitedSince(lastEventLine_)) {
        lines_.given(mark + "again", 0, lines_.known());
    } else {
        lines_.given(mark + name, mark == "~ " ? lines_.without(Call::wait) : 0, now);
    }
    lastEvent_ = name;
    lastEventLine_ = lines_.number();
}

// Lets events run in a wait. True if one has run.
template <class Wait>
bool RecordingHost::runEvents(Wait wait) {
    addScreen();
    lines_.flush();
    struct Level { // restores the outer wait, also when the program ends
        RecordingHost& host;
        bool outer = std::exchange(host.eventInWait_, false);
        explicit Level(RecordingHost& recording) : host(recording) { ++host.waits_; }
        ~Level() { --host.waits_, host.eventInWait_ = outer; }
    } level(*this);
    wait();
    addSettings();
    return eventInWait_;
}

void RecordingHost::event(const std::string& name, const std::function<void()>& handler) {
    settle();
    addSettings();
    addEvent(name, lines_.now());
    lines_.flush();
    screenDue_ = true;
    handler();
    screenDue_ = true;
    addScreen();
    lines_.flush();
}

void RecordingHost::bind(const std::string& name, std::function<void()>& handler) {
    if (handler) {
        handler = [this, name, run = handler] { event(name, run); };
    }
}

void RecordingHost::load(Form& form) {
    for (Control* control : form.controls) {
        bind("press " + nameOf(form, *control), control->click);
    }
    for (Timer* timer : form.timers) {
        bind("tick " + timer->name(), timer->tick);
    }
    bind("close " + form.name, form.queryUnload);
    addScreen();
    screen_.add(form);
    did("load " + form.name);
    inner_.load(form);
}

void RecordingHost::show(Form& form) {
    addScreen();
    did("show " + form.name);
    inner_.show(form);
}

void RecordingHost::hide(Form& form) {
    addScreen();
    did("hide " + form.name);
    inner_.hide(form);
}

void RecordingHost::unload(Form& form) {
    addScreen();
    screen_.remove(form);
    did("unload " + form.name);
    inner_.unload(form);
}

// Clock and waits.

std::int64_t RecordingHost::timeGetTime() {
    const std::int64_t now = inner_.timeGetTime();
    if (now == lines_.known()) {
        lines_.nothing(Call::time);
    } else {
        settle();
        lines_.given("time", lines_.without(Call::time), now);
    }
    return now;
}

std::string RecordingHost::dateAndTime() {
    settle();
    const std::string text = inner_.dateAndTime();
    given("date " + text, lines_.without(Call::date));
    return text;
}

void RecordingHost::sleep(int milliseconds) {
    addScreen();
    lines_.flush();
    inner_.sleep(milliseconds);
}

void RecordingHost::waitForBytes(std::int64_t until) {
    addScreen();
    lines_.flush();
    inner_.waitForBytes(until);
}

template <class Wait>
void RecordingHost::letEventsRun(Wait wait) {
    if (!runEvents(wait)) {
        lines_.nothing(Call::wait);
    }
}

void RecordingHost::doEvents() {
    screenDue_ = true;
    letEventsRun([this] { inner_.doEvents(); });
}

void RecordingHost::waitForEvents(std::int64_t until) {
    letEventsRun([=, this] { inner_.waitForEvents(until); });
}

int RecordingHost::msgBox(const Message& message) {
    addScreen();
    did("box " + escaped(message.title) + '|' + escaped(message.text) + '|' + std::to_string(message.style));
    int answer = 0;
    runEvents([&] { answer = inner_.msgBox(message); });
    given(answer == platform::boxAnswer::cancel ? "answer Cancel" : "answer OK");
    return answer;
}

void RecordingHost::showDialog(const char* name, FileDialog& dialog, void (Host::*dialogOf)(FileDialog&)) {
    addScreen();
    did(name + (' ' + escaped(dialog.initialDirectory)) + '|' + escaped(dialog.fileName) + '|' +
        escaped(dialog.filter) + '|' + std::to_string(dialog.flags));
    attempt(Call::dialog, [&] { runEvents([&] { (inner_.*dialogOf)(dialog); }); });
    given("path " + escaped(dialog.fileName));
}

void RecordingHost::showOpen(FileDialog& dialog) {
    showDialog("open", dialog, &Host::showOpen);
}

void RecordingHost::showSave(FileDialog& dialog) {
    showDialog("save", dialog, &Host::showSave);
}

// The rest.

void RecordingHost::keepAwake(bool on) {
    did(on ? "awake" : "may sleep");
    inner_.keepAwake(on);
}

bool RecordingHost::previousInstance() {
    settle();
    const bool other = inner_.previousInstance();
    if (other) {
        given("instance", lines_.without(Call::instance));
    } else {
        lines_.nothing(Call::instance);
    }
    return other;
}

void RecordingHost::endProgram(int exitCode) {
    addScreen();
    did("ends " + std::to_string(exitCode));
    lines_.flush();
    inner_.endProgram(exitCode);
    std::abort(); // not reached; the compiler does not see that through a virtual call
}

} // namespace story
