// Start, rows and end of the main window. The commands of its buttons are in firmware/ and transfer/.
#pragma once

#include <cstdint>

namespace MainWindow {

// Selects English and row 0, sets the texts; ends the program when TYPE.INI is missing.
void Form_Load();

// Shows title, models and versions. A row without a model shows no version.
void subSetAllVersion();

// Selects the row that the commands address: 1 the interface unit, any other the amplifier. The other row turns grey.
void optPresent_Click(std::int16_t index);

void cmdEnd_Click();

// Ends the program at once, at any close request.
void Form_QueryUnload();

} // namespace MainWindow
