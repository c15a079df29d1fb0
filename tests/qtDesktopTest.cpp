// The real desktop, on the toolkit's offscreen screen, keeps the contract of all desktops; and its windows, boxes and
// dialogs look and answer to the keyboard as they should.
#include "platform/system.h"
#include "tests/platformContract.h"
#include "tests/posix.h"
#include "tests/realDesktop.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QRadioButton>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdlib>
#include <fstream>

using namespace platform;
using contract::Text;

bool syncFails = false; // the next time

extern "C" int fsync(int fd) { // stands before the system's own
    errno = EIO;
    return std::exchange(syncFails, false) ? -1 : static_cast<int>(::syscall(SYS_fsync, fd));
}

namespace {

QWidget* windowOf(const Form& form) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QString::fromStdString(form.name) && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

template <class Widget = QWidget>
Widget* widgetOf(const Form& form, const Control& control) {
    QWidget* window = windowOf(form);
    return window == nullptr ? nullptr : window->findChild<Widget*>(QString::fromStdString(control.name));
}

void pressKey(QWidget* window, Qt::Key key) {
    QTest::keyClick(window->windowHandle(), key);
}

// Does that once the modal window of this class stands.
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
    static_cast<void>(QTest::qWaitForWindowActive(dialog)); // its line takes no keys before
    line->setFocus();
    line->selectAll();
    QTest::keyClicks(line, QString::fromStdString(name));
    QTest::keyClick(line, Qt::Key_Return);
}

struct RealSurroundings : contract::Surroundings {
    RealSurroundings() {
        folder = folder_.string() + '/';
        std::ofstream(desktop().programDirectory() + "Setting.INI")
            << "[DEVICE]\nCOM3=" << unit_.string() << "\t' the unit\nCOM4=/nowhere/tty\n";
        limitOpenFiles(200);
        commands = {
            {"press",
             [this](Text name) {
                 if (auto* button = widget<QAbstractButton>(name)) {
                     const QPoint place = button->mapTo(button->window(), button->rect().center());
                     QTest::mouseClick(button->window()->windowHandle(), Qt::LeftButton, {}, place);
                 }
             }},
            {"key",
             [this](Text name) {
                 auto* button = widget<QAbstractButton>(name);
                 if (button != nullptr && (button->setFocus(), button->window()->focusWidget() == button)) {
                     pressKey(button->window(), Qt::Key_Space);
                 }
             }},
            {"reader",
             [this](Text name) {
                 if (auto* button = widget<QAbstractButton>(name)) {
                     auto* actions = QAccessible::queryAccessibleInterface(button)->actionInterface();
                     actions->doAction(actions->actionNames().value(0));
                     EXPECT_TRUE(QTest::qWaitFor([=] { return !button->isDown(); })); // it shows a press for a moment
                 }
             }},
            {"choose",
             [this](Text entry) { // the one above or below
                 auto* list = widget<QComboBox>("list");
                 list->setFocus();
                 pressKey(list->window(), list->currentIndex() < std::stoi(entry) ? Qt::Key_Down : Qt::Key_Up);
             }},
            {"request",
             [this](Text) {
                 QWidget* window = windowOf(form);
                 if (window != nullptr && QApplication::activeModalWidget() == nullptr) { // or it reaches no window
                     window->windowHandle()->close();
                 }
             }},
            {"later",
             [this](Text wait) { QTimer::singleShot(std::stoi(wait), [this] { form.events.emplace_back("later"); }); }},
            {"atBox",
             [this](Text button) {
                 whenShown<QMessageBox>([this, button](QMessageBox* box) {
                     QTest::qWait(20);
                     for (const std::string hand : {"press", "reader"}) {
                         commands.at(hand)("second");
                         commands.at(hand)("inFrame1");
                     }
                     windowOf(form)->close();
                     pressKey(box, button == "ok" ? Qt::Key_Return : Qt::Key_Escape);
                 });
             }},
            {"atDialog",
             [](Text names) {
                 const std::size_t comma = names.find(',');
                 whenShown<QFileDialog>([name = names.substr(0, comma)](QFileDialog* dialog) {
                     name.empty() ? dialog->reject() : enter(dialog, name);
                 });
                 if (comma < names.size()) {
                     whenShown<QMessageBox>([other = names.substr(comma + 1)](QMessageBox* question) {
                         auto* dialog = qobject_cast<QFileDialog*>(question->parent());
                         question->button(QMessageBox::No)->click();
                         QTimer::singleShot(0, [=] { enter(dialog, other); });
                     });
                 }
             }},
            {"room", [](Text most) { limitFileSize(std::stoul(most)); }},
            {"break", [](Text) { syncFails = true; }},
            {"give", [this](Text text) { end_->write(bytes(text)); }},
            {"arrived", [this](Text count) { say(take(*end_, std::stoul(count))); }},
            {"chatter",
             [this](Text) {
                 chatter_ = std::jthread([this](const std::stop_token& stop) {
                     for (; !stop.stop_requested(); QThread::msleep(5)) {
                         end_->write(Bytes{'x'});
                     }
                 });
             }},
            {"pull", [this](Text) { end_.reset(); }},
            {"plug", [this](Text) { end_.emplace(unit_); }},
            {"hold", [this](Text) { other_->open(unit_.string(), {}); }},
            {"free", [this](Text) { other_->close(); }},
        };
    }
    ~RealSurroundings() override {
        chatter_ = {};
        std::filesystem::remove_all(folder_);
    }

