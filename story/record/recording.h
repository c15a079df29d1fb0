// Records the session of a program into a file, if it is asked for.
#pragma once

#include "story/record/recordingHost.h"

#include <functional>
#include <memory>
#include <string>

namespace story {

// The first line of a recorded session, below its name.
constexpr const char* recordedMark = ". recorded 2\n";

// The file that the option "--record FILE" names; empty: none.
std::string recordOption(int argc, const char* const* argv);

struct ProgramNames {
    std::string build; // delivered, service, command line
    std::string system;
};

// The head of a session that runs on this host, and what it says of the disk.
std::string headOf(platform::Host& host, const ProgramNames& names, KnownFiles& known);

// Sets the program's host, and appends its session to the file of the option, else to that of the line FILE in [RECORD] of
// Setting.INI; without either there is no record. When the file cannot be written, the record ends, the link log gets a
// line, and the program goes on.
class Recording {
  public:
    Recording(platform::Host& host, const std::string& option, const ProgramNames& names);
    ~Recording();

    // Runs an event that no form and no wait brings, by its name in the session: "start", which starts the program.
    void run(const std::string& event, const std::function<void()>& handler);

  private:
    std::unique_ptr<SessionSink> file_;
    std::unique_ptr<RecordingHost> host_;
};

} // namespace story
