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

// Joins a unit to a pseudo terminal, in real time: takes bytes from it as the line would bring them, gives them at
// the moments at which the line would deliver them, and sleeps in the kernel between.
class LineSession {
  public:
    LineSession(ProgramOptions options, PseudoTerminal& terminal);

    // Runs until `stop` is set, by a signal that only `waitMask` lets through, then writes the files.
    void run(const volatile int& stop, const sigset_t& waitMask);

  private:
    struct Departure {
        Micros start = 0; // of its first bit
        Bytes bytes;
        std::size_t written = 0;
    };

    Micros lineTime(std::size_t bytes) const;
    void takeArrivals(Micros now);
    void noteHeard(Micros now);
    void queueDepartures(Micros now);
    void writeDepartures(Micros now);
    std::size_t nextWritten(const Departure& departure) const;
    std::optional<Micros> due() const;
    void sleep(Micros now, const sigset_t& waitMask);
    void saveFiles(Micros now);
    std::string timesText();
    void saveImage() const;
    void saveJournal();

    ProgramOptions options_;
    PseudoTerminal& terminal_;
    Unit unit_;
    Bytes arriving_; // on the line to the unit, whole at arrivalAt_
    Micros arrivalAt_ = 0;
    std::deque<Departure> departing_;
    Micros departureEnd_ = 0;
    bool terminalFull_ = false;
    bool mayRead_ = false;
    Micros lateness_ = 0; // with which the last bytes were delivered: the answer to them is taken as that much earlier
    std::optional<std::chrono::system_clock::time_point> firstHeardAt_;
    std::optional<Micros> saidAt_; // when the last byte was written, until the tool says something
    std::vector<Micros> turnarounds_;
    std::size_t operationsSaved_ = 0;
    std::optional<Micros> quietAt_; // when the journal is due to be written
    std::string journalSaved_;
};

} // namespace simulator
