// The program's own windows on the toolkit's offscreen screen: what each shows, uncut and readable under any theme, how it
// looks, what it says to a screen reader and what the Tab key reaches.
#include "gallery/scenes.h"
#include "tests/realDesktop.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QTest>

#include <cmath>
#include <gtest/gtest.h>

using gallery::Language;

namespace {

// Of a label: height of the font, bold, underlined, centred, framed, pale; and a ground of its own.
QString looks(const QLabel& label) {
    const QFont font = label.font();
    const QImage image = const_cast<QLabel&>(label).grab().toImage();
    return QString::number(font.pixelSize()) + (font.bold() ? "b" : "") + (font.underline() ? "u" : "") +
           ((label.alignment() & Qt::AlignHCenter) != 0 ? "c" : "") +
           (image.pixelColor(0, 0) == QColor(Qt::black) ? "f" : "") +
           (label.palette().color(QPalette::WindowText).alpha() < 255 ? "p" : "") +
           (label.autoFillBackground() ? ' ' + label.palette().color(QPalette::Window).name() : QString());
}

// The colour of a drawing in the mean, in sixteenths.
QString colour(const QWidget& drawing) {
    const QImage image = const_cast<QWidget&>(drawing).grab().toImage();
    const QColor mean = image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return QString::asprintf("#%x%x%x", (mean.red() + 8) / 17, (mean.green() + 8) / 17, (mean.blue() + 8) / 17);
}

// Role, name and, in brackets, description or name of the label, and how it looks; a line for each object that is seen
// and says or shows anything.
void hear(QAccessibleInterface* object, std::string& heard) {
    if (object == nullptr || object->state().invisible) {
        return;
    }
    QString more = object->text(QAccessible::Description);
    for (const auto& [label, kind] : object->relations(QAccessible::Label)) {
        more += label->text(QAccessible::Name);
    }
    const QString name = object->text(QAccessible::Name);
    EXPECT_TRUE(!object->state().focusable || !name.isEmpty()) << heard << "... and then something without a name";
    const auto* widget = qobject_cast<const QWidget*>(object->object());
    const auto* label = qobject_cast<const QLabel*>(widget);
    QString seen;
    if (label == nullptr && object->role() == QAccessible::Graphic) {
        seen = colour(*widget);
    } else if (label != nullptr && !label->window()->isModal()) {
        seen = looks(*label);
    }
    if (!(name + more + seen).isEmpty()) {
        heard += (QString(qAccessibleRoleString(object->role())) + ' ' + name +
                  (more.isEmpty() ? "" : " (" + more + ')') + (seen.isEmpty() ? "" : " [" + seen + ']') + '\n')
                     .toStdString();
    }
    for (int child = 0; child < object->childCount(); ++child) {
        hear(object->child(child), heard);
    }
}

// The names of what the Tab key reaches, until it comes round.
std::string tabbed(QWidget& window) {
    std::string names;
    QWidget* const first = window.focusWidget();
    for (QWidget* at = first; at != nullptr && (names.empty() || at != first); at = window.focusWidget()) {
        names += QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name).toStdString() + '|';
        QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
    }
    return names;
}

double brightness(double grey) {
    return std::pow(grey / 255, 2.2) + 0.05;
}

// The caption is not cut and stands out from its ground.
void expectLegible(const QLabel& label) {
    const QRect room = label.rect();
    const int wrap = label.wordWrap() ? Qt::TextWordWrap : 0;
    EXPECT_TRUE(room.contains(label.fontMetrics().boundingRect(room, wrap, label.text())))
        << label.text().toStdString();
    const QColor text = label.palette().color(QPalette::WindowText);
    const int ground = qGray(label.palette().color(QPalette::Window).rgb());
    const double share = text.alphaF();
    const double seen = share * qGray(text.rgb()) + (1 - share) * ground;
    const auto [low, high] = std::minmax({brightness(seen), brightness(ground)});
    EXPECT_GE(high / low, 3) << label.text().toStdString();
}

void expectUncut(const QAbstractButton& button) {
    QStyleOptionButton option;
    option.initFrom(&button);
    option.text = button.text();
    const auto part = button.isCheckable() ? QStyle::SE_CheckBoxContents : QStyle::SE_PushButtonContents;
    EXPECT_TRUE(button.text().isEmpty() || button.fontMetrics().horizontalAdvance(button.text()) <=
                                               button.style()->subElementRect(part, &option, &button).width())
        << button.text().toStdString();
}

