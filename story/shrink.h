// Cuts a story down to what shows a failure.
#pragma once

#include <string>

namespace story {

// The first story of the file that violates a rule (". rules"), with the fewest "*" and "." lines that still violate the same
// rule first, as it plays. Of a file without a violation, the first story or recorded session that plays differently, with
// the fewest actions whose first different line is still the same, up to this line; in a recorded session, the bytes of a
// file that do not matter are 0. Throws std::invalid_argument if there is neither.
std::string shrink(const std::string& file);

} // namespace story
