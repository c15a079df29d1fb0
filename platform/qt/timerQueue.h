// Ticks the timers of all loaded forms, from one timer of the toolkit where its event loop runs.
#pragma once

#include "platform/clock.h"
#include "platform/form.h"
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
    void look();

    // Moment of the next tick.
    Micros due() const;

    // Sets the toolkit's timer to that moment, ahead of a run of the toolkit's event loop.
    void arm();

    // Ticks what is due.
    void tickDue();

  protected:
    void timerEvent(QTimerEvent*) override;

  private:
    struct Entry {
        Timer* timer;
        std::uint64_t settings; // the timer's settings that `due` stands for
        Micros due;
    };

    Deliver deliver_;
    std::vector<Entry> entries_;
    Micros armed_ = never; // moment that alarm_ is set to
    QBasicTimer alarm_;
};

} // namespace platform
