// The captions and fonts of the windows in the selected language.
#pragma once

#include <cstdint>
#include <string_view>

namespace ResourceSetting {

// Sets the texts of "frmMain", "frmStartUp" or "frmWait"; any other name changes nothing.
void subSetFormText(std::string_view formName);

void subSetMainText(std::int32_t offset);
void subSetStartUpText(std::int32_t offset);
void subSetWaitText(std::int32_t offset);

// Sets shared.portSetupText.
void subLoadMessageTexts();

// The click of both language options: selects the language and sets the texts of the main window.
void optLanguage_Click();

} // namespace ResourceSetting
