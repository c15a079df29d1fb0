// What a program without windows has around it: its output, the signals that ask it to end, the user's language. The
// folder of each system defines it.
#pragma once

#include <memory>
#include <string_view>

namespace platform {

// Standard output or standard error.
class ConsoleOutput {
  public:
    ConsoleOutput() = default;
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;
    virtual ~ConsoleOutput() = default;

    virtual bool isTerminal() const = 0;

    // Width of the terminal in characters; 80 when it is not known.
    virtual int columns() const = 0;

    // Takes bytes of the text without waiting and returns their number: less than all when the reader is slow or stopped. When
    // there is no reader any more, all are dropped.
    virtual std::size_t write(std::string_view text) = 0;

    // Waits until there is room for more or the time is over.
    virtual void waitForRoom(int milliseconds) = 0;
};

enum class ConsoleStream { output, error };
std::unique_ptr<ConsoleOutput> makeConsoleOutput(ConsoleStream stream);

// From now on takeSignal() returns the signals that ask the program to end, and nothing else that its terminal does ends or
// stops it.
void catchSignals();

// The number of the signal that has come since the last call, SIGINT or SIGTERM; 0: none.
int takeSignal();

// True when the user's language is Japanese.
bool userIsJapanese();

} // namespace platform
