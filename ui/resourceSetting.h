// The captions and fonts of the windows in the selected language.
#pragma once

#include <cstdint>
#include <string_view>

namespace ResourceSetting {

// Sets the texts of "frmMain", "frmStartUp" or "frmWait"; any other name changes nothing.
void subSetFormText(std::string_view formName);

void subSetMainText(std::int32_t languageOffset);
void subSetStartUpText(std::int32_t languageOffset);
void subSetWaitText(std::int32_t languageOffset);

// Sets shared.portSetupText.
void subLoadMessageTexts();

// The click of both language options: sets the texts of the main window.
void optLanguage_Click();

} // namespace ResourceSetting
