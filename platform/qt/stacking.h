// Which window belongs to which: a window system keeps a window above the one that it belongs to, moves both together,
// and gives it no button on the task bar.
#pragma once

#include <QWidget>

namespace platform {

// Makes a form's window that is about to be shown belong to the form that was shown last and is visible.
void standAboveForms(QWidget& window);

// Makes a box or dialog that is about to be shown belong to the box or dialog that stands, or else to a form as above.
void standAboveAll(QWidget& dialog);

} // namespace platform
