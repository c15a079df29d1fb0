#include "platform/qt/messageBox.h"

#include "platform/qt/stacking.h"
#include "platform/qt/text.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTextLayout>

#include <algorithm>

namespace platform {

namespace {

QMessageBox::Icon iconOfStyle(int style) {
    switch (style - style % 16) {
    case boxStyle::critical: return QMessageBox::Critical;
    case boxStyle::question: return QMessageBox::Question;
    case boxStyle::exclamation: return QMessageBox::Warning;
    case boxStyle::information: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

// Breaks a line at a width in pixels. Returns its parts, and sets `wider` if one of them is wider.
QStringList parts(const QString& line, const QFont& font, int width, QTextOption::WrapMode mode, bool& wider) {
    QTextLayout layout(line, font);
    QTextOption option;
    option.setWrapMode(mode);
    layout.setTextOption(option);
    QStringList found;
    layout.beginLayout();
    for (QTextLine part = layout.createLine(); part.isValid(); part = layout.createLine()) {
        part.setLineWidth(width);
        wider = wider || part.naturalTextWidth() > width;
        found += line.mid(part.textStart(), part.textLength());
    }
    layout.endLayout();
    return found;
}

// The text with additional line breaks. The box breaks lines only between words and would cut a long path, so a word that
// is wider than a line is broken here.
QString shownText(const std::string& text, const QFont& font) {
    const int screen = QGuiApplication::primaryScreen()->size().width();
    const int width = std::min(screen / 2, 500) - 100; // the box breaks lines at half of the screen or at 500
    QStringList lines = fromUtf8(text).replace("\r\n", "\n").split('\n');
    for (QString& line : lines) {
        bool wider = false;
        parts(line, font, width, QTextOption::WordWrap, wider);
        if (wider) {
            line = parts(line, font, width, QTextOption::WrapAtWordBoundaryOrAnywhere, wider).join('\n');
        }
    }
    return lines.join('\n');
}

// Widens the box to fit its title; with a short text the title would be cut.
void widenForTitle(QMessageBox& box) {
    constexpr int frameButtons = 130; // icon and buttons of the title bar
    QFont titleFont = box.font();
    titleFont.setBold(true);
    const int width = QFontMetrics(titleFont).horizontalAdvance(box.windowTitle()) + frameButtons;
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
        grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
}

} // namespace

int showMessageBox(const Message& message) {
    QMessageBox box;
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(fromUtf8(message.title));
    box.setIcon(iconOfStyle(message.style));
    box.setText(shownText(message.text, box.font()));
    box.setDefaultButton(box.addButton("OK", QMessageBox::AcceptRole));
    QPushButton* cancel = nullptr;
    if (message.style % 16 == boxStyle::okCancel) {
        cancel = box.addButton("Cancel", QMessageBox::RejectRole);
        box.setEscapeButton(cancel);
    }
    widenForTitle(box);
    setParentWindow(box);
    box.exec();
    return cancel != nullptr && box.clickedButton() == cancel ? boxAnswer::cancel : boxAnswer::ok;
}

} // namespace platform
