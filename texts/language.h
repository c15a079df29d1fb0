// The language of all texts. The option buttons of the main window set it; every start selects English.
#pragma once

#include "state/variables.h"
#include "texts/stringTable.h"

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
