// The real host, on the toolkit's offscreen screen and a pseudo terminal, meets the contract of all hosts. Rows for its
// appearance and keyboard are in tests/stories/qtHost.txt, rows for each system in qtLinux.txt and qtWindows.txt.
#include "platform/qt/drawing.h"
#include "tests/lineFixture.h"
#include "tests/realHost.h"
#include "tests/windowText.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

namespace {

using namespace platform;
using contract::Text;

QWidget* windowOf(const Form& form) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QString::fromStdString(form.name) && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

// Calls `action` as soon as a modal window of this class is open.
template <class Dialog, class Action>
void whenShown(Action action) {
    QTimer::singleShot(0, [action] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        dialog != nullptr ? action(dialog) : whenShown<Dialog>(action);
    });
}

void enter(QFileDialog* dialog, const std::string& name) {
    auto* line = dialog->findChild<QLineEdit*>();
    dialog->activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(dialog)); // the line ignores keys until then
    line->setFocus();
    line->setText(QString::fromStdString(name));
    name.empty() ? dialog->reject() : QTest::keyClick(line, Qt::Key_Return);
}

class RealFixture : QObject, public LineFixture {
  public:
    RealFixture() : LineFixture(*realHost) {
        addOperator();
        addWindow();
        other.onTaskBar = false;
        desk.load(other);
        perform("device " + unit + "\t' the unit");
    }
    ~RealFixture() override { desk.unload(other); }

