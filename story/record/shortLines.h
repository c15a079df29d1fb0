// The lines of a transfer in short (docs/SESSIONS.md): blocks, and what is between them, as words of one line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace story {

class ShortLines {
  public:
    // What a line makes of the text so far.
    struct Change {
        std::size_t back = 0;  // characters to take back at its end
        std::string_view text; // what follows; valid until the next call
    };
    // The line has its line end, and its rows.
    Change add(std::string_view line);

  private:
    bool addWord(std::string_view line);

    std::string text_;        // of the last change
    std::size_t length_ = 0;  // of the last line, if it has words
    std::uint32_t block_ = 0; // number of its last block
    std::string again_;       // the last line, if it is an event that came again
    std::int64_t times_ = 1;  // so many times
};

// The lines that a line stands for, with their line ends: those of its words, or itself. Fails with
// std::invalid_argument at a word that is not known.
std::vector<std::string> longLines(const std::string& line);

} // namespace story
