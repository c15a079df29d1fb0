// The lines of a session in order (docs/SESSIONS.md). A line is what the program did or what it was given.
#pragma once

#include "platform/operation.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace story {

using Call = platform::Operation;

// Receives each line with its line end. A line with the content of a file holds the rows of it too.
class SessionSink {
  public:
    SessionSink() = default;
    SessionSink(const SessionSink&) = delete;
    SessionSink& operator=(const SessionSink&) = delete;
    virtual ~SessionSink() = default;

    virtual void add(std::string_view line, bool given) = 0;
    // The program is about to wait.
    virtual void flush() {}
};

class SessionLines {
  public:
    // `clock` returns the present time in milliseconds.
    SessionLines(SessionSink& sink, std::function<std::int64_t()> clock);

    // A line of what the program did.
    void did(std::string_view line);

    // A line of what it was given: with the milliseconds since the line before that has a time, and the number of calls
    // before this one that were given nothing.
    void given(std::string_view line, std::int64_t without = 0);
    void given(std::string_view line, std::int64_t without, std::int64_t now);

    // A call that was given nothing; the number of them since the last line.
    void nothing(Call call) { ++calls_[static_cast<std::size_t>(call)]; }
    std::int64_t without(Call call) const { return calls_[static_cast<std::size_t>(call)]; }
    std::int64_t emptyPolls() const { return without(Call::countReceived) + without(Call::readPort); }

    // Whether the program has done nothing but wait and poll in vain since that line, which is the last one.
    std::int64_t number() const { return number_; }
    bool onlyWaitedSince(std::int64_t line) const;

    // A call of clearReceived: a "-" before the next line.
    void cleared() { ++cleared_; }

    std::int64_t now() { return clock_(); }
    std::int64_t known() const { return known_; } // the time of the last line that has one
    void flush() { sink_.flush(); }

  private:
    void add(std::string_view line, bool given);

    SessionSink& sink_;
    std::function<std::int64_t()> clock_;
    std::int64_t known_;
    std::int64_t number_ = 0; // of lines
    int cleared_ = 0;
    std::array<std::int64_t, platform::operationCount> calls_{};
    std::string line_; // in work
};

} // namespace story
