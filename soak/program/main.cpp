// Many sessions of the program on a simulated desktop, each with the faults of its seed.
#include "soak/summary.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

namespace {

constexpr const char* usage = "Usage: tarnbeacon-soak SESSIONS [--first SEED]\n"
                              "       tarnbeacon-soak --trace SEED\n"
                              "Runs so many sessions, one for each seed from SEED (1) on, or tells one as it goes.\n"
                              "Exit code 1 when an invariant was violated.\n";

struct Options {
    std::uint64_t sessions = 0;
    std::uint64_t first = 1;
    bool trace = false;
};

std::uint64_t numberOf(std::string_view word) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size()) {
        throw std::invalid_argument("no number: " + std::string(word));
    }
    return number;
}

Options readOptions(int count, char** words) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view word = words[i];
        const bool trace = word == "--trace";
        if (trace || word == "--first") {
            if (++i == count) {
                throw std::invalid_argument(std::string(word) + " needs a seed");
            }
            options.first = numberOf(words[i]);
            options.trace = options.trace || trace;
        } else {
            options.sessions = numberOf(word);
        }
    }
    if (options.trace == (options.sessions > 0)) {
        throw std::invalid_argument("so many sessions, or the trace of one");
    }
    return options;
}

void print(const std::vector<std::string>& lines, std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < std::min(last, lines.size()); ++i) {
        std::cout << lines[i] << '\n';
    }
}

// The seed's story up to its first violation.
void tellViolation(std::uint64_t seed) {
    constexpr std::size_t linesAhead = 60;
    constexpr std::size_t linesBehind = 3;
    const soak::Plan plan = soak::planOf(seed);
    const soak::SessionResult result = soak::runSession(plan, true);
    std::cout << "\nSeed " << seed << " violates. All of it: tarnbeacon-soak --trace " << seed << '\n' << textOf(plan);
    const std::size_t at = result.violatedAt;
    print(result.story, at > linesAhead ? at - linesAhead : 0, at + linesBehind);
}

bool trace(std::uint64_t seed) {
    const soak::Plan plan = soak::planOf(seed);
    const soak::SessionResult result = soak::runSession(plan, true);
    std::cout << textOf(plan);
    print(result.story, 0, result.story.size());
    return result.violations.empty();
}

bool soakAll(const Options& options) {
    constexpr int mostTold = 5;
    soak::Summary summary;
    const auto start = std::chrono::steady_clock::now();
    for (std::uint64_t seed = options.first; seed < options.first + options.sessions; ++seed) {
        const soak::SessionResult result = soak::runSession(soak::planOf(seed), false);
        summary.add(result);
        if (!result.violations.empty() && summary.violations() <= mostTold) {
            tellViolation(seed);
        }
    }
    const std::chrono::duration<double> real = std::chrono::steady_clock::now() - start;
    std::cout << summary.text(real.count());
    return summary.violations() == 0;
}

} // namespace

int main(int count, char** words) {
    try {
        const Options options = readOptions(count, words);
        const bool good = options.trace ? trace(options.first) : soakAll(options);
        return good ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& failure) {
        std::cerr << "tarnbeacon-soak: " << failure.what() << '\n' << usage;
        return 2;
    }
}
