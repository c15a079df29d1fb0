// The visible and the accessible content of a window as a text.
#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QStyleOptionButton>

// True when a label has a frame in the colour of the theme's text.
inline bool isFramed(QLabel& label) {
    const QImage image = label.grab().toImage();
    const QColor colour = QApplication::palette().color(QPalette::WindowText);
    return image.pixelColor(0, 0) == colour && image.pixelColor(image.rect().bottomRight()) == colour;
}

// Of a label: height of the font, bold, underlined, centred, framed, pale; colours other than the desktop's.
inline QString appearanceOf(QLabel& label) {
    const QColor textColour = label.palette().color(QPalette::WindowText);
    return QString::number(label.font().pixelSize()) + (label.font().bold() ? "b" : "") +
           (label.font().underline() ? "u" : "") +
           (label.alignment() == (Qt::AlignLeft | Qt::AlignVCenter) ? "" : "c") + (isFramed(label) ? "f" : "") +
           (textColour.alpha() < 160 ? "p" : "") + (textColour.rgb() == qRgb(0, 0, 0) ? "" : ' ' + textColour.name()) +
           (label.autoFillBackground() ? " on " + label.palette().color(QPalette::Window).name() : "");
}

// The visible area of a caption.
inline QRect captionRoom(const QWidget& widget) {
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    QStyleOptionButton option;
    option.initFrom(&widget);
    return button == nullptr ? widget.rect()
                             : widget.style()->subElementRect(button->isCheckable() ? QStyle::SE_CheckBoxContents
                                                                                    : QStyle::SE_PushButtonContents,
                                                              &option, &widget);
}

// True when the caption is not cut.
inline bool isWhole(const QLabel& label) {
    const QRect room = label.rect();
    const int wrap = label.wordWrap() ? Qt::TextWordWrap : 0;
    return label.text().isEmpty() || room.contains(label.fontMetrics().boundingRect(room, wrap, label.text()));
}

// The mean colour of a drawing, in sixteenths.
inline QString colourOf(QWidget& drawing) {
    const QImage image = drawing.grab().toImage();
    const QColor mean = image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return QString::asprintf("#%x%x%x", (mean.red() + 8) / 17, (mean.green() + 8) / 17, (mean.blue() + 8) / 17);
}

// Role, name, value, "on" or "off", in brackets description or name of the label, and how it looks.
inline QString textOf(const QAccessibleInterface& object) {
    QString more = object.text(QAccessible::Description);
    for (const auto& [label, kind] : object.relations(QAccessible::Label)) {
        more += label->text(QAccessible::Name);
    }
    auto* widget = qobject_cast<QWidget*>(object.object());
    auto* label = qobject_cast<QLabel*>(widget);
    QString seen;
    if (const auto* box = qobject_cast<QMessageBox*>(widget)) {
        seen = "icon " + QString::number(box->icon());
    } else if (widget != nullptr && widget->isWindow() && !widget->windowIcon().isNull()) {
        seen = "icons " + QString::number(widget->windowIcon().availableSizes().size());
    } else if (object.state().focusable && !widget->window()->isModal()) {
        seen = QString::number(widget->font().pixelSize());
    } else if (const auto* bar = qobject_cast<QProgressBar*>(widget)) {
        seen = bar->isTextVisible() ? bar->text() : "";
    } else if (label == nullptr && object.role() == QAccessible::Graphic) {
        seen = colourOf(*widget);
    } else if (label != nullptr && !label->window()->isModal()) {
        seen = appearanceOf(*label);
    }
    const QString name = object.text(QAccessible::Name); // on some systems with the value of a list
    const QString value = object.text(QAccessible::Value);
    const bool valued = object.role() == QAccessible::ProgressBar || object.role() == QAccessible::ComboBox;
    const QString text = (valued && value != name ? name + ' ' + value : name).trimmed() +
                         (object.state().checked ? " on" : "") + (object.state().disabled ? " off" : "") +
                         (more.isEmpty() ? "" : " (" + more + ')') + (seen.isEmpty() ? "" : " [" + seen + ']');
    return text.isEmpty() ? QString() : QString(qAccessibleRoleString(object.role())) + ' ' + text;
}
