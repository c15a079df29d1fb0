// Plays the stories and recorded sessions of a file (docs/REPLAY.md) and prints the file with what happens now. With --check it
// prints the first line that differs instead, and the lines around it; with --shrink, a story cut down (story/shrink.h).
#include "story/parts.h"
#include "story/player.h"
#include "story/shrink.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

namespace {

constexpr int same = 0, differs = 1, failed = 2; // exit codes

void printLines(const char* mark, const story::Parts& lines, std::size_t first, std::size_t end) {
    for (std::size_t number = first; number < std::min(end, lines.size()); ++number) {
        std::cout << mark << number + 1 << ": " << lines[number] << (lines[number].ends_with('\n') ? "" : "\n");
    }
}

int check(const std::string& file, const std::string& played) {
    constexpr std::size_t before = 5, after = 3;
    const story::Parts recorded = story::linesOf(file), now = story::linesOf(played);
    const auto first = static_cast<std::size_t>(std::ranges::mismatch(recorded, now).in1 - recorded.begin());
    if (file == played) {
        return same;
    }
    printLines("  ", recorded, first < before ? 0 : first - before, first);
    printLines("- ", recorded, first, first + after);
    printLines("+ ", now, first, first + after);
    return differs;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc == 3 ? argv[1] : "";
    if (argc != 2 && option != "--check" && option != "--shrink") {
        std::cerr << "Usage: tarnbeacon-story [--check | --shrink] FILE\n";
        return failed;
    }
    std::ifstream in(argv[argc - 1], std::ios::binary);
    const std::string file{std::istreambuf_iterator<char>(in), {}};
    if (!in) {
        std::cerr << argv[argc - 1] << " cannot be read.\n";
        return failed;
    }
    try {
        if (option == "--shrink") {
            std::cout << story::shrink(file);
            return same;
        }
        const std::string played = story::play(file);
        if (option == "--check") {
            return check(file, played);
        }
        std::cout << played;
        return same;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return failed;
    }
}
