// What a form shows without a widget of the toolkit: lines, filled rectangles, pictures; and how the seam's units,
// colours, fonts and picture numbers become the toolkit's.
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
// The colour of a control's text. A text of the desktop's colour turns black or white on a fixed background, which no
// theme knows of.
QColor textColourOf(const Control& control);

// The bitmap of that number, in the density of the screen; empty where there is none.
QPixmap pictureOf(int number);
// The icon of that number in all its sizes; empty where there is none.
QIcon iconOf(int number);

// A line, a rectangle or a picture. It takes no input.
class Drawing : public QWidget {
  public:
    Drawing(ControlKind kind, QWidget* parent);

    // Takes over what the control says now.
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