    Desktop& desktop() override { return theDesktop(); }
    template <class Widget>
    Widget* widget(Text name) const {
        auto* found = widgetOf<Widget>(form, form.control(name));
        return found != nullptr && found->isVisible() ? found : nullptr;
    }

    std::filesystem::path folder_ = makeTestFolder();
    std::filesystem::path unit_ = folder_ / "unit";
    std::optional<simulator::PseudoTerminal> end_{unit_};
    std::jthread chatter_;
    std::unique_ptr<LineDevice> other_ = makeLineDevice(); // another program's
};

std::unique_ptr<contract::Surroundings> make() {
    return std::make_unique<RealSurroundings>();
}

} // namespace

namespace contract {
INSTANTIATE_TEST_SUITE_P(Real, PlatformContract, testing::Values(make));
} // namespace contract

namespace {

class QtDesktopTest : public testing::Test {
  protected:
    QtDesktopTest() {
        desktop_.load(form_);
        desktop_.show(form_);
        desktop_.doEvents();
    }
    ~QtDesktopTest() override {
        desktop_.unload(form_);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QWidget* window() const { return windowOf(form_); }
    template <class Widget = QWidget>
    Widget* find(const Control& control) const {
        return widgetOf<Widget>(form_, control);
    }

    QtDesktop& desktop_ = theDesktop();
    TestForm form_;
};

TEST_F(QtDesktopTest, TheWindowShowsWhatTheFormHolds) {
    EXPECT_TRUE(window()->minimumSize() == QSize(333, 200) && window()->maximumSize() == QSize(333, 200));
    EXPECT_EQ(window()->pos() + window()->rect().center(), QGuiApplication::primaryScreen()->geometry().center());
    EXPECT_EQ(find(form_.line)->geometry(), QRect(0, 20, 100, 1));
    EXPECT_EQ(find(form_.inFrame[1])->geometry().topLeft(), QPoint(10, 47));
    EXPECT_EQ(find<QAbstractButton>(form_.first)->text(), "R&&D"); // an ordinary ampersand
    form_.label.caption = "<b>ファイル</b> & more";
    form_.inFrame[0].value = 0;
    form_.list.items = {"a", "b"};
    form_.list.listIndex = 1;
    form_.bar.min = 500;
    form_.bar.max = 1500;
    form_.bar.value = 600;
    desktop_.sleep(1); // shows it too, as every wait does
    const auto* label = find<QLabel>(form_.label);
    const auto* bar = find<QProgressBar>(form_.bar);
    EXPECT_TRUE(label->text().toStdString() == form_.label.caption && label->textFormat() == Qt::PlainText);
    EXPECT_FALSE(find<QRadioButton>(form_.inFrame[0])->isChecked()); // a group with none on
    EXPECT_EQ(find<QComboBox>(form_.list)->currentText(), "b");
    EXPECT_EQ(bar->value() * 10, bar->maximum());
    form_.label.textColour = rgb(1, 2, 3);
    form_.list.items = {"c", "d"};
    form_.bar.value = 1e9; // drawn as full, kept as it is
    QTest::qWait(20);
    desktop_.waitForBytes(0);
    EXPECT_EQ(label->palette().color(QPalette::Disabled, QPalette::WindowText), QColor(1, 2, 3));
    EXPECT_EQ(find<QComboBox>(form_.list)->currentText(), "d");
    EXPECT_TRUE(bar->value() == bar->maximum() && form_.bar.value == 1e9);
    form_.centred = false;
    form_.left = 150;
    form_.top = 300;
    form_.label.enabled = false;
    desktop_.hide(form_);
    EXPECT_EQ(window(), nullptr);
    desktop_.show(form_);
    EXPECT_EQ(window()->pos(), QPoint(10, 20));
    EXPECT_EQ(label->palette().color(QPalette::WindowText).alpha(), 128); // pale
}

TEST_F(QtDesktopTest, TheKeyboardReachesEverythingInItsOrder) {
    const auto press = [&](std::initializer_list<Qt::Key> keys) {
        std::ranges::for_each(keys, [&](Qt::Key key) { pressKey(window(), key); });
    };
    press({Qt::Key_Return, Qt::Key_Tab}); // the first of the tab order has the focus
    for (const bool enabled : {false, true}) {
        form_.enabled = enabled;
        form_.mousePointer = enabled ? MousePointer::standard : MousePointer::hourglass;
        desktop_.doEvents();
        EXPECT_TRUE(window()->isEnabled()); // or the toolkit shows no pointer of its own
        EXPECT_EQ(window()->cursor().shape(), enabled ? Qt::ArrowCursor : Qt::WaitCursor);
        press({Qt::Key_Space});
    }
    press({Qt::Key_Tab, Qt::Key_Down}); // the focus is back
    EXPECT_EQ(form_.events, (std::vector<std::string>{"R&D", "second", "inFrame1"}));
}

TEST_F(QtDesktopTest, ABoxShowsItsTextAsItIs) {
    const std::pair<int, QMessageBox::Icon> rows[] = {{0, QMessageBox::NoIcon},
                                                      {16, QMessageBox::Critical},
                                                      {33, QMessageBox::Question},
                                                      {48, QMessageBox::Warning},
                                                      {65, QMessageBox::Information}};
    TestForm above;
    above.name = "above";
    desktop_.load(above);
    desktop_.show(above);
    for (const auto& [style, icon] : rows) {
        if (style == 48) {
            desktop_.hide(above);
        }
        whenShown<QMessageBox>([&, asked = style, shown = icon](QMessageBox* box) {
            EXPECT_EQ(box->windowTitle(), "エラー");
            EXPECT_TRUE(box->text().endsWith("w\n<i>二</i>") && box->textFormat() == Qt::PlainText);
            EXPECT_TRUE(box->icon() == shown && box->buttons().size() == asked % 16 + 1) << asked;
            EXPECT_EQ(box->windowHandle()->transientParent(), windowOf(asked < 48 ? above : form_)->windowHandle());
            EXPECT_LT(box->width(), QGuiApplication::primaryScreen()->size().width()); // a long word is broken
            box->close();
        });
        desktop_.msgBox(std::string(300, 'w') + "\r\n<i>二</i>", style, "エラー");
    }
    desktop_.unload(above);
}

TEST_F(QtDesktopTest, AFileDialogBeginsWhereTheProgramSays) {
    const std::filesystem::path last = std::filesystem::temp_directory_path() / "last.bin";
    FileDialog dialog{.initialDirectory = last.parent_path().string(),
                      .fileName = last.string(),
                      .filter = "Binファイル (*.bin)|*.bin||"};
    whenShown<QFileDialog>([&](QFileDialog* shown) {
        EXPECT_EQ(shown->nameFilters(), QStringList{"Binファイル (*.bin)"});
        EXPECT_EQ(shown->directory().path().toStdString(), dialog.initialDirectory);
        EXPECT_EQ(shown->findChild<QLineEdit*>()->text(), "last.bin");
        EXPECT_EQ(shown->acceptMode(), QFileDialog::AcceptOpen);
        shown->reject();
    });
    desktop_.showOpen(dialog);
}

TEST_F(QtDesktopTest, AnEventDoesNotEnterItsOwnHandlerAndShowsWhatItChanged) {
    int entered = 0;
    form_.first.click = [&] {
        ++entered;
        find<QAbstractButton>(form_.first)->click();
        form_.label.caption = std::to_string(entered);
    };
    for (const char* shown : {"1", "2"}) {
        find<QAbstractButton>(form_.first)->click();
        EXPECT_EQ(find<QLabel>(form_.label)->text(), shown);
    }
}

bool isHeld(const std::string& device) {
    return std::ranges::any_of(std::filesystem::directory_iterator("/proc/self/fd"), [&](const auto& file) {
        std::error_code error;
        return std::filesystem::read_symlink(file, error).string().starts_with(device);
    });
}

TEST_F(QtDesktopTest, ADeviceThatGoesWhileNothingHappensIsLetGo) {
    std::optional<simulator::PseudoTerminal> end{std::in_place, std::filesystem::path()};
    const std::string device = end->device();
    std::ofstream(desktop_.programDirectory() + "Setting.INI") << "[DEVICE]\nCOM3=" << device << '\n';
    desktop_.commPort().choosePort(3);
    desktop_.commPort().open();
    EXPECT_TRUE(isHeld(device));
    end.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !isHeld(device); }));
    desktop_.commPort().close();
}

TEST_F(QtDesktopTest, AFailureThatNoHandlerTookIsShownAndEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the toolkit's threads do not survive a plain fork
    form_.first.click = [] { throw Failure(failureNumber::overflow, "Overflow"); };
    const auto press = [&] {
        whenShown<QMessageBox>([](QMessageBox* box) {
            std::fputs(box->text().toUtf8().constData(), stderr);
            box->close();
        });
        find<QAbstractButton>(form_.first)->click();
    };
    EXPECT_EXIT(press(), testing::ExitedWithCode(0), "Overflow");
}

} // namespace
