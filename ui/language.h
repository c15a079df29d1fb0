// The language is the state of the two option buttons of the main window and is stored nowhere else.
#pragma once

#include "ui/forms.h"

inline bool japaneseSelected() {
    return frmMain().optLanguage[0].value == 1;
}

inline bool englishSelected() {
    return frmMain().optLanguage[1].value == 1;
}
