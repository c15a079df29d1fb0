// What a session has shown of the disk so far. Recorder and player use it alike, so a line is needed only for what it does
// not tell: the content of a file is recorded once.
#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace story {

struct KnownFile {
    bool exists = true;
    std::optional<std::int64_t> length = std::nullopt;
    std::string content = {}; // as far as it has been read or written
};

class KnownFiles {
  public:
    // nullptr: nothing is known of it.
    const KnownFile* find(const std::string& path) const;

    // True if this is known already; else notes it.
    bool exists(const std::string& path, bool exists);
    bool length(const std::string& path, std::int64_t length);
    bool content(const std::string& path, std::int64_t offset, std::string_view bytes);

    void forget(const std::string& path) { files_.erase(path); }

    // Notes a write of the program.
    void write(const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes);

  private:
    std::map<std::string, KnownFile> files_;
};

} // namespace story
