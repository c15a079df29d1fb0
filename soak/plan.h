// What a seed stands for: a unit, a line, an operator's day and the faults of it.
#pragma once

#include "platform/simulated/world.h"
#include "soak/faults.h"

#include <string>
#include <vector>

namespace soak {

enum class JobKind {
    start,
    load,
    write,
    save,
    verification, // tick or untick the check box
    language,
    row,
};

// One thing that the operator sets out to do.
struct Job {
    JobKind kind = JobKind::start;
    int choice = 0; // load, save: a path of filePaths; language, row: the option button
};

// Files that the operator may name. The first is the usual one.
struct NamedFile {
    const char* path;
    const char* what;
};
constexpr std::array<NamedFile, 6> loadFiles{{
    {platform::World::firmwarePath, "amplifier firmware"},
    {"/firmware/interfaceUnit.bin", "interface unit firmware"},
    {"/firmware/unknown.bin", "firmware that TYPE.INI does not know"},
    {"/firmware/short.bin", "a file one byte short"},
    {"/firmware/long.bin", "a file one byte long"},
    {"/firmware/none.bin", "no file"},
}};
constexpr std::array<NamedFile, 3> saveFiles{{
    {platform::World::savedPath, "a new file"},
    {"/firmware/longer.bin", "a longer file"},
    {"/firmware/readOnly.bin", "a file that may not be written"},
}};

struct Plan {
    std::uint64_t seed = 0;
    platform::WorldOptions world;
    std::vector<Job> jobs; // the first is the start
    std::vector<Fault> faults;
    JobKind last = JobKind::write; // or a save; done without faults after all others
    int cancelPercent = 0;         // of boxes and file dialogs that the operator cancels
    Micros reaction = 0;
};

Plan planOf(std::uint64_t seed);

// For reading, several lines.
std::string textOf(const Plan& plan);

} // namespace soak
