// The real host: windows, timers and dialogs of Qt 6 Widgets; port, disk and locks of the system.
#pragma once

#include "platform/devicePort.h"
#include "platform/host.h"
#include "platform/qt/formWindow.h"
#include "platform/qt/timerQueue.h"

#include <QApplication>
#include <QTimer>

#include <map>

namespace platform {

class QtHost final : public Host {
  public:
    // Creates the toolkit's application. There is one host in a process.
    QtHost();
    ~QtHost() override;

    // Runs the windows until the program ends the process.
    void run();

    std::int64_t timeGetTime() override;
    std::string dateAndTime() override;
    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const std::string& text, int style, const std::string& title) override;
    void showOpen(FileDialog& dialog) override;
    void showSave(FileDialog& dialog) override;
    void load(Form& form) override;
    void show(Form& form) override;
    void hide(Form& form) override;
    void unload(Form& form) override;
    Size screenSize() override;
    void keepAwake(bool on) override;
    SerialPort& commPort() override { return port_; }
    Files& files() override { return *files_; }
    std::string programDirectory() override;
    bool previousInstance() override;
    [[noreturn]] void endProgram() override;

  private:
    void watchPort();
    void sync();
    void paintChanges();
    bool windowMappingPending() const;
    void deliver(const Handler& handler);
    [[noreturn]] void endUnhandled(const std::string& description);

    QApplication application_;
    std::unique_ptr<Files> files_;
    DevicePort port_;
    QTimer portCheck_;
    TimerQueue timers_;
    Micros eventsAt_ = 0;                  // time of the last run of window events
    std::map<Form*, FormWindow*> windows_; // of the loaded forms
};

} // namespace platform
