// The language of all texts. The option buttons of the main window set it; every start selects English.
#pragma once

#include "state/variables.h"
#include "texts/stringTable.h"

#include <initializer_list>

inline bool japaneseSelected() {
    return shared.language == Language::japanese;
}

inline bool englishSelected() {
    return shared.language == Language::english;
}

// 0 or englishOffset.
inline std::int32_t languageOffset() {
    return englishSelected() ? englishOffset : 0;
}

// The text of a Japanese `id` in the selected language. Fails like loadText().
inline std::string selectedText(std::int32_t id) {
    return loadText(id + languageOffset());
}

// The same with %1, %2 and so on replaced by the parts.
inline std::string filledText(std::int32_t id, std::initializer_list<std::string> parts) {
    std::string text = selectedText(id);
    char number = '1';
    for (const std::string& part : parts) {
        if (const std::size_t place = text.find({'%', number++}); place < text.size()) {
            text.replace(place, 2, part);
        }
    }
    return text;
}
