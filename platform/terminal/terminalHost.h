// The host without a screen: a form's window is its state alone, a box is a text with an answer, a dialog is a path from
// the command line, and the bar of the progress dialog is passed on.
#pragma once

#include "platform/system/systemHost.h"
#include "platform/windowTimers.h"

#include <functional>
#include <optional>
#include <vector>

namespace platform {

// What stands in the operator's place.
struct TerminalOperator {
    std::string folder;                     // of the INI files and the link log; empty: that of the program
    std::optional<std::int16_t> portNumber; // instead of Setting.INI's
    std::string device;                     // of that port; empty: by Setting.INI, or the default of the system

    std::function<int(const Message&)> answer; // shows a box and returns its answer
    // The path for a dialog, and an empty one to cancel it.
    std::function<std::string(const FileDialog&)> openPath, savePath;
    std::function<void(double value, double max)> progress; // of the visible bar, at most every 100 ms
    // Runs some ten times a second while the program waits; `events`: window events may run, and it may throw.
    std::function<void(bool events)> waiting;
    std::function<void(bool on)> transfer; // a transfer begins or is over
    // The program ends the process; returns the exit code for that.
    std::function<int(int exitCode)> ended;
};

class TerminalHost final : public SystemHost {
  public:
    explicit TerminalHost(TerminalOperator& theOperator) : operator_(theOperator) {}

    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const Message& message) override { return operator_.answer(message); }
    void showOpen(FileDialog& dialog) override { take(dialog, operator_.openPath(dialog)); }
    void showSave(FileDialog& dialog) override { take(dialog, operator_.savePath(dialog)); }
    void load(Form& form) override;
    void show(Form& form) override { form.visible = true; }
    void hide(Form& form) override { form.visible = false; }
    void unload(Form& form) override;
    Size screenSize() override { return {}; }
    void keepAwake(bool on) override;
    std::string programDirectory() override;
    bool previousInstance() override { return false; } // the port is the lock
    std::optional<std::int16_t> givenPort() override;
    [[noreturn]] void endProgram(int exitCode) override;

    std::string deviceOf(int number) override;
    using SystemHost::port;

  private:
    static void take(FileDialog& dialog, const std::string& path);
    void askOperator();
    void tickDue();
    void passProgress();

    TerminalOperator& operator_;
    WindowTimers timers_;
    std::vector<const Form*> forms_; // the loaded ones
    Micros askedAt_ = 0;             // time of the last events
    Micros progressAt_ = 0;          // time of the last pass of the bar's value
    double progressValue_ = -1;
    bool awake_ = false;
};

} // namespace platform
