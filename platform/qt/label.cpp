#include "platform/qt/label.h"

#include "platform/qt/drawing.h"
#include "platform/qt/text.h"

#include <QPainter>

#include <algorithm>

namespace platform {

Label::Label(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Label::show(const Control& control) {
    border_ = control.border;
    const QRect area = pixels(control.place);
    const bool open = !border_ && control.backColour.source != Colour::Source::fixed;
    const int excess = open ? std::max(0, fontMetrics().height() - area.height()) : 0; // of the font over the place
    setGeometry(area.adjusted(0, -excess, 0, excess));
    setAlignment(Qt::AlignVCenter | (control.alignment == Alignment::centre ? Qt::AlignHCenter : Qt::AlignLeft));
    setText(fromUtf8(control.caption));
    update();
}

void Label::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (border_) {
        QPainter painter(this);
        painter.setPen(colourOf(windowText));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

} // namespace platform
