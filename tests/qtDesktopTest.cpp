// The real desktop, on the toolkit's offscreen screen: a form of every kind of control, worked by mouse and keyboard.
#include "platform/system.h"
#include "tests/failureOf.h"
#include "tests/otherProcess.h"
#include "tests/realDesktop.h"
#include "tests/testForm.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace platform;

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

    QWidget* window() const {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == "form" && widget->isVisible()) {
                return widget;
            }
        }
        return nullptr;
    }

    template <class Widget = QWidget>
    Widget* find(const Control& control) const {
        return window()->findChild<Widget*>(QString::fromStdString(control.name));
    }

    void click(const Control& control) const { QTest::mouseClick(find(control), Qt::LeftButton); }
    void press(Qt::Key key) const { QTest::keyClick(window()->windowHandle(), key); }

    // Does that once the modal window of this class stands.
    template <class Dialog, class Action>
    void whenShown(Action action) const {
        QTimer::singleShot(0, [this, action] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            dialog != nullptr ? action(dialog) : whenShown<Dialog>(action);
        });
    }

    QtDesktop& desktop_ = theDesktop();
    TestForm form_;
};

TEST_F(QtDesktopTest, TheWindowShowsWhatTheFormHoldsWhenEventsRun) {
    EXPECT_EQ(window()->size(), QSize(333, 200));
    EXPECT_EQ(find(form_.second)->geometry(), QRect(10, 30, 100, 21));
    EXPECT_EQ(find(form_.line)->geometry(), QRect(0, 20, 100, 1));
    EXPECT_EQ(find(form_.inFrame[1])->geometry().topLeft(), QPoint(10, 47));
    EXPECT_EQ(find(form_.menu), nullptr);
    EXPECT_EQ(find<QPushButton>(form_.first)->text(), "R&&D"); // an ordinary ampersand

    form_.title = "Other";
    form_.label.caption = "<b>ファイル</b> & more";
    form_.label.textColour = rgb(1, 2, 3);
    form_.label.font.underline = true;
    form_.label.place.left = 300;
    form_.second.enabled = false;
    form_.first.visible = false;
    form_.inFrame[0].value = 0;
    form_.list.items = {"a", "b"};
    form_.list.listIndex = 1;
    form_.bar.max = 245760;
    form_.bar.value = 1e9; // drawn as full, kept as it is
    desktop_.doEvents();
    const auto* label = find<QLabel>(form_.label);
    EXPECT_EQ(window()->windowTitle(), "Other");
    EXPECT_EQ(label->text().toStdString(), form_.label.caption);
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_EQ(label->palette().color(QPalette::Disabled, QPalette::WindowText), QColor(1, 2, 3));
    EXPECT_TRUE(label->font().underline());
    EXPECT_EQ(label->x(), 20);
    EXPECT_FALSE(find(form_.second)->isEnabled());
    EXPECT_FALSE(find(form_.first)->isVisible());
    EXPECT_FALSE(find<QRadioButton>(form_.inFrame[0])->isChecked()); // a group with none on
    EXPECT_EQ(find<QComboBox>(form_.list)->currentText(), "b");
    EXPECT_EQ(find<QProgressBar>(form_.bar)->value(), find<QProgressBar>(form_.bar)->maximum());
    EXPECT_EQ(form_.bar.value, 1e9);
}

TEST_F(QtDesktopTest, MouseAndKeyboardWriteTheStateAndThenRaiseTheEvent) {
    using Names = std::vector<std::string>;
    press(Qt::Key_Return); // the first of the tab order has the focus
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    EXPECT_EQ(form_.events, (Names{"R&D", "second"}));
    press(Qt::Key_Tab);
    press(Qt::Key_Down);
    EXPECT_EQ(form_.inFrame[0].value, 0);
    EXPECT_EQ(form_.inFrame[1].value, 1);
    EXPECT_EQ(form_.outside.value, 1); // a group of its own
    click(form_.inFrame[0]);
    EXPECT_EQ(form_.inFrame[1].value, 0);
    click(form_.check);
    EXPECT_EQ(form_.check.value, 1);
    find(form_.list)->setFocus();
    press(Qt::Key_Down);
    EXPECT_EQ(form_.list.listIndex, 1);
    EXPECT_EQ(form_.events, (Names{"R&D", "second", "inFrame1", "inFrame0", "check", "list"}));
}

TEST_F(QtDesktopTest, ADisabledWindowTakesNothingAndShowsItsPointer) {
    int closes = 0;
    form_.queryUnload = [&] { ++closes; };
    find(form_.second)->setFocus();
    form_.enabled = false;
    form_.mousePointer = MousePointer::hourglass;
    desktop_.doEvents();
    click(form_.first);
    press(Qt::Key_Space);
    window()->close();
    EXPECT_TRUE(form_.events.empty());
    EXPECT_EQ(closes, 0);
    EXPECT_TRUE(window()->isEnabled()); // or the toolkit shows no pointer of its own
    EXPECT_EQ(window()->cursor().shape(), Qt::WaitCursor);

    form_.enabled = true;
    form_.mousePointer = MousePointer::standard;
    desktop_.doEvents();
    EXPECT_EQ(window()->cursor().shape(), Qt::ArrowCursor);
    press(Qt::Key_Space); // the focus is back
    EXPECT_EQ(form_.events, std::vector<std::string>{"second"});
    window()->close();
    EXPECT_EQ(closes, 1);
    form_.queryUnload = nullptr;
    window()->close();
    ASSERT_NE(window(), nullptr); // the program takes a window away, no one else
}

