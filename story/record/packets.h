// Short names of what goes over the line: command frames, and blocks of a known image.
#pragma once

#include "base/bytes.h"

#include <optional>
#include <span>
#include <string>

namespace story {

// The text of a command from a whole frame: STX, "00000", the text, ETX, block check. nullopt for any other bytes.
std::optional<std::string> commandText(std::span<const std::uint8_t> frame);

constexpr std::uint8_t frameStart = 0x02;
// A frame is written in parts; true when the last one has come.
bool frameComplete(std::span<const std::uint8_t> frame);

// Names the blocks of one direction of the line.
class BlockNames {
  public:
    // Adds "block 17 3F2A" to a line for SOH, the number of the block, its complement, 128 bytes that are block 17 of the
    // image, and its check bytes, here 3F 2A; false for any other bytes. A block may come again, or be missing.
    bool addName(std::string& line, std::span<const std::uint8_t> bytes, std::string_view image);

  private:
    std::size_t last_ = 0; // number of the last block; the first is 1
};

// The bytes of a block from the rest of its name after "block "; for story/, which reads a record.
Bytes blockOf(std::string_view numberAndCheck, std::string_view image);

} // namespace story
