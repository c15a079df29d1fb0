// The host with windows on the screen: windows, timers and dialogs of Qt 6 Widgets.
#pragma once

#include "platform/qt/formWindow.h"
#include "platform/qt/timerQueue.h"
#include "platform/system/systemHost.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QTimer>

#include <map>
#include <memory>

namespace platform {

class QtHost final : public SystemHost, QAbstractNativeEventFilter {
  public:
    // Creates the toolkit's application. There is one host in a process. The line is what its port opens.
    explicit QtHost(std::unique_ptr<LineDevice> line = makeLineDevice());
    ~QtHost() override;

    // Runs the windows until the program ends the process.
    void run();

    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const Message& message) override;
    void showOpen(FileDialog& dialog) override;
    void showSave(FileDialog& dialog) override;
    void load(Form& form) override;
    void show(Form& form) override;
    void hide(Form& form) override;
    void unload(Form& form) override;
    Size screenSize() override;
    void keepAwake(bool on) override;

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void watchSystem();
    void endIfRequested();
    void sync();
    void paintChanges();
    bool windowMappingPending() const;
    void deliver(const Handler& handler);

    QApplication application_;
    QTimer systemCheck_;
    TimerQueue timers_;
    Micros eventsAt_ = 0;                  // time of the last run of window events
    std::map<Form*, FormWindow*> windows_; // of the loaded forms
    bool keptAwake_ = false;
    bool ending_ = false; // endRequested has been called
};

} // namespace platform
