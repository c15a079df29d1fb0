#include "story/recordedHost.h"

#include "app/program.h"
#include "base/failure.h"
#include "platform/simulated/virtualClock.h"
#include "story/parts.h"
#include "story/record/packets.h"
#include "story/record/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>

namespace story {

using namespace platform;

namespace {

// What a given line begins with, after its time.
constexpr std::array<std::string_view, 13> givenWords{
    "<", "*", "~", "!", "time", "date", "count", "exists", "length", "content", "answer", "path", "instance"};
constexpr std::int64_t mostIdle = 1'000'000; // calls between two lines

std::int64_t takeNumber(std::string_view& text) {
    std::int64_t number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number).ptr;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::string_view takeWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

bool beginsWith(std::string_view text, std::string_view word) {
    const bool sign = word == "<" || word == "!";
    return text.starts_with(word) && (sign || text.size() == word.size() || text[word.size()] == ' ');
}

SessionItem itemOf(const std::string& line) {
    SessionItem item{.line = line};
    const std::size_t end = line.find('\n');
    item.rows = line.substr(std::min(end + 1, line.size()));
    std::string_view text = std::string_view(line).substr(0, end);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        item.passed = takeNumber(text);
    }
    if (text.starts_with('/')) {
        text.remove_prefix(1);
        item.without = takeNumber(text);
    }
    text.remove_prefix(std::min(text.find_first_not_of(" -"), text.size()));
    item.text = text;
    item.given =
        std::ranges::any_of(givenWords, [&](auto word) { return beginsWith(text, word); }) || text.starts_with("~~");
    return item;
}

} // namespace

// The port. What is due is what stands next in the session, after as many calls in vain as it says.

class RecordedPort : public SerialPort {
  public:
    explicit RecordedPort(RecordedHost& host) : host_(host) {}

    void choosePort(std::int16_t) override { host_.failIfDue(Call::choosePort); }
    bool isOpen() const override { return open_; }
    void setSettings(const std::string&) override { host_.failIfDue(Call::setSettings); }
    void open() override {
        host_.failIfDue(Call::openPort);
        open_ = true;
    }
    void close() override {
        host_.failIfDue(Call::closePort);
        open_ = false;
    }
    void setBufferSizes(int, int) override { host_.failIfDue(Call::setBufferSizes); }
    void clearReceived() override { host_.failIfDue(Call::clearReceived); }
    void clearUnsent() override { host_.failIfDue(Call::clearUnsent); }
    void setReadLimit(int) override {}
    void reopenIfLost() override {}
    void write(std::span<const std::uint8_t>) override { host_.failIfDue(Call::writePort); }

    std::int16_t countReceived() override {
        host_.failIfDue(Call::countReceived);
        if (const SessionItem* count = duePoll("count")) {
            return static_cast<std::int16_t>(std::stoi(host_.take(*count)));
        }
        const SessionItem* bytes = duePoll("<");
        return bytes == nullptr ? std::int16_t{0} : static_cast<std::int16_t>(received(bytes->text).second);
    }

    Bytes read() override {
        host_.failIfDue(Call::readPort);
        const SessionItem* bytes = duePoll("<");
        return bytes == nullptr ? Bytes() : received('<' + host_.take(*bytes)).first;
    }

  private:
    const SessionItem* duePoll(std::string_view word) const {
        const SessionItem* item = host_.next(word);
        return item != nullptr && host_.recording_->lines().emptyPolls() >= item->without ? item : nullptr;
    }

    // The bytes of a line, and how many the program was told of.
    std::pair<Bytes, std::size_t> received(const std::string& line) const {
        std::string_view text = std::string_view(line).substr(1);
        std::size_t count = 0;
        const std::size_t of = text.rfind(" of ");
        if (of != std::string_view::npos && text.find_first_not_of("0123456789", of + 4) == std::string_view::npos) {
            count = std::stoul(std::string(text.substr(of + 4)));
            text = text.substr(0, of);
        }
        Bytes bytes = text.starts_with("block ") ? blockOf(text.substr(6), host_.image_) : bytesOfText(text);
        return {bytes, count == 0 ? bytes.size() : count};
    }

