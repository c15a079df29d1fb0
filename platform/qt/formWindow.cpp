#include "platform/qt/formWindow.h"

#include "platform/qt/drawing.h"
#include "platform/qt/stacking.h"
#include "platform/qt/text.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace platform {

namespace {

Qt::WindowFlags frameOf(const Form& form) {
    // A dialog with a parent window has no button on the task bar. Neither has a tool window, but some window managers
    // hide tool windows while another program is active.
    const Qt::WindowType type = form.onTaskBar ? Qt::Window : Qt::Dialog;
    return type | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
           Qt::MSWindowsFixedSizeDialogHint;
}

// A control for the bitmap behind all controls.
Control backPictureOf(const Form& form) {
    return {.kind = ControlKind::picture,
            .place = {0, 0, form.clientArea.width, form.clientArea.height},
            .picture = form.backPicture};
}

// The roles of our widgets for screen readers.
QAccessibleInterface* accessibleOf(const QString& /*className*/, QObject* object) {
    if (auto* window = dynamic_cast<FormWindow*>(object)) {
        return new QAccessibleWidget(window, QAccessible::Dialog); // its labels are read when it opens
    }
    if (auto* drawing = dynamic_cast<Drawing*>(object)) {
        return new QAccessibleWidget(drawing, QAccessible::Graphic);
    }
    return nullptr;
}

} // namespace

FormWindow::FormWindow(Form& form, Deliver deliver)
    : QWidget(nullptr, frameOf(form)), form_(&form), deliver_(std::move(deliver)), client_(new QWidget(this)) {
    QAccessible::installFactory(accessibleOf); // has an effect only once
    setObjectName(fromUtf8(form.name));
    setFixedSize(pixels(form.clientArea.width), pixels(form.clientArea.height));
    setWindowIcon(iconOf(form.icon));
    client_->setGeometry(rect());
    if (form.backPicture != 0) {
        (new Drawing(ControlKind::picture, client_))->show(backPictureOf(form));
    }
    buildControls();
    setListLabels();
    setTabOrder();
}

void FormWindow::buildControls() {
    for (Control* control : form_->controls) {
        views_.push_back(std::make_unique<ControlView>(*control, containerOf(*control),
                                                       [this](ControlView& view) { operated(view); }));
    }
}

// The frame of a control has been created before, since the forms list it first.
QWidget* FormWindow::containerOf(const Control& control) const {
    const auto view =
        std::ranges::find_if(views_, [&](const auto& other) { return other->control().name == control.container; });
    return control.container.empty() || view == views_.end() ? client_ : (*view)->widget();
}

void FormWindow::setListLabels() {
    for (const auto& list : views_) {
        for (const auto& label : views_) {
            if (&label->control() == list->control().label) {
                qobject_cast<QLabel*>(label->widget())->setBuddy(list->widget());
            }
        }
    }
}

void FormWindow::setTabOrder() {
    std::vector<ControlView*> reached;
    for (const auto& view : views_) {
        if (view->widget() != nullptr && view->widget()->focusPolicy() != Qt::NoFocus) {
            if (view->control().tabIndex >= 0) {
                reached.push_back(view.get());
            } else {
                view->widget()->setFocusPolicy(Qt::ClickFocus);
            }
        }
    }
    std::ranges::stable_sort(reached, {}, [](ControlView* view) { return view->control().tabIndex; });
    for (ControlView* view : reached) {
        if (!tabOrder_.empty()) {
            QWidget::setTabOrder(tabOrder_.back(), view->widget());
        }
        tabOrder_.push_back(view->widget());
    }
}

void FormWindow::sync() {
    if (form_ == nullptr || (!form_->visible && !isVisible())) { // a hidden window needs no update
        return;
    }
    bool controlsChanged = false;
    for (const auto& view : views_) {
        controlsChanged = view->sync() || controlsChanged;
    }
    if (controlsChanged) { // the name of a control may contain the caption of another
        for (const auto& view : views_) {
            view->showNames();
        }
    }
    changed_ = controlsChanged || changed_;
    changed_ = syncWindow() || changed_;
    changed_ = syncEnabled() || changed_;
    syncVisible();
}

