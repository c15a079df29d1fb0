// Many sessions of the program on a simulated host, each determined by its seed.
#include "soak/session.h"

#include <cstdlib>
#include <iostream>

namespace {

using namespace std::string_literals;

int trace(std::uint64_t seed) {
    const soak::Result result = soak::runSession(seed);
    std::cout << result.story;
    return result.violation.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runAll(std::uint64_t sessions, std::uint64_t first) {
    std::map<std::string, int> counts;
    Micros virtualTime = 0;
    int violated = 0;
    for (std::uint64_t seed = first; seed < first + sessions; ++seed) {
        const soak::Result result = soak::runSession(seed);
        for (const auto& [what, count] : result.counts) {
            counts[what] += count;
        }
        virtualTime += result.virtualTime;
        if (!result.violation.empty()) {
            ++violated;
            std::cout << "Seed " << seed << ": " << result.violation << ": tarnbeacon-soak --trace " << seed
                      << std::endl; // seen also when the run is stopped
        }
    }
    for (const auto& [what, count] : counts) {
        std::cout << count << '\t' << what << '\n';
    }
    std::cout << sessions << " sessions, " << virtualTime / fromSeconds(3600)
              << " virtual hours, violated: " << violated << '\n';
    return violated == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 3 && argv[1] == "--trace"s) {
            return trace(std::stoull(argv[2]));
        }
        if (argc == 2 || (argc == 4 && argv[2] == "--first"s)) {
            return runAll(std::stoull(argv[1]), argc == 2 ? 1 : std::stoull(argv[3]));
        }
    } catch (const std::logic_error&) { // of stoull
    }
    std::cerr
        << "Usage: tarnbeacon-soak SESSIONS [--first SEED]\n"
           "       tarnbeacon-soak --trace SEED\n"
           "Runs SESSIONS sessions, one for each seed from SEED (1) on, or prints what happens in one. Exit code 1 if "
           "a rule is violated.\n";
    return 2;
}
