// Records a session as text: a line for each event, in order. "x9" means that a line occurs nine times in a row.
//   >300551010C00 <0000   a command and the code of its reply; packets and their answers in the same way
//   ->                    a "-" for each call of clearReceived before it
//   +128                  the progress bar has moved by 128
//   (10.0 s)              nothing happened for this time
//   ~                     window events have run: one is pending after the start, a reply, a dialog, a read or a close
//   box title|text|style  a box opens; file dialogs and operations of port and disk in the same way
//   arrives <NAK          what a fault makes of the message before, or bytes that neither side has sent
//   [window off, ...]     changes of what the operator sees
//   {amplifier: file}     at the end: changes of the images in the unit and of the saved file
#pragma once

#include "platform/simulated/world.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace story {

// No procedure of a transfer is under way.
bool atRest();
// What keeps the operator from going on although nothing runs; empty if nothing does.
std::string obstaclesIn(const platform::World& world);

// Records what happens in a World. Both must exist for the whole session.
class Recorder {
  public:
    explicit Recorder(platform::World& world);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // The operator's answers.
    std::function<int(const platform::Box&)> answer = [](const platform::Box&) { return platform::boxAnswer::ok; };
    std::function<std::optional<std::string>(const platform::FileRequest&)> choose;

    // Called when the program begins to send a message: a command, a block or a control byte.
    std::function<void()> messageBegins;

    void addLine(const std::string& line);

    // Returns the lines since the last call.
    std::string take();

  private:
    struct Line {
        std::string text;
        char waits = 0; // the side that waits for an answer
        int count = 1;
    };

    std::string state() const;
    void addChanges();
    void addEvent(const std::string& event, bool waits = false);
    void add(const std::string& text, char side, bool waits = false);
    void addOperation(platform::Operation operation);
    void scheduleEvent();
    void addArrival(const platform::Transmission& transmission);
    void addTransmission(const platform::Transmission& transmission);

    platform::World& world_;
    std::string state_ = state();
    std::vector<Line> lines_;
    Micros lastAt_ = world_.clock.now();
    int bar_ = 0;
    std::string clears_;
    std::string frame_; // of the program, as far as it has been received
    Micros frameAt_ = 0;
    bool eventPending_ = false;
};

} // namespace story
