#include "platform/simulated/simulatedHost.h"

#include "base/failure.h"
#include "base/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>

namespace platform {

namespace {

constexpr int maxNesting = 50;
constexpr auto startDate = std::chrono::sys_days{std::chrono::year{2024} / 4 / 1};

// Adds one to a count for its lifetime.
class Counted {
  public:
    explicit Counted(int& count) : count_(count) { ++count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --count_; }

  private:
    int& count_;
};

} // namespace

// The clock and its waits.

void SimulatedHost::enter() {
    if (!ended_) {
        return;
    }
    violations_.emplace_back("code of the program ran after its end");
    if (std::uncaught_exceptions() == 0) {
        throw ProgramEnd{};
    }
}

std::int64_t SimulatedHost::timeGetTime() {
    enter();
    clock_.countPoll();
    return clock_.now() / 1000;
}

std::string SimulatedHost::dateAndTime() {
    enter();
    const auto now = startDate + std::chrono::microseconds(clock_.now());
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{std::chrono::floor<std::chrono::seconds>(now - day)};
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d/%02u/%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

void SimulatedHost::moveTo(Micros moment) {
    timers_.readSettings(clock_.now());
    clock_.advanceTo(moment);
    port_.advance();
}

void SimulatedHost::sleep(int milliseconds) {
    enter();
    moveTo(clock_.now() + fromMilliseconds(milliseconds));
}

void SimulatedHost::waitForBytes(std::int64_t until) {
    enter();
    clock_.countPoll();
    port_.advance();
    const Micros end = fromMilliseconds(until);
    while (!port_.pollInput() && clock_.now() < end) {
        const Micros next = std::min(port_.next(), end);
        if (next == never) {
            throw Stuck{"the program waits for bytes that nothing will send"};
        }
        moveTo(next);
    }
}

void SimulatedHost::doEvents() {
    enter();
    clock_.countPoll();
    while (runDueEvent()) {
    }
}

void SimulatedHost::waitForEvents(std::int64_t until) {
    enter();
    waitOnce(fromMilliseconds(until));
}

void SimulatedHost::waitOnce(Micros until) {
    clock_.countPoll();
    port_.advance();
    while (!runDueEvent() && !port_.pollInput() && clock_.now() < until) {
        const Micros next = std::min({nextEvent(), port_.next(), until});
        if (next == never) {
            throw Stuck{"the program waits and nothing will ever happen"};
        }
        moveTo(next);
    }
}

void SimulatedHost::keepAwake(bool on) {
    enter();
    keptAwake_ = on;
}

// Window events.

Micros SimulatedHost::nextEvent() {
    timers_.readSettings(clock_.now());
    return std::min(timers_.next(), scheduled_.empty() ? never : scheduled_.begin()->first);
}

bool SimulatedHost::runDueEvent() {
    const Micros due = nextEvent();
    if (due > clock_.now()) {
        return false;
    }
    if (!scheduled_.empty() && scheduled_.begin()->first == due) {
        const Handler handler = std::move(scheduled_.begin()->second);
        scheduled_.erase(scheduled_.begin());
        runEvent(handler);
    } else {
        runEvent(Handler(timers_.take(clock_.now()).tick)); // a copy: the tick may unload its own form
    }
    return true;
}

void SimulatedHost::runEvent(const Handler& handler) {
    if (!handler) {
        return;
    }
    if (eventDepth_ == maxNesting) {
        throw Stuck{"window events run inside each other without end"};
    }
    const Counted nesting(eventDepth_);
    try {
        handler();
    } catch (const std::exception& failure) {
        violations_.push_back(std::string("a failure left an event: ") + failure.what());
    }
    if (eventDepth_ == 1 && eventRan) {
        eventRan();
    }
}

void SimulatedHost::schedule(Micros moment, Handler handler) {
    scheduled_.emplace(moment, std::move(handler));
}

RunEnd SimulatedHost::run(const Handler& entry) {
    try {
        runEvent(entry);
        while (nextEvent() != never) {
            waitOnce(never);
        }
        return RunEnd::idle;
    } catch (const ProgramEnd&) {
        return RunEnd::programEnded;
    } catch (const Stuck& stuck) {
        stuckReason_ = stuck.why;
        return RunEnd::stuck;
    }
}

void SimulatedHost::endProgram(int exitCode) {
    ended_ = true;
    exitCode_ = exitCode;
    throw ProgramEnd{};
}

// Boxes and dialogs.

void SimulatedHost::waitForOperator() {
    const Micros end = clock_.now() + reactionTime;
    while (clock_.now() < end) {
        waitOnce(end);
    }
}

int SimulatedHost::msgBox(const Message& message) {
    enter();
    clock_.countPoll();
    const Counted modal(modalDepth_);
    Box& box = boxes_.emplace_back(Box{message, clock_.now()});
    if (boxOpened) {
        boxOpened(box);
    }
    waitForOperator();
    const int answer = answerBox ? answerBox(box) : boxAnswer::ok;
    box.answer = box.hasCancel() ? answer : boxAnswer::ok;
    return box.answer;
}

void SimulatedHost::askForFile(FileDialog& dialog, bool save) {
    enter();
    clock_.countPoll();
    const Counted modal(modalDepth_);
    FileRequest& request = fileRequests_.emplace_back(FileRequest{dialog, save, clock_.now()});
    bool settled = false;
    while (!settled) {
        waitForOperator();
        request.path = chooseFile ? chooseFile(request) : std::nullopt;
        if (request.path) {
            request.path = trim(*request.path);
        }
        const bool asks = save && (dialog.flags & FileDialog::overwritePrompt) != 0;
        const bool exists = asks && request.path && files_.find(*request.path) != nullptr;
        request.askedToOverwrite = request.askedToOverwrite || exists;
        settled = !exists || !confirmOverwrite || confirmOverwrite(request);
    }
    if (request.path) {
        dialog.fileName = *request.path;
    } else if (dialog.cancelError) {
        throw Failure(failureNumber::dialogCancelled, "Cancel was selected");
    }
}

// Forms.

Form* SimulatedHost::form(std::string_view name) const {
    const auto at = std::ranges::find(forms_, name, [](const Form* form) { return std::string_view(form->name); });
    return at == forms_.end() ? nullptr : *at;
}

// Reports a change of a form; a violation if it is not loaded.
void SimulatedHost::noteChange(Form& form, FormChange change) {
    enter();
    if (std::ranges::find(forms_, &form) == forms_.end()) {
        violations_.push_back(form.name + " is shown, hidden or unloaded and was not loaded");
    }
    if (formChanges) {
        formChanges(form, change);
    }
}

void SimulatedHost::load(Form& form) {
    if (this->form(form.name) != nullptr) {
        violations_.push_back(form.name + " is loaded twice");
    }
    forms_.push_back(&form);
    noteChange(form, FormChange::loaded);
    timers_.add(form);
}

void SimulatedHost::show(Form& form) {
    noteChange(form, FormChange::shown);
    form.visible = true;
}

void SimulatedHost::hide(Form& form) {
    noteChange(form, FormChange::hidden);
    form.visible = false;
}

void SimulatedHost::unload(Form& form) {
    noteChange(form, FormChange::unloaded);
    form.visible = false;
    timers_.remove(form);
    std::erase(forms_, &form);
}

} // namespace platform
