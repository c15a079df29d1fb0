// Where the value of a key stands in an INI text, found by taking the text apart as a whole.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace profileOracle {

inline std::string stripped(std::string text) {
    const auto blank = [](char character) { return character == ' ' || character == '\t'; };
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), blank));
    text.erase(std::find_if_not(text.rbegin(), text.rend(), blank).base(), text.end());
    return text;
}

inline std::string lowered(std::string text) {
    for (char& character : text) {
        character = character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    }
    return text;
}

struct Entry {
    std::string section, key, value;
};

// The lines with a key below a section, in order, the values uncut.
inline std::vector<Entry> entriesOf(const std::string& text) {
    std::vector<Entry> entries;
    std::istringstream lines(text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text);
    bool inSection = false;
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        line = stripped(line);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            const std::size_t end = line.find(']');
            inSection = end != std::string::npos;
            section = inSection ? lowered(stripped(line.substr(1, end - 1))) : "";
        } else if (inSection && equals != std::string::npos && equals > 0) {
            entries.push_back({section, lowered(stripped(line.substr(0, equals))), stripped(line.substr(equals + 1))});
        }
    }
    return entries;
}

inline std::string valueOf(const std::vector<Entry>& entries, const std::string& section, const std::string& key) {
    const auto at = std::ranges::find_if(entries, [&](const Entry& entry) {
        return entry.section == lowered(stripped(section)) && entry.key == lowered(stripped(key));
    });
    return at == entries.end() ? "" : at->value;
}

} // namespace profileOracle
