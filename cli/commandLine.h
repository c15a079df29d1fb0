// The command line of the program without windows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace cli {

constexpr int highestPort = 16; // COM1 to COM16

struct CommandLine {
    std::string command; // identify, upgrade, save, ports
    std::optional<std::int16_t> portNumber;
    std::string device;   // of --port, when it is a path
    std::string folder;   // of --config, with a separator at its end; may be empty
    std::string record;   // file for a record of the session; empty: Setting.INI says
    std::string language; // en, ja; empty: the user's
    bool json = false;
    bool quiet = false;

    std::string file;
    bool interfaceUnit = false;
    bool verify = false;
    bool acceptUnchecked = false;
    bool ifDifferent = false;
    bool overwrite = false;
};

// Reads the arguments. Without a command line to carry out, prints what there is to say, a help text or what is wrong, and
// returns the exit code.
std::optional<int> readCommandLine(int argc, char** argv, CommandLine& line);

} // namespace cli
