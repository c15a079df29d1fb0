// Records the session of a program into a file, if it is asked for.
#pragma once

#include "story/record/recordingHost.h"

#include <functional>
#include <memory>
#include <string>

namespace story {

// The first line of a recorded session, below its name.
constexpr const char* recordedMark = ". recorded 1\n";

// The file that the option "--record FILE" names, else the line FILE in [RECORD] of Setting.INI; empty: none.
std::string recordPath(platform::Host& host, int argc, const char* const* argv);

struct ProgramNames {
    std::string build; // delivered, service, command line
    std::string system;
};

// The head of a session that runs on this host, and what it says of the disk.
std::string headOf(platform::Host& host, const ProgramNames& names, KnownFiles& known);

// Sets the program's host, and appends its session to a file. When the file cannot be written, the record ends, the link
// log gets a line, and the program goes on.
class Recording {
  public:
    Recording(platform::Host& host, const std::string& path, const ProgramNames& names);
    ~Recording();

    // Starts the program.
    void run(const std::function<void()>& start);

  private:
    std::unique_ptr<SessionSink> file_;
    std::unique_ptr<RecordingHost> host_;
};

} // namespace story
