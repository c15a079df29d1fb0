// The widget of one control. It is created once and then follows the state of the control.
#pragma once

#include "platform/clock.h"
#include "platform/form.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace platform {

class ControlView {
  public:
    // Creates the widget of the control in `parent`; `operated` is called when the operator has used it. A menu has no
    // widget.
    ControlView(Control& control, QWidget* parent, const std::function<void(ControlView&)>& operated);

    Control& control() const { return *control_; }
    QWidget* widget() const { return widget_; }

    // Applies the control's state to the widget; true when the widget must be painted.
    bool sync();

    // Applies the colours again after those of the desktop have changed.
    void showColours();

    // Resets the widget to the control's value or selection.
    void showValue();

    // Sets name and description for screen readers.
    void showNames();

    // False when the program changed the widget, or another option of its group was selected.
    bool hasInput() const;

    // Stores the operator's input in the control's state; turnOn() does that for an option button.
    void takeInput();

  private:
    void showAppearance();
    void showCaption();
    void showItems();

    Control* control_;
    QWidget* widget_ = nullptr; // owned by its parent
    std::optional<Control> shown_;
    Micros shownAt_ = 0; // time of the last change
};

} // namespace platform