TEST_F(QtDesktopTest, ABoxShowsItsTextAsItIsAndGivesTheAnswer) {
    struct Row {
        int style;
        QMessageBox::Icon icon;
        Qt::Key key;
        int answer;
    };
    form_.enabled = false; // of no concern to a box
    for (const Row& row :
         {Row{0, QMessageBox::NoIcon, Qt::Key_Return, 1}, Row{16, QMessageBox::Critical, Qt::Key_Escape, 1},
          Row{33, QMessageBox::Question, Qt::Key_Escape, 2}, Row{48, QMessageBox::Warning, Qt::Key_Space, 1},
          Row{65, QMessageBox::Information, Qt::Key_Return, 1}}) {
        whenShown<QMessageBox>([&](QMessageBox* box) {
            EXPECT_EQ(box->windowTitle(), "エラー");
            EXPECT_EQ(box->text(), "<i>一</i>\n二");
            EXPECT_EQ(box->textFormat(), Qt::PlainText);
            EXPECT_EQ(box->icon(), row.icon) << row.style;
            EXPECT_EQ(box->buttons().size(), row.style % 16 + 1);
            EXPECT_EQ(box->buttons().front()->text(), "OK");
            QTest::keyClick(box->windowHandle(), row.key);
        });
        EXPECT_EQ(desktop_.msgBox("<i>一</i>\r\n二", row.style, "エラー"), row.answer) << row.style;
    }
    whenShown<QMessageBox>([](QMessageBox* box) { box->close(); });
    EXPECT_EQ(desktop_.msgBox("text", boxStyle::okCancel, "title"), boxAnswer::cancel);
}

TEST_F(QtDesktopTest, ABarIsPaintedNoOftenerThanAScreenShowsAndReachesItsLastValue) {
    struct Paints : QObject {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } paints;
    auto* bar = find<QProgressBar>(form_.bar);
    bar->installEventFilter(&paints);
    form_.bar.max = 2000;
    const std::int64_t start = desktop_.timeGetTime();
    for (form_.bar.value = 0; form_.bar.value < form_.bar.max; ++form_.bar.value) { // as on a line without delay
        desktop_.doEvents();
    }
    EXPECT_LE(paints.count, (desktop_.timeGetTime() - start) / 16 + 2);
    const std::int64_t patience = desktop_.timeGetTime() + 1000;
    while (bar->value() < bar->maximum() && desktop_.timeGetTime() < patience) {
        desktop_.waitForEvents(patience);
    }
    EXPECT_EQ(bar->value(), bar->maximum());
}

TEST_F(QtDesktopTest, TimersTickAlsoWithinTheirOwnTickAndNotAtAnIntervalOfNone) {
    int ticks = 0;
    int depth = 0;
    int deepest = 0;
    form_.timer.tick = [&] {
        ++ticks;
        deepest = std::max(deepest, ++depth);
        for (const std::int64_t limit = desktop_.timeGetTime() + 2000; deepest < 2 && desktop_.timeGetTime() < limit;) {
            desktop_.waitForEvents(limit);
        }
        --depth;
    };
    form_.timer.setEnabled(true);
    desktop_.waitForEvents(desktop_.timeGetTime() + 20);
    EXPECT_EQ(ticks, 0);
    form_.timer.setInterval(10);
    desktop_.waitForEvents(never); // until the tick
    EXPECT_EQ(deepest, 2);
    form_.timer.setEnabled(false);
    const int before = ticks;
    desktop_.waitForEvents(desktop_.timeGetTime() + 30);
    EXPECT_EQ(ticks, before);

    form_.timer.setEnabled(true); // ticks go on while a box stands, and what they change is shown
    form_.timer.tick = [&] {
        form_.label.caption = "ticked";
        form_.timer.setEnabled(false);
        QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
    };
    desktop_.msgBox("text", 0, "title");
    EXPECT_EQ(find<QLabel>(form_.label)->text(), "ticked");
}

TEST_F(QtDesktopTest, AnEventDoesNotEnterItsOwnHandlerAndMayUnloadItsForm) {
    int entered = 0;
    form_.first.click = [&] {
        ++entered;
        click(form_.first);
        click(form_.second);
        desktop_.unload(form_);
        form_.first.click = nullptr; // as if the form were gone
    };
    click(form_.first);
    desktop_.doEvents();
    EXPECT_EQ(entered, 1);
    EXPECT_EQ(form_.events, std::vector<std::string>{"second"});
    EXPECT_EQ(window(), nullptr);
    EXPECT_FALSE(form_.visible);
}

