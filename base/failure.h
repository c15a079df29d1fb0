// Run-time failures: raised by platform operations, checked arithmetic and checked array access.
#pragma once

#include <exception>
#include <string>
#include <utility>

// The numbers of failures. Routines compare some of them; the others are for tests. None is 0 or 4097 to 4099, which are
// results of a transfer.
namespace failureNumber {
constexpr int overflow = 6;            // a number outside the width of its variable
constexpr int outOfRange = 9;          // an index outside its array
constexpr int typeMismatch = 13;       // a text that is not a number
constexpr int unexpected = 51;         // any exception other than Failure
constexpr int fileNotFound = 53;       // no file of that path
constexpr int fileBroken = 57;         // a read or write of a file that failed in the middle
constexpr int fileRefused = 70;        // a file that may not be opened, read or written
constexpr int objectNotSet = 91;       // use of the serial port before fncOpenPort or after subClosePort
constexpr int noSuchText = 326;        // an id that the string table does not hold
constexpr int invalidProperty = 380;   // a property value outside its range
constexpr int portMissing = 8002;      // a serial port that does not exist
constexpr int portHeld = 8005;         // a serial port that another program holds, or that is open already
constexpr int portForbidden = 8006;    // a serial port that this user may not open
constexpr int portRefused = 8007;      // settings that the port does not accept, or any other failure of open
constexpr int portNotOpen = 8018;      // use of a port that is not open
constexpr int portLost = 8020;         // the device is gone, or a read or write on it failed
constexpr int dialogCancelled = 32755; // the operator cancelled a file dialog
} // namespace failureNumber

// A run-time failure, thrown as an exception.
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
