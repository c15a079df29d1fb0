#include "platform/qt/stacking.h"

#include "platform/qt/formWindow.h"

#include <QApplication>
#include <QWindow>

namespace platform {

namespace {

QWidget* newestForm(const QWidget& window) {
    FormWindow* newest = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* form = dynamic_cast<FormWindow*>(widget);
        if (form != nullptr && form != &window && form->isVisible() &&
            (newest == nullptr || form->shownAt() > newest->shownAt())) {
            newest = form;
        }
    }
    return newest;
}

void setParent(const QWidget& window, const QWidget* parent) {
    window.winId(); // creates the window handle, which holds the parent
    window.windowHandle()->setTransientParent(parent == nullptr ? nullptr : parent->windowHandle());
}

} // namespace

void setParentForm(QWidget& window) {
    setParent(window, newestForm(window));
}

void setParentWindow(QWidget& dialog) {
    const QWidget* openDialog = QApplication::activeModalWidget();
    setParent(dialog, openDialog != nullptr ? openDialog : newestForm(dialog));
}

} // namespace platform
