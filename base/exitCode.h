// Exit codes of the program.
#pragma once

namespace exitCode {
constexpr int done = 0;
constexpr int failed = 1;             // the transfer failed, the unit refused it, or an unexpected failure
constexpr int commandLineWrong = 2;   // unknown option, missing argument
constexpr int portUnusable = 3;       // missing, held by another program, forbidden
constexpr int unitNotReady = 4;       // no unit answers, or its state, sensors or check do not allow a write
constexpr int fileUnusable = 5;       // missing, of the wrong size, unknown, for another model; cannot be written
constexpr int configurationWrong = 6; // TYPE.INI is missing
} // namespace exitCode