    RecordedHost& host_;
    bool open_ = false;
};

// The disk: what the session has shown of it.

class RecordedFile : public BinaryFile {
  public:
    RecordedFile(RecordedHost& host, std::string path) : host_(host), path_(std::move(path)) {}

    void read(std::int64_t offset, std::span<std::uint8_t> bytes) override {
        host_.failIfDue(Call::readFile);
        if (const SessionItem* content = host_.due("content", Call::readFile)) {
            host_.noteContent(*content);
        }
        const KnownFile* file = host_.disk_.find(path_);
        host_.image_ = file == nullptr ? "" : file->content;
        const auto start = std::min(static_cast<std::size_t>(offset), host_.image_.size());
        host_.image_.copy(reinterpret_cast<char*>(bytes.data()), bytes.size(), start);
    }
    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        host_.failIfDue(Call::writeFile);
        host_.disk_.write(path_, offset, bytes);
    }
    void close() override { host_.failIfDue(Call::closeFile); }

  private:
    RecordedHost& host_;
    std::string path_;
};

class RecordedFiles : public Files {
  public:
    explicit RecordedFiles(RecordedHost& host) : host_(host) {}

    bool exists(const std::string& path) override {
        if (const SessionItem* item = host_.due("exists", Call::fileExists)) {
            host_.disk_.exists(path, host_.take(*item).starts_with("yes"));
        }
        const KnownFile* file = host_.disk_.find(path);
        return file != nullptr && file->exists;
    }
    std::int64_t length(const std::string& path) override {
        host_.failIfDue(Call::fileLength);
        if (const SessionItem* item = host_.due("length", Call::fileLength)) {
            host_.disk_.length(path, std::stoll(host_.take(*item)));
        }
        const KnownFile* file = host_.disk_.find(path);
        return file == nullptr ? 0 : file->length.value_or(0);
    }
    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess) override {
        host_.failIfDue(Call::openFile);
        return std::make_unique<RecordedFile>(host_, path);
    }
    std::string readAll(const std::string& path) override {
        host_.failIfDue(Call::readWholeFile);
        if (const SessionItem* item = host_.due("content", Call::readWholeFile)) {
            host_.disk_.forget(path);
            host_.noteContent(*item);
        }
        const KnownFile* file = host_.disk_.find(path);
        return file == nullptr ? "" : file->content;
    }
    void appendLine(const std::string&, const std::string&) override { host_.failIfDue(Call::appendLine); }

  private:
    RecordedHost& host_;
};

RecordedHost::RecordedHost(const std::string& session)
    : port_(std::make_unique<RecordedPort>(*this)), files_(std::make_unique<RecordedFiles>(*this)) {
    Parts lines = partsOf(session, [](std::string_view line) { return !line.starts_with(' '); }); // with their rows
    lines.erase(lines.begin());
    if (!lines.empty() && (!lines.back().ends_with('\n') || beginsWith(itemOf(lines.back()).text, "content"))) {
        rest_ = lines.back(); // it may have been cut off
        lines.pop_back();
    }
    for (const std::string& line : lines) {
        if (line.starts_with(". ")) {
            head_ += line;
            readHead(line);
            continue;
        }
        for (const std::string& item : longLines(line)) {
            items_.push_back(itemOf(item));
        }
    }
}

RecordedHost::~RecordedHost() = default;

SerialPort& RecordedHost::commPort() {
    return *port_;
}

Files& RecordedHost::files() {
    return *files_;
}

