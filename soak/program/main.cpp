// Many sessions of the program on a simulated host, each determined by its seed.
#include "soak/session.h"

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string_view>
#include <vector>

namespace {

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

// nullopt: the text is not a whole number.
std::optional<std::uint64_t> numberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    const bool traces = arguments.size() == 2 && arguments[0] == "--trace";
    const bool runs = arguments.size() == 1 || (arguments.size() == 3 && arguments[1] == "--first");
    const auto number = traces || runs ? numberOf(arguments[traces ? 1 : 0]) : std::nullopt;
    const auto first = arguments.size() == 3 ? numberOf(arguments[2]) : std::optional(std::uint64_t{1});
    if (number && first) {
        return traces ? trace(*number) : runAll(*number, *first);
    }
    std::cerr
        << "Usage: tarnbeacon-soak SESSIONS [--first SEED]\n"
           "       tarnbeacon-soak --trace SEED\n"
           "Runs SESSIONS sessions, one for each seed from SEED (1) on, or prints what happens in one. Exit code 1 if "
           "a rule is violated.\n";
    return 2;
}