TEST_F(QtDesktopTest, FileDialogsTakeAnyNameAndGiveItBackUnchanged) {
    const auto folder = std::filesystem::temp_directory_path() / "qtDesktopTest";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "old.bin") << "x";
    FileDialog dialog{.flags = FileDialog::overwritePrompt,
                      .initialDirectory = folder.string(),
                      .fileName = "",
                      .filter = "Binファイル (*.bin)|*.bin||",
                      .cancelError = true};
    const auto type = [](const char* name) {
        return [name](QFileDialog* shown) {
            EXPECT_EQ(shown->nameFilters(), QStringList{"Binファイル (*.bin)"});
            auto* line = shown->findChild<QLineEdit*>();
            line->selectAll();
            QTest::keyClicks(line, name);
            QTest::keyClick(line, Qt::Key_Return);
        };
    };
    whenShown<QFileDialog>(type("missing"));
    desktop_.showOpen(dialog);
    EXPECT_EQ(dialog.fileName, (folder / "missing").string());
    whenShown<QFileDialog>([&](QFileDialog* shown) {
        whenShown<QMessageBox>([&](QMessageBox* box) {
            box->button(QMessageBox::Yes)->click();
            dialog.flags = -1; // it asked
        });
        type("old.bin")(shown);
    });
    desktop_.showSave(dialog);
    EXPECT_EQ(dialog.flags, -1);
    EXPECT_EQ(dialog.fileName, (folder / "old.bin").string());
    whenShown<QFileDialog>([](QFileDialog* shown) { shown->reject(); });
    EXPECT_EQ(failureOf([&] { desktop_.showOpen(dialog); }), failureNumber::dialogCancelled);
    EXPECT_EQ(dialog.fileName, (folder / "old.bin").string());
    std::filesystem::remove_all(folder);
}

TEST_F(QtDesktopTest, TheEndOfTheProgramStopsItFromAnyDepth) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the toolkit's threads do not survive a plain fork
    EXPECT_EXIT(
        {
            form_.first.click = [&] {
                whenShown<QMessageBox>([](QMessageBox*) { theDesktop().endProgram(); });
                desktop_.msgBox("text", 0, "title");
                std::abort();
            };
            click(form_.first);
            std::abort();
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EXIT( // a failure that no handler took is shown, and ends the program too
        {
            form_.first.click = [] { throw Failure(failureNumber::overflow, "Overflow"); };
            whenShown<QMessageBox>([](QMessageBox* box) {
                std::fputs(box->text().toUtf8().constData(), stderr);
                box->close();
            });
            click(form_.first);
            std::abort();
        },
        testing::ExitedWithCode(0), "Overflow");
}

TEST(InstanceLockTest, ASecondInstanceIsTheOneWhileTheFirstLives) {
    const auto folder = std::filesystem::temp_directory_path() / "instanceLockTest";
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    const OtherProcess first([] { return becomeOnlyInstance(); });
    EXPECT_FALSE(becomeOnlyInstance());
    first.kill();
    EXPECT_TRUE(becomeOnlyInstance());
    std::filesystem::remove_all(folder);
}

TEST(DiskFilesTest, FailuresNameFileAndCauseAndAWriteKeepsTheRest) {
    const auto folder = std::filesystem::temp_directory_path() / "diskFilesTest";
    std::filesystem::create_directory(folder);
    const std::string path = (folder / "ファイル.bin").string();
    const std::unique_ptr<Files> disk = makeFiles();
    Files& files = *disk;
    EXPECT_FALSE(files.exists(path));
    files.appendLine(path, "0123456789");
    const auto file = files.openBinary(path, FileAccess::write);
    file->write(2, std::array<std::uint8_t, 3>{'a', 'b', 'c'});
    file->close();
    EXPECT_EQ(files.readAll(path), "01abc56789\n");
    EXPECT_EQ(files.length(path), 11);
    std::array<std::uint8_t, 4> bytes{};
    const auto full = files.openBinary("/dev/full", FileAccess::write);
    struct Row {
        std::function<void()> action;
        int number;
        const char* cause;
    };
    const Row rows[] = {
        {[&] { files.length(path + "x"); }, failureNumber::fileNotFound, "No such file or directory"},
        {[&] { files.length(folder.string()); }, failureNumber::fileRefused, "Is a directory"},
        {[&] { files.openBinary(path, FileAccess::read)->read(9, bytes); }, failureNumber::fileBroken, "too early"},
        {[&] { full->write(0, bytes); }, failureNumber::fileBroken, "No space left on device"},
    };
    for (const Row& row : rows) {
        const Failure failure = failureIn(row.action);
        EXPECT_EQ(failure.number(), row.number) << row.cause;
        EXPECT_TRUE(failure.description().starts_with('/')) << failure.description();
        EXPECT_NE(failure.description().find(row.cause), std::string::npos) << failure.description();
    }
    std::filesystem::remove_all(folder);
}

} // namespace
