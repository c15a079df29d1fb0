#include "platform/terminal/terminalHost.h"

#include "base/failure.h"
#include "base/text.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace platform {

namespace {

constexpr Micros longestWait = 100'000; // a signal ends no wait

} // namespace

void TerminalHost::sleep(int milliseconds) {
    timers_.readSettings(clockMicros());
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void TerminalHost::waitForBytes(std::int64_t until) {
    timers_.readSettings(clockMicros());
    const Micros end = fromMilliseconds(until);
    while (!port().waitForInput(std::min(end, clockMicros() + longestWait)) && clockMicros() < end) {
        operator_.waiting(false);
    }
}

void TerminalHost::doEvents() {
    timers_.readSettings(clockMicros());
    askOperator();
    tickDue();
    passProgress();
}

void TerminalHost::waitForEvents(std::int64_t until) {
    timers_.readSettings(clockMicros());
    const Micros end = std::min({fromMilliseconds(until), timers_.next(), clockMicros() + longestWait});
    const bool input = port().waitForInput(end);
    const Micros now = clockMicros();
    if (!input || timers_.next() <= now || now >= askedAt_ + longestWait) { // also on a line that is never quiet
        askOperator();
        tickDue();
    }
    passProgress();
}

void TerminalHost::askOperator() {
    askedAt_ = clockMicros();
    operator_.waiting(true);
}

void TerminalHost::tickDue() {
    const Micros now = clockMicros();
    while (timers_.next() <= now) {
        if (const Timer& timer = timers_.take(now); timer.tick) {
            timer.tick();
            timers_.readSettings(clockMicros());
        }
    }
}

void TerminalHost::passProgress() {
    constexpr Micros interval = 100'000;
    for (const Form* form : forms_) {
        const auto bar = std::ranges::find(form->controls, ControlKind::progressBar, &Control::kind);
        if (!form->visible || bar == form->controls.end()) {
            continue;
        }
        const Control& shown = **bar;
        const Micros now = clockMicros();
        if (shown.value != progressValue_ && (now >= progressAt_ + interval || shown.value == shown.max)) {
            progressAt_ = now;
            progressValue_ = shown.value;
            operator_.progress(shown.value, shown.max);
        }
    }
}

void TerminalHost::take(FileDialog& dialog, const std::string& path) {
    if (const std::string name = trim(path); !name.empty()) {
        dialog.fileName = name;
    } else if (dialog.cancelError) {
        throw Failure(failureNumber::dialogCancelled, "The dialog was cancelled.");
    }
}

void TerminalHost::load(Form& form) {
    forms_.push_back(&form);
    timers_.add(form);
}

void TerminalHost::unload(Form& form) {
    std::erase(forms_, &form);
    timers_.remove(form);
    form.visible = false;
}

void TerminalHost::keepAwake(bool on) {
    SystemHost::keepAwake(on);
    if (on != awake_) {
        awake_ = on;
        operator_.transfer(on);
    }
}

std::string TerminalHost::programDirectory() {
    return operator_.folder.empty() ? SystemHost::programDirectory() : operator_.folder;
}

std::optional<std::int16_t> TerminalHost::givenPort() {
    return operator_.portNumber;
}

std::string TerminalHost::deviceOf(int number) {
    const bool given = number == operator_.portNumber && !operator_.device.empty();
    return given ? operator_.device : SystemHost::deviceOf(number);
}

void TerminalHost::endProgram(int exitCode) {
    SystemHost::endProgram(operator_.ended(exitCode));
}

} // namespace platform