  private:
    template <class Widget = QWidget>
    Widget* find(Text name) const {
        const QWidget* window = windowOf(form);
        auto* found = window == nullptr ? nullptr : window->findChild<Widget*>(QString::fromStdString(name));
        return found != nullptr && found->isVisible() ? found : nullptr;
    }
    // The widget of the form, or else of the open box.
    QWidget* seen(Text name) const {
        auto* found = find(name);
        return found != nullptr ? found
                                : QApplication::activeModalWidget()->findChild<QWidget*>(QString::fromStdString(name));
    }
    void press(Text name, Text by) {
        auto* button = find<QAbstractButton>(name);
        if (button == nullptr) {
            return;
        }
        QWindow* window = button->window()->windowHandle();
        if (by == "mouse") {
            QTest::mouseClick(window, Qt::LeftButton, {}, button->mapTo(button->window(), button->rect().center()));
        } else if (by == "screenReader") {
            auto* actions = QAccessible::queryAccessibleInterface(button)->actionInterface();
            actions->doAction(actions->actionNames().value(0));
            EXPECT_TRUE(QTest::qWaitFor([=] { return !button->isDown(); })); // the button is shown pressed for a moment
        } else if (button->setFocus(); button->window()->focusWidget() == button) {
            QTest::keyClick(window, Qt::Key_Space);
        }
    }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        painted = painted || event->type() == QEvent::Paint;
        raised = raised || event->type() == QEvent::ZOrderChange;
        return false;
    }

    void addOperator() {
        commands["input"] = [this](Text by) { input = by; };
        commands["press"] = [this](Text name) { desk.doEvents(), press(name, input); };
        // before the host applies it
        commands["setInvisible"] = [this](Text) { form.visible = false; };
        commands["pressNow"] = [this](Text name) { press(name, input); };
        // the entry above or below the present one
        commands["choose"] = [this](Text entry) {
            find("list")->setFocus(), commands.at("keys")(entry == "0" ? "Up" : "Down");
        };
        commands["keys"] = [this](Text names) {
            for (const QString& name : QString::fromStdString(names).split(' ')) {
                QTest::keyClick(windowOf(form)->windowHandle(), QKeySequence::fromString(name)[0].key());
            }
        };
        commands["closeRequest"] = [this](Text) {
            desk.doEvents();
            if (QWidget* window = windowOf(form); window != nullptr && window->windowHandle()->close()) {
                add("closed");
            }
        };
        commands["later"] = [this](Text wait) { QTimer::singleShot(std::stoi(wait), [this] { add("later"); }); };
        commands["ok"] = [](Text) { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return); };
        commands["escape"] = [](Text) { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); };
        commands["atBox"] = [this](Text script) {
            whenShown<QMessageBox>([=, this](QMessageBox*) {
                QTest::qWait(20), perform(script, script.find(',') < script.size() ? ',' : '.');
            });
        };
        commands["atDialog"] = [](Text names) {
            const std::size_t comma = names.find(',');
            whenShown<QFileDialog>([=](QFileDialog* shown) { enter(shown, names.substr(0, comma)); });
            if (comma < names.size()) {
                whenShown<QMessageBox>([=](QMessageBox* question) {
                    auto* shown = qobject_cast<QFileDialog*>(question->parent());
                    question->button(QMessageBox::No)->click();
                    QTimer::singleShot(0, [=] { enter(shown, names.substr(comma + 1)); });
                });
            }
        };
    }

    void addWindow() {
        commands["describe"] = [this](Text name) {
            const QString text = textOf(*QAccessible::queryAccessibleInterface(seen(name)));
            add(QString(text).remove('\n').toStdString());
        };
        // sets a caption of this width, in per cent of its area; returns the width in the window, in quarters of the area
        commands["long"] = [this](Text text) {
            Control& control = form.control(text.substr(0, text.find(' ')));
            QWidget* widget = find(control.name);
            const int room = captionRoom(*widget).width();
            const int letter = QFontMetrics(fontOf(control.font)).horizontalAdvance('x');
            control.caption = std::string(std::stoul(text.substr(text.find(' '))) * room / 100 / letter + 1, 'x');
            desk.sleep(1);
            const int width = widget->fontMetrics().horizontalAdvance(QString::fromStdString(control.caption));
            add(width > room ? "cut" : std::to_string(std::lround(4.0 * width / room)));
        };
        // the text is not cut, and the window takes at most half of the screen
        commands["fits"] = [this](Text name) {
            auto* label = qobject_cast<QLabel*>(seen(name));
            add(isWhole(*label) && label->window()->width() <= label->screen()->size().width() / 2 ? "whole" : "cut");
        };
        commands["middle"] = [this](Text name) { add(find(name)->geometry().center().y()); };
        commands["font"] = [this](Text points) { form.control("label").font.points = std::stod(points); };
        commands["centre"] = [this](Text name) { form.control(name).alignment = Alignment::centre; };
        commands["border"] = [this](Text name) { form.control(name).border = true; };
        commands["picture"] = [this](Text number) { form.control("picture").picture = std::stoi(number); };
        // a rising line of this width, and where it begins
        commands["slope"] = [this](Text width) {
            form.control("line").place = {1500, 2700, std::stoi(width), -150};
            desk.sleep(1);
            const QImage image = find("line")->grab().toImage();
            add(image.pixelColor(0, 0) == QColor(Qt::black) ? "left" : "right");
        };
        // position in the window
        commands["place"] = [this](Text name) {
            const QPoint at = find(name)->mapTo(windowOf(form), QPoint());
            add(at.x()), add(at.y()), add(find(name)->width()), add(find(name)->height());
        };
        // position and size of the window, which cannot be resized
        commands["frame"] = [this](Text) {
            QWidget* window = windowOf(form);
            window->resize(900, 900);
            add(window->x()), add(window->y()), add(window->width()), add(window->height());
            add(window->windowFlags().testFlag(Qt::WindowCloseButtonHint) ? "closable" : "open");
        };
        commands["position"] = [this](Text) { form.centred = false, form.left = 150, form.top = 300; };
        commands["caption"] = [this](Text caption) { form.control("label").caption = caption; };
        commands["bar"] = [this](Text value) { form.control("bar").value = std::stod(value); };
        commands["items"] = [this](Text item) {
            form.control("list").items = {"a", item}, form.control("list").listIndex = 1;
        };
        commands["textColour"] = [this](Text name) { form.control(name).textColour = rgb(1, 2, 3); };
        commands["backColour"] = [this](Text name) { form.control(name).backColour = rgb(0, 0, 128); };
        commands["pointer"] = [this](Text number) { form.mousePointer = static_cast<MousePointer>(std::stoi(number)); };
        commands["cursor"] = [this](Text) { add(windowOf(form)->cursor().shape()); };
        // since the last call
        commands["painted"] = [this](Text name) {
            find(name)->installEventFilter(this);
            add(std::exchange(painted, false) ? "painted" : "still");
        };
        commands["raised"] = [this](Text) {
            windowOf(form)->installEventFilter(this);
            add(std::exchange(raised, false) ? "raised" : "left");
        };
        // moves the bar as fast as possible
        commands["fastBar"] = [this](Text) {
            int shown = 0;
            QObject::connect(find<QProgressBar>("bar"), &QProgressBar::valueChanged, this, [&] { ++shown; });
            const std::int64_t begin = now();
            for (double& value = form.control("bar").value; shown < 5 && now() < begin + 2000; desk.waitForBytes(0)) {
                value = value < 1500 ? value + 10 : 500;
            }
            find("bar")->disconnect(this);
            add(shown == 5 && shown <= (now() - begin) / 16 + 2 ? "limited" : std::to_string(shown));
        };
        commands["showOther"] = [this](Text) { desk.show(other); };
        commands["hideOther"] = [this](Text) { desk.hide(other); };
        // the title of the parent of the newest window, and the flags of its frame
        commands["parent"] = [this](Text) {
            const QWidget* modal = QApplication::activeModalWidget();
            const QWidget* window = modal != nullptr ? modal : windowOf(other);
            const QWindow* parent = window->windowHandle()->transientParent();
            add(parent == nullptr ? "nothing" : parent->title().toStdString());
            add(window->windowFlags() & (Qt::WindowType_Mask | Qt::WindowMinMaxButtonsHint));
        };
        // describes the next file dialog
        commands["dialog"] = [this](Text kind) {
            whenShown<QFileDialog>([this](QFileDialog* shown) {
                commands.at("parent")(""), commands.at("describe")("label");
                const auto* columns = shown->findChild<QTreeView*>()->header();
                const QStringList texts{shown->windowTitle(),
                                        shown->nameFilters().join(' '),
                                        shown->directory().path(),
                                        shown->findChild<QLineEdit*>()->text(),
                                        QString::number(columns->sectionResizeMode(0)),
                                        shown->testOption(QFileDialog::DontUseNativeDialog) ? "own" : "native"};
                add(texts.join(' ').replace(QString::fromStdString(folder).chopped(1), "folder").toStdString());
                shown->reject();
            });
            dialog.initialDirectory = folder + "first";
            std::filesystem::create_directory(dialog.initialDirectory);
            kind == "open" ? desk.showOpen(dialog) : desk.showSave(dialog);
        };
        commands["run"] = [](Text length) {
            QTimer::singleShot(std::stoi(length), [] { QCoreApplication::exit(); });
            realHost->run();
        };
        commands["default"] = [this](Text number) { add(defaultDevice(std::stoi(number)) + '.'); };
        commands["screen"] = [this](Text) { add(desk.screenSize().width), add(desk.screenSize().height); };
    }

    std::string input = "mouse";
    TestForm other{"other"};
    bool painted = false;
    bool raised = false;
};

} // namespace

namespace contract {

std::unique_ptr<Fixture> makeFixture() {
    return std::make_unique<RealFixture>();
}

INSTANTIATE_TEST_SUITE_P(Window, PlatformContract, testing::ValuesIn(sectionsOf("windowHost.txt")), testName);
INSTANTIATE_TEST_SUITE_P(Line, PlatformContract, testing::ValuesIn(sectionsOf("lineHost.txt")), testName);
INSTANTIATE_TEST_SUITE_P(Real, PlatformContract, testing::ValuesIn(sectionsOf("qtHost.txt")), testName);
INSTANTIATE_TEST_SUITE_P(System, PlatformContract, testing::ValuesIn(sectionsOf(systemStory)), testName);

} // namespace contract