void RecordedHost::readHead(const std::string& line) {
    const SessionItem item = itemOf(line.substr(2));
    std::string_view text = item.text;
    const std::string_view word = takeWord(text);
    if (word == "directory") {
        directory_ = unescaped(text);
    } else if (word == "port") {
        givenPort_ = static_cast<std::int16_t>(takeNumber(text));
    } else if (word == "screen") {
        std::istringstream(std::string(text)) >> screen_.width >> screen_.height;
    } else if (word == "content") {
        noteContent(item);
    }
}

// "OFFSET LENGTH PATH", and rows.
void RecordedHost::noteContent(const SessionItem& item) {
    const std::string taken = take(item);
    std::string_view text = taken;
    const auto takeNext = [&text] {
        const std::int64_t number = takeNumber(text);
        text.remove_prefix(std::min<std::size_t>(1, text.size()));
        return number;
    };
    const std::int64_t offset = takeNext();
    const std::int64_t length = takeNext();
    std::string content = contentOfRows(item.rows);
    content.resize(static_cast<std::size_t>(length));
    disk_.content(unescaped(text), offset, content);
}

// The next item if it begins with this word.
const SessionItem* RecordedHost::next(std::string_view word) const {
    return at_ < items_.size() && beginsWith(items_[at_].text, word) ? &items_[at_] : nullptr;
}

const SessionItem* RecordedHost::due(std::string_view word, Call call) const {
    const SessionItem* item = next(word);
    return item != nullptr && recording_->lines().without(call) >= item->without ? item : nullptr;
}

// Takes an item and returns its text after the first word.
std::string RecordedHost::take(const SessionItem& item) {
    known_ += item.passed;
    now_ = known_;
    std::string_view text = item.text;
    text.starts_with('<') ? text.remove_prefix(1) : (void)takeWord(text);
    at_ += at_ < items_.size() && &item == &items_[at_] ? 1 : 0; // not a line of the head
    return std::string(text);
}

void RecordedHost::failIfDue(Call call) {
    if (at_ == items_.size()) {
        throw SessionEnd{};
    }
    if (const SessionItem* item = due("!" + std::string(nameOf(call)), call)) {
        const std::string taken = take(*item);
        std::string_view text = taken;
        const auto number = static_cast<int>(takeNumber(text));
        throw Failure(number, unescaped(text.substr(std::min<std::size_t>(1, text.size()))));
    }
}

// The play.

void RecordedHost::add(std::string_view line, bool given) {
    idle_ = 0;
    if (!given && at_ == items_.size()) {
        throw SessionEnd{};
    }
    at_ += !given && !items_[at_].given ? 1 : 0;
    const ShortLines::Change change = short_.add(line);
    played_.resize(played_.size() - change.back);
    played_ += change.text;
}

std::string RecordedHost::play() {
    setHost(this);
    recording_ = std::make_unique<RecordingHost>(*this, *this, disk_, [this] { return now_; });
    setHost(recording_.get());
    played_ = head_;
    try {
        while (at_ < items_.size()) {
            if (!runEvent("*")) {
                ++at_; // the program has not done this
            }
        }
    } catch (const SessionEnd&) {
    } catch (const ProgramEnd&) {
    }
    setHost(nullptr);
    return played_ + rest_;
}

void RecordedHost::unload(Form& form) {
    std::erase(forms_, &form);
    form.visible = false;
}

// Runs the next item if it is an event with that mark.
bool RecordedHost::runEvent(std::string_view mark) {
    const SessionItem* item = next(mark);
    if (item == nullptr) {
        return false;
    }
    const std::string event = take(*item);
    if (!event.starts_with("again")) {
        event_ = event;
    } else {
        std::string_view times = event;
        takeWord(times);
        const bool last = ++again_ >= takeNumber(times);
        again_ = last ? 0 : again_;
        at_ -= last ? 0 : 1;
    }
    perform(std::string(event_)); // a copy: another event may run in it
    return true;
}