bool FormWindow::syncWindow() {
    // For an empty title the toolkit would show the name of the application.
    const QString title = form_->title.empty() ? QString(" ") : fromUtf8(form_->title);
    if (windowTitle() != title) {
        setWindowTitle(title);
        setAccessibleName(form_->title.empty() ? QCoreApplication::applicationName() : title);
    }
    const Qt::CursorShape pointer = form_->mousePointer == MousePointer::hourglass ? Qt::WaitCursor : Qt::ArrowCursor;
    if (cursor().shape() != pointer) {
        setCursor(pointer);
        return true;
    }
    return false;
}

bool FormWindow::syncEnabled() {
    if (client_->isEnabled() == form_->enabled) {
        return false;
    }
    if (!form_->enabled) {
        focusBefore_ = focusWidget(); // the toolkit removes the focus from a disabled widget
    }
    client_->setEnabled(form_->enabled);
    if (form_->enabled && focusBefore_ != nullptr) {
        focusBefore_->setFocus();
    }
    return true;
}

void FormWindow::syncVisible() {
    if (form_->visible != isVisible()) {
        if (form_->visible) {
            placeOnScreen();
            if (!form_->onTaskBar) {
                setParentForm(*this);
            }
            shownAt_ = clockMicros();
            raise();
        }
        setVisible(form_->visible);
        if (form_->visible) {
            activateWindow();
        }
    }
    const QWidget* focus = focusWidget();
    if (form_->visible && client_->isEnabled() && (focus == nullptr || !focus->isVisible())) {
        const auto first = std::ranges::find_if(
            tabOrder_, [](const QWidget* widget) { return widget->isVisible() && widget->isEnabled(); });
        if (first != tabOrder_.end()) {
            (*first)->setFocus();
        }
    }
}

void FormWindow::placeOnScreen() {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    if (form_->centred) {
        move(screen.center() - rect().center());
    } else {
        move(screen.topLeft() + QPoint(pixels(form_->left), pixels(form_->top)));
    }
}

void FormWindow::paintChanges() {
    if (changed_ && isVisible()) {
        repaint();
        changed_ = false;
    }
}

bool FormWindow::mappingPending() const {
    constexpr Micros limit = 500'000; // a window on another virtual desktop is never mapped
    const QWindow* window = windowHandle();
    return isVisible() && window != nullptr && !window->isExposed() && clockMicros() < shownAt_ + limit;
}

void FormWindow::dismiss() {
    form_ = nullptr;
    hide();
    deleteLater();
}

bool FormWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::UpdateRequest) {
        changed_ = false;
    } else if (event->type() == QEvent::ApplicationPaletteChange && form_ != nullptr) {
        for (const auto& view : views_) {
            view->showColours();
        }
    }
    return handled;
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (takesInput() && form_->enabled) {
        call(form_->queryUnload);
    }
}

// False while the program hides the window, and while a box or dialog is open: the toolkit then blocks mouse and keyboard,
// but not a screen reader.
bool FormWindow::takesInput() const {
    return form_ != nullptr && form_->visible && QApplication::activeModalWidget() == nullptr;
}

void FormWindow::operated(ControlView& view) {
    if (form_ == nullptr || !view.hasInput()) {
        return;
    }
    if (!takesInput()) {
        std::ranges::for_each(views_, [](const auto& shown) { shown->showValue(); });
        return;
    }
    Control& control = view.control();
    if (control.kind == ControlKind::optionButton) {
        turnOn(*form_, control);
    } else {
        view.takeInput();
    }
    call(control.click);
}

// While a handler lets window events run, the same event does not call it again.
void FormWindow::call(const Handler& handler) {
    if (!handler || running_.contains(&handler)) {
        return;
    }
    const Handler* key = &handler;
    running_.insert(key);
    const QPointer<FormWindow> window = this;
    deliver_(Handler(handler)); // a copy: the handler may unload its own form
    if (window) {
        window->running_.remove(key);
    }
}

} // namespace platform
