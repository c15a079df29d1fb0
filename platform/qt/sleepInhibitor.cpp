#include "platform/qt/sleepInhibitor.h"

#include "base/version.h"
#include "platform/clock.h"

#include <QSocketNotifier>

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

// What to keep the login manager from. A session that is not at the machine itself gets the second at the most.
constexpr std::array wishes{"sleep:idle:handle-lid-switch", "idle"};
constexpr const char* reason = "Firmware is moving between the computer and the unit";
constexpr Micros longestWait = 100'000;

} // namespace

void SleepInhibitor::hold() {
    if (held() || bus_) {
        return;
    }
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0) {
        return;
    }
    bus_.reset(bus);
    notifier_ = new QSocketNotifier(sd_bus_get_fd(bus), QSocketNotifier::Read);
    QObject::connect(notifier_, &QSocketNotifier::activated, [this] { advance(); });
    wish_ = 0;
    ask();
    const Micros end = clockMicros() + longestWait;
    for (Micros rest = longestWait; bus_ && rest > 0; rest = end - clockMicros()) {
        sd_bus_wait(bus, static_cast<std::uint64_t>(rest));
        advance();
    }
}

void SleepInhibitor::drop() {
    hangUp();
    if (held()) {
        ::close(lock_);
        lock_ = -1;
    }
}

// The call asks for no interactive authorization, so nobody is shown a request for a password.
void SleepInhibitor::ask() {
    settled_ = sd_bus_call_method_async(bus_.get(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                                        "org.freedesktop.login1.Manager", "Inhibit", takeAnswer, this, "ssss",
                                        wishes[wish_], program::name, reason, "block") < 0;
}

int SleepInhibitor::takeAnswer(sd_bus_message* answer, void* inhibitor, sd_bus_error*) {
    auto& self = *static_cast<SleepInhibitor*>(inhibitor);
    int lock = -1;
    if (sd_bus_message_is_method_error(answer, nullptr) == 0 && sd_bus_message_read(answer, "h", &lock) > 0) {
        self.lock_ = ::fcntl(lock, F_DUPFD_CLOEXEC, 0); // the message takes its own along
    }
    if (self.held() || ++self.wish_ == wishes.size()) {
        self.settled_ = true;
    } else {
        self.ask();
    }
    return 0;
}

// Handles what has come in from the bus.
void SleepInhibitor::advance() {
    int progress = 1;
    while (progress > 0 && !settled_) {
        progress = sd_bus_process(bus_.get(), nullptr);
    }
    if (progress < 0 || settled_) {
        hangUp();
    }
}

// The lock does not need the bus any more.
void SleepInhibitor::hangUp() {
    if (bus_) {
        notifier_->setEnabled(false);
        notifier_->deleteLater(); // it may be the one that has called
        bus_.reset();
    }
}

} // namespace platform
