// Plays sessions of the whole program on the simulated host.
#pragma once

#include "story/monitor.h"

#include <memory>
#include <string>

namespace story {

// Plays the stories of a file, each in a new World, and returns the file with each "*" line followed by what the operator
// and the unit see (story/recorder.h). Throws std::invalid_argument for an unknown command.
//   == name              begins a story
//   * press cmdUpgrade   an action of the operator
//   . silence            an event or a setting outside the program; its effects are not recorded
//   . rules              from here on the rules of story/monitor.h hold; a story ends with its first line "VIOLATION: ..."
//   := name              at the head of the file: gives the lines below it a name; they may have actions and other names
//   :: name              stands for these lines
// Commands above the first name are performed before each story. The table of commands is in story/player.cpp.
std::string play(const std::string& file);

// One story, for a caller that draws its lines one after the other.
class Session {
  public:
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    virtual ~Session() = default;

    // Performs the "*" and "." lines of a story, until a rule is violated, and returns them with what is seen.
    virtual std::string perform(const std::string& script) = 0;
    // The changes of the images and of the saved file.
    virtual std::string end() = 0;
    // The program has not ended, and no rule is violated.
    virtual bool goesOn() const = 0;

    virtual platform::World& world() = 0;
    virtual const Monitor* monitor() const = 0; // nullptr before the line ". rules"
};
std::unique_ptr<Session> newSession();

} // namespace story
