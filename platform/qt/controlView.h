// The widget of one control: built once, then brought to the state that the control holds.
#pragma once

#include "platform/clock.h"
#include "platform/form.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace platform {

class ControlView {
  public:
    // Makes the widget of the control in `parent`; `operated` is called when the operator has used it. Nothing is
    // drawn for a menu.
    ControlView(Control& control, QWidget* parent, const std::function<void(ControlView&)>& operated);

    Control& control() const { return *control_; }
    QWidget* widget() const { return widget_; }

    // Brings the widget to the control's state; true when the widget has yet to be painted for it.
    bool sync();

    // Takes the colours anew from the desktop's, which have changed.
    void showColours();

    // Shows the control's value or selection, whatever the operator has made of it.
    void showValue();

    // Tells screen readers what the control is called and what describes it.
    void showNames();

    // False when the widget changed for the program or because another option of its group came on.
    bool hasInput() const;

    // Takes the operator's input over into the control's state, but for the other options of a group.
    void takeInput();

  private:
    void showLooks();
    void showCaption();
    void showItems();

    Control* control_;
    QWidget* widget_ = nullptr; // owned by its parent
    std::optional<Control> shown_;
    Micros shownAt_ = 0; // when it was changed last
};

} // namespace platform
