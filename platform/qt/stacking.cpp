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

void standAbove(const QWidget* below, const QWidget& window) {
    window.winId(); // creates the window handle, which holds the parent
    window.windowHandle()->setTransientParent(below == nullptr ? nullptr : below->windowHandle());
}

} // namespace

void standAboveForms(QWidget& window) {
    standAbove(newestForm(window), window);
}

void standAboveAll(QWidget& dialog) {
    const QWidget* standing = QApplication::activeModalWidget();
    standAbove(standing != nullptr ? standing : newestForm(dialog), dialog);
}

} // namespace platform
