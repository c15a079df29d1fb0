// A label: one line of plain text that a larger replacement font does not cut; its border is not grey when the text is.
#pragma once

#include "platform/form.h"

#include <QLabel>

namespace platform {

class Label : public QLabel {
  public:
    explicit Label(QWidget* parent);

    // Applies the control's place, caption, alignment and border; set the font before.
    void show(const Control& control);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool border_ = false;
};

} // namespace platform
