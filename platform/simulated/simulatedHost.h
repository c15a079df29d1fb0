// A host on a virtual clock: one thread, no real windows; the same events make the same run.
#pragma once

#include "platform/host.h"
#include "platform/simulated/hostRecords.h"
#include "platform/simulated/simulatedFiles.h"
#include "platform/simulated/simulatedPort.h"
#include "platform/windowTimers.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// How a run of window events ended.
enum class RunEnd {
    programEnded,
    idle,  // no timer runs and nothing is scheduled
    stuck, // see stuckReason()
};

class SimulatedHost : public Host {
  public:
    using Handler = std::function<void()>;

    SimulatedHost(VirtualClock& clock, SimulatedPort& port, SimulatedFiles& files)
        : clock_(clock), port_(port), files_(files) {}

    // Runs a first event and then all later ones, until one of the conditions of RunEnd.
    RunEnd run(const Handler& entry);
    const std::string& stuckReason() const { return stuckReason_; }
    bool ended() const { return ended_; }
    int exitCode() const { return exitCode_; } // once it has ended

    // Adds a window event of the operator or of a test.
    void schedule(Micros moment, Handler handler);

    // The operator's answers to boxes and file dialogs, given `reactionTime` after they open; window events run
    // meanwhile. Without a function: OK for a box, Cancel for a dialog, overwriting confirmed.
    Micros reactionTime = fromSeconds(1);
    std::function<int(const Box&)> answerBox;
    std::function<std::optional<std::string>(const FileRequest&)> chooseFile;
    std::function<bool(const FileRequest&)> confirmOverwrite;
    // Called when a box opens.
    std::function<void(const Box&)> boxOpened;

    // For observers. The first is called after a load and before any other change of a form, the second after each window
    // event that is not nested in another.
    std::function<void(Form&, FormChange)> formChanges;
    std::function<void()> eventRan;

    // Records of the run so far.
    const std::deque<Box>& boxes() const { return boxes_; }
    const std::deque<FileRequest>& fileRequests() const { return fileRequests_; }
    // Failures that left an event's handler, and invalid uses of the host.
    const std::vector<std::string>& violations() const { return violations_; }
    bool modalOpen() const { return modalDepth_ > 0; }
    bool keptAwake() const { return keptAwake_; }
    // The loaded form of that name, or nullptr.
    Form* form(std::string_view name) const;
    const std::vector<Form*>& forms() const { return forms_; }

    // Properties of the machine.
    Size screen{1920 * 15, 1080 * 15};
    std::string directory = "/tarnbeacon/";
    bool otherInstance = false;

    std::int64_t timeGetTime() override;
    std::string dateAndTime() override;
    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const Message& message) override;
    void showOpen(FileDialog& dialog) override { askForFile(dialog, false); }
    void showSave(FileDialog& dialog) override { askForFile(dialog, true); }
    void load(Form& form) override;
    void show(Form& form) override;
    void hide(Form& form) override;
    void unload(Form& form) override;
    Size screenSize() override { return screen; }
    void keepAwake(bool on) override;
    SerialPort& commPort() override { return port_; }
    Files& files() override { return files_; }
    std::string programDirectory() override { return directory; }
    bool previousInstance() override { return otherInstance; }
    [[noreturn]] void endProgram(int exitCode) override;

  private:
    void enter(); // first in each operation that the program calls
    void runEvent(const Handler& handler);
    Micros nextEvent();
    bool runDueEvent();
    void waitOnce(Micros until);
    void moveTo(Micros moment);
    void waitForOperator();
    void askForFile(FileDialog& dialog, bool save);
    void noteChange(Form& form, FormChange change);

    VirtualClock& clock_;
    SimulatedPort& port_;
    SimulatedFiles& files_;
    std::vector<Form*> forms_;
    WindowTimers timers_;
    std::multimap<Micros, Handler> scheduled_;
    std::deque<Box> boxes_;
    std::deque<FileRequest> fileRequests_;
    std::vector<std::string> violations_;
    int modalDepth_ = 0;
    int eventDepth_ = 0;
    bool keptAwake_ = false;
    bool ended_ = false;
    int exitCode_ = 0;
    std::string stuckReason_;
};

} // namespace platform
