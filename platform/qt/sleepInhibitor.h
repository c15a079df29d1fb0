// Keeps the computer from going to sleep by itself, by a lock of the login manager. The system bus is spoken to by
// sd-bus, which never blocks; Qt's own module stops the thread until a bus has answered, and one that hangs never does.
#pragma once

#include <cstddef>
#include <memory>
#include <systemd/sd-bus.h>

class QSocketNotifier;

namespace platform {

class SleepInhibitor {
  public:
    SleepInhibitor() = default;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;
    ~SleepInhibitor() { drop(); }

    // Asks for the lock and waits 100 ms at the most. An answer that comes later is taken by the toolkit's events.
    // Where there is no login manager, or none that grants the lock, the computer goes to sleep as it likes.
    void hold();

    // Gives the lock back, also one that has been asked for and not come yet.
    void drop();

    bool held() const { return lock_ >= 0; }

  private:
    struct Close {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    void ask();
    static int takeAnswer(sd_bus_message* answer, void* inhibitor, sd_bus_error* error);
    void advance();
    void hangUp();

    std::unique_ptr<sd_bus, Close> bus_; // while a question is open
    QSocketNotifier* notifier_ = nullptr;
    std::size_t wish_ = 0;
    bool settled_ = false;
    int lock_ = -1; // a descriptor: the lock holds until it is closed, by the end of the process at the latest
};

} // namespace platform
