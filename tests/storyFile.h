// Expected texts in tests/stories/: sections, each below a line "== name".
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

struct Section {
    std::string name;
    std::string text;
    friend std::ostream& operator<<(std::ostream& out, const Section& section) { return out << section.name; }
};

inline std::vector<Section> sectionsOf(const std::string& file) {
    std::vector<Section> sections;
    std::ifstream input(STORIES + file);
    for (std::string line; std::getline(input, line);) {
        if (line.starts_with("== ")) {
            sections.push_back({line.substr(3), ""});
        } else if (!sections.empty()) { // above the first there is a comment
            sections.back().text += line + '\n';
        }
    }
    return sections;
}

// The lines above the first section.
inline std::string headOf(const std::string& file) {
    std::string head;
    std::ifstream input(STORIES + file);
    for (std::string line; std::getline(input, line) && !line.starts_with("== ");) {
        head += line + '\n';
    }
    return head;
}

// Compares a text with the section of that name. With RECORD_STORIES set, the section is replaced.
inline void expectStory(const std::string& file, const std::string& name, const std::string& actual) {
    std::vector<Section> sections = sectionsOf(file);
    const auto section = std::ranges::find(sections, name, &Section::name);
    ASSERT_NE(section, sections.end()) << name;
    EXPECT_EQ(actual, section->text) << name;
    section->text = actual;
    if (std::getenv("RECORD_STORIES") != nullptr) {
        const std::string head = headOf(file);
        std::ofstream out(STORIES + file);
        out << head;
        for (const Section& each : sections) {
            out << "== " << each.name << '\n' << each.text;
        }
    }
}
