// Controls that the toolkit has no widget for: lines, filled rectangles, pictures. Also converts units, colours, fonts and
// picture numbers of the forms to the toolkit's.
#pragma once

#include "platform/form.h"

#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QRect>
#include <QWidget>

namespace platform {

constexpr int twipsPerPixel = 15; // at 96 dpi; the toolkit scales from there

int pixels(int twips);
QRect pixels(const Place& place);
QFont fontOf(const Font& font);
QColor colourOf(const Colour& colour);
// The colour of a control's text. On a fixed background a text in the desktop's colour becomes black or white, since the
// theme does not know that background.
QColor textColourOf(const Control& control);

// The bitmap of that number, for the density of the screen; empty when there is none.
QPixmap pictureOf(int number);
// The icon of that number in all sizes; empty when there is none.
QIcon iconOf(int number);

// Widget for a line, a rectangle or a picture. It ignores input.
class Drawing : public QWidget {
  public:
    Drawing(ControlKind kind, QWidget* parent);

    // Applies the control's present state.
    void show(const Control& control);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintLine(QPainter& painter) const;

    ControlKind kind_;
    Place place_;
    Colour textColour_;
    Colour backColour_;
    int pictureNumber_ = 0;
    QPixmap picture_;
};

} // namespace platform
