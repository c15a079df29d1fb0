// A label: a line of plain text that no stand-in font cuts; its border keeps its colour where the text is grey.
#pragma once

#include "platform/form.h"

#include <QLabel>

namespace platform {

class Label : public QLabel {
  public:
    explicit Label(QWidget* parent);

    // Shows the control's place, caption, alignment and border; the font must have been set.
    void show(const Control& control);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool border_ = false;
};

} // namespace platform
