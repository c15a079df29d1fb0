// The program's own windows on the toolkit's offscreen screen, in both languages: tests/stories/windows.txt has the
// visible and the accessible content of each and its tab order. Under any theme all texts are legible and not cut.
#include "gallery/scenes.h"
#include "tests/realHost.h"
#include "tests/storyFile.h"
#include "tests/windowText.h"
#include "ui/serviceScreen.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace {

const QRegularExpression controlNames("^(lbl|Lab|opt|cmd|cmb|prb|chk|Line|qt_)");

// Left, middle, width, and height except of labels, which a font may make higher. Empty for what is no control.
QString placeOf(const QWidget* widget) {
    if (widget == nullptr || qobject_cast<QMessageBox*>(widget->window()) != nullptr ||
        !controlNames.match(widget->objectName()).hasMatch()) {
        return "";
    }
    const QRect area = widget->geometry();
    return QString::asprintf(" %d,%d %d", area.left(), area.center().y(), area.width()) +
           (qobject_cast<const QLabel*>(widget) != nullptr ? "" : QString::asprintf("x%d", area.height()));
}

// A line for each visible object with any content, and for each control.
QStringList linesOf(const QAccessibleInterface& object) {
    const QString name = object.text(QAccessible::Name);
    EXPECT_TRUE(!object.state().focusable || !name.isEmpty()) << "no accessible name";
    const QString line = textOf(object) + placeOf(qobject_cast<QWidget*>(object.object()));
    QStringList lines = line.isEmpty() ? QStringList() : QStringList(line);
    for (int child = 0; child < object.childCount(); ++child) {
        if (const auto* part = object.child(child); part != nullptr && !part->state().invisible) {
            lines += linesOf(*part);
        }
    }
    return lines;
}

// The names of the controls in tab order.
QString tabbed(QWidget& window) {
    QString names = "Tab:";
    QWidget* const first = window.focusWidget();
    for (QWidget* at = first; at != nullptr && (names.size() == 4 || at != first); at = window.focusWidget()) {
        names += ' ' + QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name) + '.';
        QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
    }
    return names;
}

double brightness(double grey) {
    return std::pow(grey / 255, 2.2) + 0.05;
}

// The caption is not cut and contrasts with its background.
bool isLegible(const QLabel& label) {
    const QColor text = label.palette().color(QPalette::WindowText);
    const int background = qGray(label.palette().color(QPalette::Window).rgb());
    const double share = text.alphaF();
    const double seen = share * qGray(text.rgb()) + (1 - share) * background;
    const auto [low, high] = std::minmax({brightness(seen), brightness(background)});
    return isWhole(label) && high / low >= 3;
}

// The caption is not cut; the middle of an option or a box is bright, and dark where it is on, under any theme.
bool isClear(QAbstractButton& button) {
    QStyleOptionButton option;
    option.initFrom(&button);
    const bool turns = button.isCheckable();
    const QRect mark = button.style()->subElementRect(QStyle::SE_RadioButtonIndicator, &option, &button);
    const int middle = qGray(button.grab().toImage().pixel(mark.center()));
    return (button.text().isEmpty() ||
            button.fontMetrics().horizontalAdvance(button.text()) <= captionRoom(button).width()) &&
           (!turns || !button.isEnabled() || (middle < 128) == button.isChecked()) &&
           button.palette().isEqual(QPalette::Inactive, QPalette::Active);
}

// The controls are within their window and do not overlap, except for one row or column of pixels that neighbours share.
void expectOrder(const QWidget& window) {
    QList<QWidget*> controls = window.findChildren<QWidget*>(controlNames);
    controls.removeIf([](const QWidget* control) { return !control->isVisible(); });
    for (QWidget* one : controls) {
        const auto* label = qobject_cast<QLabel*>(one);
        auto* button = qobject_cast<QAbstractButton*>(one);
        EXPECT_TRUE(one->parentWidget()->rect().contains(one->geometry()) && (label == nullptr || isLegible(*label)) &&
                    (button == nullptr || isClear(*button)))
            << one->objectName().toStdString();
        for (const QWidget* other : controls) {
            const QRect shared = one->geometry() & other->geometry();
            EXPECT_TRUE(other == one || one->parent() != other->parent() || shared.isEmpty() ||
                        (shared.height() == 1 && !other->objectName().startsWith("Line")) ||
                        shared.size() == QSize(1, one->height()))
                << one->objectName().toStdString() << " and " << other->objectName().toStdString();
        }
    }
}

// Content, size, parent and tab order of a window.
QStringList described(QWidget& window) {
    QStringList lines = linesOf(*QAccessible::queryAccessibleInterface(&window));
    if (qobject_cast<QMessageBox*>(&window) == nullptr) {
        lines[0] += QString::asprintf(" %dx%d", window.width(), window.height());
        const QWindow* parent = window.windowHandle()->transientParent();
        lines += parent == nullptr ? QStringList() : QStringList("Above " + parent->title());
    }
    return lines << tabbed(window);
}

gallery::UnitLine* line = nullptr;
const bool scripted = (
    makeLine =
        [] {
            auto made = std::make_unique<gallery::UnitLine>();
            line = made.get();
            return made;
        },
    true);

TEST(Windows, AreLegibleAndAccessible) {
    platform::setHost(&*realHost);
    const bool service = hiddenControls.cmdPresent.visible;
    const QPalette lightTheme = QApplication::palette();
    const QString catalogueEntry = STORIES "../../packaging/desktop/" + QGuiApplication::desktopFileName() + ".desktop";
    EXPECT_TRUE(QFile::exists(catalogueEntry));
    for (const auto language : {Language::english, Language::japanese}) {
        QString seen;
        std::map<QString, QStringList> before; // of each window in its last scene
        gallery::showAll(*realHost, *line, language, [&](const std::string& scene, QWidget& window) {
            SCOPED_TRACE(scene);
            const bool differs = scene == "file-loaded" || scene == "verification"; // from the delivered screen
            if (scene.ends_with("dialog") || (service && !differs)) {               // or a dialog of the toolkit
                return;
            }
            std::ptrdiff_t frames = -1;
            for (const QPalette& theme : {gallery::darkPalette(), lightTheme}) {
                QApplication::setPalette(theme);
                QCoreApplication::processEvents(); // delivers the change to the windows
                expectOrder(window);
                const std::ptrdiff_t framed = std::ranges::count_if(window.findChildren<QLabel*>(),
                                                                    [](QLabel* label) { return isFramed(*label); });
                EXPECT_TRUE(frames < 0 || frames == framed) << "frames of labels";
                frames = framed;
            }
            const int title = window.fontMetrics().horizontalAdvance(window.windowTitle());
            EXPECT_LT(window.width(), window.screen()->size().width());
            EXPECT_GT(window.width(), qobject_cast<QMessageBox*>(&window) != nullptr ? title + 100 : 0);
            EXPECT_FALSE(window.windowTitle().isEmpty());
            const QStringList lines = described(window);
            const QStringList known = std::exchange(before[lines[0]], lines);
            seen += QString("-%1, %2 lines\n").arg(QString::fromStdString(scene)).arg(lines.size());
            for (const QString& each : lines) {
                seen += known.contains(each) ? "" : each + '\n';
            }
        });
        const std::string section = language == Language::english ? "English" : "Japanese";
        expectStory("windows.txt", section + (service ? ", service screen" : ""), seen.toStdString());
        QApplication::setFont(QFont("sans", 20)); // of the boxes; those of the forms stay
    }
}

} // namespace
