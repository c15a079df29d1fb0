// Cuts a story down to what shows a failure.
#pragma once

#include <string>

namespace story {

// The first story of the file that violates a rule (". rules"), with the fewest "*" and "." lines that still violate the same
// rule first, as it plays; of a file without a violation, the first story that plays differently, with the fewest of these
// lines and of the lines below them whose first difference is still the same. Throws std::invalid_argument if there is
// neither, or for a recorded session.
std::string shrink(const std::string& file);

} // namespace story
