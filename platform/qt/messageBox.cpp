#include "platform/qt/messageBox.h"

#include "platform/desktop.h"
#include "platform/qt/text.h"

#include <QMessageBox>
#include <QPushButton>
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

// The line broken at that width, within a word too where a word is wider: the box itself breaks between words only,
// and would cut a long path.
QString broken(const QString& line, const QFont& font, int width) {
    QTextLayout layout(line, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList parts;
    layout.beginLayout();
    for (QTextLine part = layout.createLine(); part.isValid(); part = layout.createLine()) {
        part.setLineWidth(width);
        parts += line.mid(part.textStart(), part.textLength()).trimmed();
    }
    layout.endLayout();
    return parts.join('\n');
}

// The text as the box shows it. A line of ordinary words is left as it is.
QString shownText(const std::string& text, const QFont& font) {
    constexpr int widest = 450; // pixels
    QStringList lines = fromUtf8(text).replace("\r\n", "\n").split('\n');
    for (QString& line : lines) {
        const QStringList words = line.split(' ');
        const bool wide = std::ranges::any_of(
            words, [&](const QString& word) { return QFontMetrics(font).horizontalAdvance(word) > widest; });
        line = wide ? broken(line, font, widest) : line;
    }
    return lines.join('\n');
}

} // namespace

int showMessageBox(const std::string& text, int style, const std::string& title, QWindow* below) {
    QMessageBox box;
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(fromUtf8(title));
    box.setIcon(iconOfStyle(style));
    box.setText(shownText(text, box.font()));
    box.setDefaultButton(box.addButton("OK", QMessageBox::AcceptRole));
    QPushButton* cancel = nullptr;
    if (style % 16 == boxStyle::okCancel) {
        cancel = box.addButton("Cancel", QMessageBox::RejectRole);
        box.setEscapeButton(cancel);
    }
    box.winId(); // makes the window, which can then be told what it stands above
    box.windowHandle()->setTransientParent(below);
    box.exec();
    return cancel != nullptr && box.clickedButton() == cancel ? boxAnswer::cancel : boxAnswer::ok;
}

} // namespace platform
