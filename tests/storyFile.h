// Expected texts in tests/stories/: sections, each below a line "== name".
#pragma once

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
        } else {
            sections.back().text += line + '\n';
        }
    }
    return sections;
}

// Compares a text with the section of that name. With RECORD_STORIES set, adds it to the file instead.
inline void expectStory(const std::string& file, const std::string& name, const std::string& told) {
    if (std::getenv("RECORD_STORIES") != nullptr) {
        std::ofstream(STORIES + file, std::ios::app) << "== " << name << '\n' << told;
        return;
    }
    std::string expected = "There is no such section.";
    for (const Section& section : sectionsOf(file)) {
        expected = section.name == name ? section.text : expected;
    }
    EXPECT_EQ(told, expected) << name;
}
