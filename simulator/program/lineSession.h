#pragma once

#include "simulator/program/programOptions.h"
#include "simulator/program/pseudoTerminal.h"
#include "simulator/unit.h"

#include <chrono>
#include <csignal>
#include <deque>
#include <string>
#include <vector>

namespace simulator {

// Connects a unit to a pseudo terminal in real time: reads and writes bytes at the times at which a line would deliver
// them, and sleeps in the kernel in between.
class LineSession {
  public:
    LineSession(ProgramOptions options, PseudoTerminal& terminal);

    // Runs until `stop` is set, by a signal that only `waitMask` lets through, then writes the files.
    void run(const volatile int& stop, const sigset_t& waitMask);

  private:
    struct Delivery {
        Micros start = 0; // of its first bit
        Bytes bytes;
        std::size_t written = 0;
    };

    Micros lineTime(std::size_t bytes) const;
    void takeInput(Micros now);
    void noteReceived(Micros now);
    void queueOutput(Micros now);
    void writeOutput(Micros now);
    std::size_t nextWritten(const Delivery& delivery) const;
    Micros due() const;
    void sleep(Micros now, const sigset_t& waitMask);
    void saveFiles(Micros now);
    std::string timesText();
    void saveImage() const;
    void saveJournal();

    ProgramOptions options_;
    PseudoTerminal& terminal_;
    Unit unit_;
    Bytes pendingInput_; // on the line to the unit, complete at inputCompleteAt_
    Micros inputCompleteAt_ = 0;
    std::deque<Delivery> pendingOutput_;
    Micros outputEnd_ = 0;
    bool terminalFull_ = false;
    bool mayRead_ = false;
    Micros lateness_ = 0; // of the last delivery; the answer counts as that much earlier
    std::optional<std::chrono::system_clock::time_point> firstByteAt_;
    std::optional<Micros> lastOutputAt_; // time of the last byte written, until the program sends something
    std::vector<Micros> turnarounds_;
    std::size_t operationsSaved_ = 0;
    std::optional<Micros> journalDueAt_; // time at which to write the journal
    std::string journalSaved_;
};

} // namespace simulator
