// The window of one form: it shows the state that the form holds, and turns the operator's input into that state and
// into the form's events.
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

    // Shows the form's state.
    void sync();

    // Paints at once what has changed since the last painting; no window event runs.
    void paintChanges();

    // True while the window system has not yet put up a window that was shown a moment ago.
    bool comingUp() const;

    Micros shownAt() const { return shownAt_; }

    // Takes the window away for good. The form may go; the window itself goes when its events have ended.
    void dismiss();

  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildControls();
    QWidget* containerOf(const Control& control) const;
    void nameLists();
    void setTabOrder();
    bool syncWindow();
    bool syncEnabled();
    void syncVisible();
    void placeOnScreen();
    bool takesInput() const;
    void operated(ControlView& view);
    void call(const Handler& handler);

    Form* form_; // null after dismiss()
    Deliver deliver_;
    QWidget* client_; // holds the controls; disabled in place of the window, which keeps its pointer and its title bar
    std::vector<std::unique_ptr<ControlView>> views_;
    std::vector<QWidget*> tabOrder_;
    QWidget* focusBefore_ = nullptr; // what had the focus when the form was disabled
    QSet<const Handler*> running_;
    bool changed_ = true; // since the window was painted last
    Micros shownAt_ = 0;
};

} // namespace platform
