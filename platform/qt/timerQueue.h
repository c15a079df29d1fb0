// Ticks the timers of all loaded forms, from one timer of the toolkit where its event loop runs.
#pragma once

#include "platform/qt/deliver.h"
#include "platform/windowTimers.h"

#include <QBasicTimer>
#include <QObject>

namespace platform {

class TimerQueue : public QObject {
  public:
    explicit TimerQueue(Deliver deliver) : deliver_(std::move(deliver)) {}

    void add(Form& form) { timers_.add(form); }
    void remove(const Form& form) { timers_.remove(form); }

    // Takes over what the program has set on the timers since the last look.
    void look();

    // Moment of the next tick.
    Micros due() const { return timers_.next(); }

    // Sets the toolkit's timer to that moment, ahead of a run of the toolkit's event loop.
    void arm();

    // Ticks what is due.
    void tickDue();

  protected:
    void timerEvent(QTimerEvent*) override;

  private:
    Deliver deliver_;
    WindowTimers timers_;
    Micros armed_ = never; // moment that alarm_ is set to
    QBasicTimer alarm_;
};

} // namespace platform
