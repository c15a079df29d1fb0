// One run of the program without windows: the same routines as behind the windows, with answers from the command line in
// the operator's place.
#pragma once

#include "cli/commandLine.h"
#include "cli/report.h"
#include "platform/terminal/terminalHost.h"
#include "story/record/recording.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>

namespace cli {

class Session {
  public:
    explicit Session(const CommandLine& line);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() = default;

    // Carries out the command, reports its result, and ends the process with the exit code of it.
    [[noreturn]] void run();

  private:
    void choosePort();
    platform::TerminalOperator terminalOperator();

    void requireReadableTypeFile();
    void start();
    [[noreturn]] void failStart();
    void reportIdentified();
    void selectUnit();
    [[noreturn]] void upgrade();
    void load();
    [[noreturn]] void endUpgrade();
    void requireWritableFile();
    [[noreturn]] void save();
    std::string operation() const; // that runs
    void waitForEnd();

    int answer(const platform::Message& box);
    void whileWaiting(bool events);
    void takeSignal(int number);
    int explainEnd(int exitCode);

    std::string portName();
    std::string withPortName(std::string text);
    bool met(int failure) const { return failures_.contains(failure); }
    bool shown(int box) const { return boxes_.contains(box); }
    void report(int exitCode, const std::string& text);
    [[noreturn]] void end(int exitCode, const std::string& text);

    CommandLine line_;
    bool japanese_;
    Report report_;
    platform::TerminalOperator operator_;
    platform::TerminalHost host_{operator_};
    std::optional<story::Recording> recording_; // once the program runs

    std::set<int> boxes_;     // ids of the boxes shown
    std::set<int> failures_;  // numbers of the failures that boxes reported
    std::string lastBox_;     // its text
    std::string fileFailure_; // text of the box about a file
    std::string versionBefore_;

    bool transfer_ = false; // one runs
    bool started_ = false;  // one has begun
    bool unchanged_ = false;
    bool over_ = false; // the result has been reported
    Micros warnedAt_ = 0;
    int breakOff_ = 0;       // the signal that breaks the transfer off; 0: none
    bool breaksOff_ = false; // the unit is being told
};

} // namespace cli
