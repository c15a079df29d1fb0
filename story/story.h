// A session as a story: a line for each thing, in order, "x9" for nine of a kind in a row.
//   >300551010C00 <0000   a command and the code of its answer; packets and their answers likewise
//   ->                    ahead of it what had been received was dropped, as many times
//   +128                  so far the bar has moved
//   (10.0 s)              so long nothing happened
//   ~                     the window event that has been pending since the start, a reply, a dialog or a close has run
//   box title|text|style  as it comes up; likewise file dialogs and operations of port and disk
//   [window off, ...]     what has changed by now of what the operator sees
//   {amplifier: file}     what has changed in the end of what the unit and the saved file hold
#pragma once

#include "platform/simulated/world.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace story {

// Names of the operations of port and disk.
extern const std::map<std::string, platform::Operation> operations;

// What keeps the operator from going on although nothing runs; empty if he can.
std::string obstaclesIn(const platform::World& world);

// Listens to a world for as long as both live.
class Story {
  public:
    explicit Story(platform::World& world);
    Story(const Story&) = delete;
    Story& operator=(const Story&) = delete;

    // The operator's answers.
    std::function<int(const platform::Box&)> answer = [](const platform::Box&) { return platform::boxAnswer::ok; };
    std::function<std::optional<std::string>(const platform::AskedFile&)> choose;

    // Adds a line.
    void say(const std::string& line);

    // What has happened since the last call.
    std::string take();

  private:
    struct Line {
        std::string text;
        char waits = 0; // the side that waits for an answer
        int count = 1;
    };

    std::vector<std::string> state() const;
    void look();
    void note(const std::string& event, bool waits = false);
    void add(const std::string& text, char side, bool waits = false);
    void noteCall(platform::Operation operation);
    void awaitEvents();
    void hear(const platform::Passage& passage);

    platform::World& world_;
    std::vector<std::string> state_ = state();
    std::vector<Line> lines_;
    Micros lastAt_ = world_.clock.now();
    int bar_ = 0;
    std::string clears_;
    std::string frame_; // of the tool, as far as it has been received
    bool eventPending_ = false;
};

} // namespace story
