// The text of stories in parts.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace story {

using Parts = std::vector<std::string>;

// Splits a text before each line with that property. The first part is what stands above the first such line, and may be
// empty; each part ends with a line end, if the text does.
Parts partsOf(std::string_view text, const std::function<bool(std::string_view line)>& begins);
Parts partsOf(std::string_view text, std::string_view mark); // before each line that begins with `mark`
Parts linesOf(std::string_view text);                        // with their line ends

std::string join(const Parts& parts);

} // namespace story
