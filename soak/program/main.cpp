// Many sessions of the program on a simulated desktop, each determined by its seed.
#include "soak/session.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <iostream>

namespace {

int tell(std::uint64_t seed) {
    const soak::Result result = soak::runSession(seed, true);
    for (const std::string& line : result.story) {
        std::cout << line << '\n';
    }
    return result.violations.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runAll(std::uint64_t sessions, std::uint64_t first) {
    const auto start = std::chrono::steady_clock::now();
    std::map<std::string, int> counts;
    Micros virtualTime = 0;
    std::uint64_t violated = 0;
    for (std::uint64_t seed = first; seed < first + sessions; ++seed) {
        const soak::Result result = soak::runSession(seed, false);
        for (const auto& [what, count] : result.counts) {
            counts[what] += count;
        }
        virtualTime += result.virtualTime;
        if (!result.violations.empty()) {
            ++violated;
            std::cout << "Seed " << seed << ": " << result.violations.front() << ": tarnbeacon-soak --trace " << seed
                      << '\n';
        }
    }
    for (const auto& [what, count] : counts) {
        std::cout << count << '\t' << what << '\n';
    }
    const std::chrono::duration<double> real = std::chrono::steady_clock::now() - start;
    std::cout << sessions << " sessions, " << virtualTime / fromSeconds(3600) << " virtual hours, " << real.count()
              << " s, violated: " << violated << '\n';
    return violated == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int count, char** words) {
    const auto number = [&](int index) {
        std::uint64_t value = 0;
        const std::string_view word = index < count ? words[index] : "";
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        return error == std::errc() && end == word.data() + word.size() ? value : 0;
    };
    const std::string_view option = count > 1 ? words[count - 2] : "";
    if (option == "--trace" && number(2) > 0) {
        return tell(number(2));
    }
    if (number(1) > 0 && (count == 2 || (option == "--first" && number(3) > 0))) {
        return runAll(number(1), count == 2 ? 1 : number(3));
    }
    std::cerr
        << "Usage: tarnbeacon-soak SESSIONS [--first SEED]\n"
           "       tarnbeacon-soak --trace SEED\n"
           "Runs so many sessions, one for each seed from SEED (1) on, or tells one. Exit code 1 when one violates a "
           "rule.\n";
    return 2;
}