// No caption is cut, each stands out from its ground; the controls stand clear of each other within their window, but for
// one line that they share with a neighbour at the same height.
void expectOrder(const QWidget& window) {
    QList<QWidget*> controls = window.findChildren<QWidget*>(QRegularExpression("^(lbl|opt|cmd|cmb|prb|chk|Line|qt_)"));
    controls.removeIf([](const QWidget* control) { return !control->isVisible(); });
    for (QWidget* one : controls) {
        EXPECT_TRUE(one->parentWidget()->rect().contains(one->geometry())) << one->objectName().toStdString();
        if (const auto* label = qobject_cast<QLabel*>(one)) {
            expectLegible(*label);
        } else if (const auto* button = qobject_cast<QAbstractButton*>(one)) {
            expectUncut(*button);
        }
        for (const QWidget* other : controls) {
            const QRect shared = one->geometry() & other->geometry();
            EXPECT_TRUE(other == one || one->parent() != other->parent() || shared.isEmpty() ||
                        (shared.height() == 1 && !other->objectName().startsWith("Line")) ||
                        shared.size() == QSize(1, one->height()))
                << one->objectName().toStdString() << " and " << other->objectName().toStdString();
        }
    }
}

struct Row {
    Language language;
    const char* scene;
    const char* tabbed;
    const char* heard;
};
constexpr Row rows[] = {
    {Language::english, "start-up", "", "Dialog TarnBeacon\nGraphic  [#457]\n"},
    {Language::english, "port-choice", "COM1|Set|Cancel|",
     "Dialog TarnBeacon\nGraphic  [#457]\nGraphic  [#f80]\nStaticText COM PORT [13b #ff8000]\n"
     "ComboBox COM1 (COM PORT)\nButton Set\nButton Cancel\n"},
    {Language::english, "write-protected", "Amplifier|Interface unit|Loading file|Start upgrade|End|",
     "Dialog TarnBeacon ver1.003\nGraphic  [#000]\nStaticText  [11c #ffff00]\n"
     "StaticText The present firmware [15u]\n"
     "RadioButton Amplifier (QT-MVR 1.022)\nStaticText Amplifier model QT-MVR [13cf]\n"
     "StaticText Amplifier version 1.022 [13cf]\n"
     "RadioButton Interface unit (QT-KP42 1.200)\nStaticText Interface unit model QT-KP42 [13cfp]\n"
     "StaticText Interface unit version 1.200 [13cfp]\n"
     "StaticText The rewriteing firmware [15u]\nStaticText File model QT-MVR [13cf]\n"
     "StaticText File version 1.123 [13cf]\n"
     "Button Loading file (QT-MVR 1.123)\nButton Start upgrade\nButton End\n"},
    {Language::japanese, "main-window", "アンプ|インターフェースユニット|読込|終了|",
     "Dialog TarnBeacon ver1.003\nGraphic  [#000]\nStaticText 現ソフト [15u]\n"
     "RadioButton アンプ (QT-MVR 1.022)\nStaticText アンプ 型式 QT-MVR [13cf]\n"
     "StaticText アンプ バージョン 1.022 [13cf]\n"
     "RadioButton インターフェースユニット (QT-KP42 1.200)\n"
     "StaticText インターフェースユニット 型式 QT-KP42 [13cfp]\n"
     "StaticText インターフェースユニット バージョン 1.200 [13cfp]\n"
     "StaticText 書換ソフト [15u]\nStaticText ファイル 型式 [13cf]\nStaticText ファイル バージョン [13cf]\n"
     "Button 読込\nButton 書込開始\nButton 終了\n"},
    {Language::japanese, "progress", "",
     "Dialog ターンビーコン\nStaticText QT-MVR のソフトウェアを ver1.123 にアップデート中です。 [11]\n"
     "ProgressBar 進行状況\n"},
    {Language::english, "box-end", "OK|Cancel|",
     "AlertMessage Tarn Beacon\nStaticText Succeed\nButton OK\nButton Cancel\n"},
};

TEST(Windows, AreLegibleReachableAndSpoken) {
    platform::setDesktop(&theDesktop());
    const QPalette lightTheme = QApplication::palette();
    for (const Language language : {Language::english, Language::japanese}) {
        std::size_t scenes = 0;
        gallery::showAll(theDesktop(), language, [&](const std::string& scene, QWidget& window) {
            ++scenes;
            if (scene.ends_with("dialog")) { // wholly the toolkit's own
                return;
            }
            SCOPED_TRACE(scene);
            for (const QPalette& theme : {gallery::darkPalette(), lightTheme}) {
                QApplication::setPalette(theme);
                QCoreApplication::processEvents(); // the windows hear of it
                expectOrder(window);
            }
            std::string heard;
            hear(QAccessible::queryAccessibleInterface(&window), heard);
            for (const Row& row : rows) {
                if (row.language == language && row.scene == scene) {
                    EXPECT_EQ(heard, row.heard);
                    EXPECT_EQ(tabbed(window), row.tabbed);
                }
            }
        });
        EXPECT_GT(scenes, 15U);
        QApplication::setFont(QFont("sans", 20)); // of the boxes; those of the forms stay
    }
}

} // namespace
