// Runs the timers of all loaded forms; in the toolkit's event loop by one timer of the toolkit.
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

    // Reads the settings of all timers.
    void readSettings();

    // Time of the next tick.
    Micros due() const { return timers_.next(); }

    // Sets the toolkit's timer to that time. Call it before the toolkit's event loop runs.
    void arm();

    // Runs the ticks that are due.
    void tickDue();

  protected:
    void timerEvent(QTimerEvent*) override;

  private:
    Deliver deliver_;
    WindowTimers timers_;
    Micros armed_ = never; // time that alarm_ is set to
    QBasicTimer alarm_;
};

} // namespace platform
