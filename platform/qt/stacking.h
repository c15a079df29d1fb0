// Sets the parent of a window: the window system keeps the window above its parent, moves both together, and gives the
// window no button on the task bar.
#pragma once

#include <QWidget>

namespace platform {

// For the window of a form, before it is shown: the parent is the visible form that was shown last.
void setParentForm(QWidget& window);

// For a box or dialog, before it is shown: the parent is the open box or dialog, or else a form as above.
void setParentWindow(QWidget& dialog);

} // namespace platform
