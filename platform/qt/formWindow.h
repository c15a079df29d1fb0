// The window of one form. It shows the state of the form and turns the operator's input into state and events of the form.
#pragma once

#include "platform/clock.h"
#include "platform/form.h"
#include "platform/qt/controlView.h"
#include "platform/qt/deliver.h"

#include <QSet>
#include <QWidget>

#include <memory>
#include <vector>

namespace platform {

class FormWindow : public QWidget {
  public:
    FormWindow(Form& form, Deliver deliver);

    // Applies the form's state to the window.
    void sync();

    // Paints changes at once; no window event runs.
    void paintChanges();

    // True while the window system has not yet mapped a window that was just shown, at most for half a second.
    bool mappingPending() const;

    Micros shownAt() const { return shownAt_; }

    // Closes the window for good. The form may then be destroyed; the window is deleted when its events have ended.
    void dismiss();

  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildControls();
    QWidget* containerOf(const Control& control) const;
    void setListLabels();
    void setTabOrder();
    bool syncWindow();
    bool syncEnabled();
    void syncVisible();
    void placeOnScreen();
    bool takesInput() const;
    void operated(ControlView& view);
    void call(const Handler& handler);

    Form* form_; // nullptr after dismiss()
    Deliver deliver_;
    QWidget* client_; // holds the controls; is disabled instead of the window, so that mouse pointer and title bar stay
    std::vector<std::unique_ptr<ControlView>> views_;
    std::vector<QWidget*> tabOrder_;
    QWidget* focusBefore_ = nullptr; // the widget with the focus when the form was disabled
    QSet<const Handler*> running_;
    bool changed_ = true; // since the window was last painted
    Micros shownAt_ = 0;
};

} // namespace platform
