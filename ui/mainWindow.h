// What the main window does by itself. The commands behind its buttons stand in firmware/ and transfer/.
#pragma once

#include <cstdint>

namespace MainWindow {

// Fixes the language (English), selects row 0, sets the texts; ends the program when TYPE.INI is missing.
void Form_Load();

// Brings title, models and versions to the screen. A row without a model shows no version.
void subSetAllVersion();

// Selects the row that the commands address: 1 the interface unit, any other the amplifier. The other row greys.
void optPresent_Click(std::int16_t index);

void cmdEnd_Click();

// Ends the program at once, whatever asks for the close.
void Form_QueryUnload();

} // namespace MainWindow
