#include "platform/qt/drawing.h"

#include "platform/qt/text.h"

#include <QApplication>
#include <QDir>
#include <QPainter>

#include <cmath>

namespace platform {

int pixels(int twips) {
    return static_cast<int>(std::lround(twips / static_cast<double>(twipsPerPixel)));
}

QRect pixels(const Place& place) {
    return {pixels(place.left), pixels(place.top), pixels(place.width), pixels(place.height)};
}

QFont fontOf(const Font& font) {
    constexpr double pixelsPerPoint =
        96.0 / 72.0; // like the positions: independent of the density that the screen reports
    QFont result(fromUtf8(font.name));
    result.setPixelSize(static_cast<int>(std::lround(font.points * pixelsPerPoint)));
    result.setBold(font.bold);
    result.setUnderline(font.underline);
    return result;
}

QColor colourOf(const Colour& colour) {
    const QPalette desktop = QApplication::palette();
    const QColor text = desktop.color(QPalette::Active, QPalette::WindowText);
    switch (colour.source) {
    case Colour::Source::windowText: return text;
    case Colour::Source::greyText: { // half opaque: readable, unlike the grey of some themes
        constexpr int half = 128;
        return {text.red(), text.green(), text.blue(), half};
    }
    case Colour::Source::buttonFace: return desktop.color(QPalette::Active, QPalette::Window);
    case Colour::Source::fixed: break;
    }
    return {colour.red, colour.green, colour.blue};
}

QColor textColourOf(const Control& control) {
    const bool themed = control.textColour.source != Colour::Source::fixed;
    if (themed && control.backColour.source == Colour::Source::fixed) {
        constexpr int middle = 128;
        return qGray(colourOf(control.backColour).rgb()) < middle ? Qt::white : Qt::black;
    }
    return colourOf(control.enabled ? control.textColour : greyText);
}

QPixmap pictureOf(int number) {
    return number == 0 ? QPixmap() : QPixmap(QString(":/art/%1.png").arg(number));
}

QIcon iconOf(int number) {
    QIcon icon;
    const QDir art(":/art");
    for (const QString& file : art.entryList({QString("icon-%1-*.png").arg(number)})) {
        icon.addFile(art.filePath(file));
    }
    return icon;
}

Drawing::Drawing(ControlKind kind, QWidget* parent) : QWidget(parent), kind_(kind) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

void Drawing::show(const Control& control) {
    place_ = control.place;
    textColour_ = control.textColour;
    backColour_ = control.backColour;
    if (pictureNumber_ != control.picture) {
        pictureNumber_ = control.picture;
        picture_ = pictureOf(control.picture);
    }
    // The area of a horizontal or vertical line is empty, and a line may run from right to left or upwards.
    const QRect area = kind_ == ControlKind::line
                           ? pixels(place_).normalized().adjusted(0, 0, place_.width == 0 ? 1 : 0, place_.height == 0)
                           : pixels(place_);
    setGeometry(area);
    update();
}

void Drawing::paintLine(QPainter& painter) const {
    const bool rising = (place_.width < 0) != (place_.height < 0);
    painter.setPen(colourOf(textColour_));
    painter.drawLine(0, rising ? height() - 1 : 0, width() - 1, rising ? 0 : height() - 1);
}

void Drawing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    switch (kind_) {
    case ControlKind::line: return paintLine(painter);
    case ControlKind::rectangle: return painter.fillRect(rect(), colourOf(backColour_));
    default:
        painter.setRenderHint(QPainter::SmoothPixmapTransform); // for scales between the picture's two densities
        return painter.drawPixmap(0, 0, picture_);
    }
}

} // namespace platform
