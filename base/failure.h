// Run-time failures: raised by platform operations, checked arithmetic and checked array access.
#pragma once

#include <exception>
#include <string>
#include <utility>

// Numbers that a failure carries. Only those that some routine compares with need to be apart; the rest
// tell failures apart in tests and logs. All stay clear of 0 and of 4097 to 4099, the results of a transfer.
namespace failureNumber {
constexpr int overflow = 6;            // a number outside the width of its variable
constexpr int outOfRange = 9;          // an index outside its array
constexpr int typeMismatch = 13;       // a text that does not read as a number
constexpr int unexpected = 51;         // a failure of a kind that nothing here raises
constexpr int fileNotFound = 53;       // no file of that path
constexpr int fileBroken = 57;         // a read or write of a file that failed half-way
constexpr int fileRefused = 70;        // a file that may not be opened, read or written
constexpr int objectNotSet = 91;       // use of the serial port while none is bound
constexpr int noSuchText = 326;        // an id that the string table does not hold
constexpr int invalidProperty = 380;   // a property value outside its range
constexpr int portMissing = 8002;      // a serial port that does not exist
constexpr int portHeld = 8005;         // a serial port that another program holds, or that is open already
constexpr int portForbidden = 8006;    // a serial port that this user may not open
constexpr int portRefused = 8007;      // line settings that the port does not take, any other failure of open
constexpr int portNotOpen = 8018;      // use of a port that is not open
constexpr int portLost = 8020;         // the device went away, or a read or write on it failed
constexpr int dialogCancelled = 32755; // the operator cancelled a file dialog
} // namespace failureNumber

// A run-time failure. It leaves a routine for that routine's handler or for the nearest caller that has one.
class Failure : public std::exception {
  public:
    Failure(int number, std::string description) : number_(number), description_(std::move(description)) {}

    int number() const { return number_; }
    const std::string& description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

  private:
    int number_;
    std::string description_;
};
