// Ticks the timers of all loaded forms from one timer of the toolkit.
#pragma once

#include "platform/form.h"
#include "platform/qt/clock.h"
#include "platform/qt/deliver.h"

#include <QBasicTimer>
#include <QObject>

#include <vector>

namespace platform {

class TimerQueue : public QObject {
  public:
    explicit TimerQueue(Deliver deliver) : deliver_(std::move(deliver)) {}

    void add(const Form& form);
    void remove(const Form& form);

    // Takes over what the program has set on the timers since the last look.
    void sync();

    // Ends the toolkit's wait for events at that moment too, in milliseconds of timeGetTime.
    void wakeAt(std::int64_t until);

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    struct Entry {
        Timer* timer;
        std::uint64_t settings; // the timer's settings that `due` stands for
        Micros due;
    };

    void arm();
    Entry* nextDue(Micros now);

    Deliver deliver_;
    std::vector<Entry> entries_;
    Micros wake_ = neverMicros;
    Micros armed_ = neverMicros; // moment that alarm_ stands for
    QBasicTimer alarm_;
};

} // namespace platform
