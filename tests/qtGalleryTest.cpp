// The program's own windows on the toolkit's offscreen screen: what each shows uncut and readable under any theme, says
// to a screen reader and reaches by the Tab key.
#include "gallery/scenes.h"
#include "tests/realDesktop.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QStyleOptionButton>
#include <QTest>

#include <cmath>
#include <gtest/gtest.h>

using gallery::Language;

namespace {

// Role, name and, in brackets, description or name of the label; a line for each object that is seen and says anything.
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
    if (!(name + more).isEmpty()) {
        heard += (QString(qAccessibleRoleString(object->role())) + ' ' + name +
                  (more.isEmpty() ? "" : " (" + more + ')') + '\n')
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

void expectReadable(const QLabel& label) {
    const QColor text = label.palette().color(QPalette::WindowText);
    const int ground = qGray(label.palette().color(QPalette::Window).rgb());
    const double share = text.alphaF();
    const double seen = share * qGray(text.rgb()) + (1 - share) * ground;
    const auto [low, high] = std::minmax({brightness(seen), brightness(ground)});
    EXPECT_GE(high / low, 3) << label.text().toStdString();
}

// No caption is cut, and every label stands out from its background.
void expectLegible(const QWidget& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
        const QRect room(0, 0, label->width(), label->height());
        const int wrap = label->wordWrap() ? Qt::TextWordWrap : 0;
        if (label->isVisible() && !label->text().isEmpty()) {
            EXPECT_TRUE(room.contains(label->fontMetrics().boundingRect(room, wrap, label->text())))
                << label->text().toStdString();
            expectReadable(*label);
        }
    }
    for (const auto* button : window.findChildren<QAbstractButton*>()) {
        QStyleOptionButton option;
        option.initFrom(button);
        option.text = button->text();
        const auto part = button->isCheckable() ? QStyle::SE_CheckBoxContents : QStyle::SE_PushButtonContents;
        const QRect room = button->style()->subElementRect(part, &option, button);
        if (button->isVisible() && !button->text().isEmpty()) {
            EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()), room.width())
                << button->text().toStdString();
        }
    }
}

TEST(Windows, AreLegibleReachableAndSpoken) {
    platform::setDesktop(&theDesktop());
    const QPalette lightTheme = QApplication::palette();
    struct Row {
        Language language;
        const char* scene;
        const char* tabbed;
        const char* heard;
    };
    const std::vector<Row> rows{
        {Language::english, "port-choice", "COM1|Set|Cancel|",
         "Dialog TarnBeacon\nStaticText COM PORT\nComboBox COM1 (COM PORT)\nButton Set\nButton Cancel\n"},
        {Language::english, "file-loaded", "Amplifier|Interface unit|Loading file|Start upgrade|End|",
         "Dialog TarnBeacon ver1.003\nStaticText The present firmware\n"
         "RadioButton Amplifier (QT-MVR 1.022)\nStaticText Amplifier model QT-MVR\nStaticText Amplifier version 1.022\n"
         "RadioButton Interface unit (QT-KP42 1.200)\nStaticText Interface unit model QT-KP42\n"
         "StaticText Interface unit version 1.200\n"
         "StaticText The rewriteing firmware\nStaticText File model QT-MVR\nStaticText File version 1.123\n"
         "Button Loading file (QT-MVR 1.123)\nButton Start upgrade\nButton End\n"},
        {Language::japanese, "main-window", "アンプ|インターフェースユニット|読込|終了|",
         "Dialog TarnBeacon ver1.003\nStaticText 現ソフト\n"
         "RadioButton アンプ (QT-MVR 1.022)\nStaticText アンプ 型式 QT-MVR\nStaticText アンプ バージョン 1.022\n"
         "RadioButton インターフェースユニット (QT-KP42 1.200)\nStaticText インターフェースユニット 型式 QT-KP42\n"
         "StaticText インターフェースユニット バージョン 1.200\n"
         "StaticText 書換ソフト\nStaticText ファイル 型式\nStaticText ファイル バージョン\n"
         "Button 読込\nButton 書込開始\nButton 終了\n"},
        {Language::japanese, "progress", "",
         "Dialog ターンビーコン\nStaticText QT-MVR のソフトウェアを ver1.123 にアップデート中です。\n"
         "ProgressBar 進行状況\n"},
        {Language::english, "box-end", "OK|Cancel|",
         "AlertMessage Tarn Beacon\nStaticText Succeed\nButton OK\nButton Cancel\n"},
    };
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
                expectLegible(window);
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
