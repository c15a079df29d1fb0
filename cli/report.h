// What the program without windows prints: lines for the operator, or one JSON object a line for a script.
#pragma once

#include "base/time.h"
#include "platform/console.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace cli {

// Text for one output. It never waits for the reader before finish().
class OutputQueue {
  public:
    explicit OutputQueue(platform::ConsoleStream stream) : output_(platform::makeConsoleOutput(stream)) {}

    bool isTerminal() const { return output_->isTerminal(); }
    int columns() const { return output_->columns(); }
    void put(const std::string& text);
    // Puts the text, unless earlier text has not been taken yet.
    void offer(const std::string& text);
    void flush();
    // Waits until the reader has taken everything; a signal ends the wait.
    void finish();

  private:
    std::unique_ptr<platform::ConsoleOutput> output_;
    std::string waiting_;
};

class Report {
  public:
    Report(bool json, bool quiet) : json_(json), quiet_(quiet) {}

    // A line on standard output, or the event as an object.
    void event(const std::string& line, const nlohmann::ordered_json& object);
    // A text of a box, or another message that is not a result; `notice`: not about a failure.
    void message(const std::string& text, const nlohmann::ordered_json& object, bool notice);
    // `operation`: write, verify or save.
    void progress(const std::string& operation, double bytes, double all);
    // The last line. A failure goes to standard error.
    void result(const std::string& text, const nlohmann::ordered_json& object, bool failure);

    void flush();
    void finish();

  private:
    void put(OutputQueue& queue, const std::string& line);
    void endBar();

    bool json_;
    bool quiet_;
    OutputQueue output_{platform::ConsoleStream::output};
    OutputQueue errors_{platform::ConsoleStream::error};
    bool terminal_ = output_.isTerminal();
    bool barShown_ = false;
    std::string operation_; // whose bar is shown
    Micros startedAt_ = 0;  // of it
    int reported_ = -1;     // per cent printed last, or tens of it
};

} // namespace cli
