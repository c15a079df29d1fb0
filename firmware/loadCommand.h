#pragma once

namespace MainWindow {

// The load button: asks for a firmware file, reads it into shared.firmwareImage and shows what it is in row 2. A file of
// another size than an image is passed over without a word, and what was loaded before stays.
void cmdLoading_Click();

} // namespace MainWindow