void RecordedHost::perform(const std::string& event) {
    std::string_view text = event;
    const std::string_view action = takeWord(text);
    const std::string target(takeWord(text));
    if (action == "start") {
        const Language language = target == "ja" ? Language::japanese : Language::english;
        return recording_->event(event, [language] { program::startIn(language); });
    }
    if (action == "end") { // by the program without windows, between two events
        return recording_->event(event, [this, &target] { recording_->endProgram(std::stoi(target)); });
    }
    if (action == "endRequest") {
        return endRequested();
    }
    for (Form* form : std::vector<Form*>(forms_)) {
        if (action == "close" && form->name == target && form->queryUnload) {
            const auto handler = form->queryUnload;
            return handler();
        }
        for (const Timer* timer : form->timers) {
            if (action == "tick" && timer->name() == target && timer->tick) {
                const auto handler = timer->tick;
                return handler();
            }
        }
        for (Control* control : form->controls) {
            if (nameOf(*form, *control) != target) {
                continue;
            }
            if (action == "set") {
                const auto value = static_cast<int>(takeNumber(text));
                control->kind == ControlKind::dropDownList ? control->listIndex = value : (control->value = value, 0);
                return;
            }
            if (action == "press" && control->click) {
                const auto handler = control->click; // a copy: it may unload its own form
                return handler();
            }
        }
    }
}

bool RecordedHost::runEvents() {
    const SessionItem* first = due("~", Call::wait);
    if (first == nullptr) {
        return false;
    }
    runEvent("~");
    while (runEvent("~~")) {
    }
    return true;
}

void RecordedHost::doEvents() {
    if (!runEvents()) {
        idle();
    }
}

void RecordedHost::waitForEvents(std::int64_t until) {
    if (!runEvents()) {
        wait(until);
    }
}

void RecordedHost::sleep(int /*milliseconds*/) {
    endIfDue();
}

void RecordedHost::waitForBytes(std::int64_t until) {
    endIfDue();
    wait(until);
}

// A signal can end the program without windows also in a wait without events.
void RecordedHost::endIfDue() {
    if (next("*") != nullptr && items_[at_].text.starts_with("* end ")) {
        runEvent("*");
    }
}

// Ends a program that waits for what the session does not have.
void RecordedHost::idle() {
    if (++idle_ > mostIdle) {
        throw SessionEnd{};
    }
}

// The session says what the wait is for, unless the program does not do as it did.
void RecordedHost::wait(std::int64_t until) {
    if (at_ == items_.size()) {
        throw SessionEnd{};
    }
    idle();
    if (!items_[at_].given && until != never) {
        now_ = std::max(now_, until);
    } else if (!items_[at_].given) {
        ++at_;
    }
}

// Runs events until the item that ends a box or dialog.
void RecordedHost::runModal(std::string_view answer) {
    while (next(answer) == nullptr && (runEvent("~") || runEvent("~~"))) {
    }
    if (at_ == items_.size()) {
        throw SessionEnd{};
    }
}

int RecordedHost::msgBox(const Message&) {
    runModal("answer");
    const SessionItem* answer = next("answer");
    return answer != nullptr && take(*answer) == "Cancel" ? boxAnswer::cancel : boxAnswer::ok;
}

void RecordedHost::showDialog(FileDialog& dialog) {
    runModal("path");
    failIfDue(Call::dialog);
    if (const SessionItem* path = next("path")) {
        dialog.fileName = unescaped(take(*path));
    }
}

std::int64_t RecordedHost::timeGetTime() {
    if (const SessionItem* item = due("time", Call::time)) {
        take(*item);
    } else {
        idle();
    }
    return now_;
}

std::string RecordedHost::dateAndTime() {
    const SessionItem* date = due("date", Call::date);
    return date == nullptr ? "" : take(*date);
}

bool RecordedHost::previousInstance() {
    const SessionItem* other = due("instance", Call::instance);
    if (other != nullptr) {
        take(*other);
    }
    return other != nullptr;
}

void RecordedHost::endProgram(int) {
    throw ProgramEnd{};
}

} // namespace story
