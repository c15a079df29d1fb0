#pragma once

namespace MainWindow {

// The load button: asks for a firmware file, reads it into shared.firmwareImage and shows model and version in row 2.
// Ignores a file of another size without a message; the file loaded before stays loaded.
void cmdLoading_Click();

} // namespace MainWindow
