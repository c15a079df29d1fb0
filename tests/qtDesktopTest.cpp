// The real desktop, on the toolkit's offscreen screen and a pseudo terminal, keeps the contract of all desktops. What it
// has beyond that, its looks, its keyboard, its terminals and locks, is told in the same way: tests/stories/realDesktop.txt.
#include "platform/system.h"
#include "simulator/program/pseudoTerminal.h"
#include "tests/platformContract.h"
#include "tests/realDesktop.h"
#include "tests/windowText.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <asm/ioctls.h>
#include <csignal>
#include <cstdarg>
#include <ctime>
#include <linux/serial.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// What a pseudo terminal and a disk do not have, and errors that they do not give.
struct {
    bool present = false; // a driver below the terminal
    int answer = 0;
    int flags = 0;
    int error = 0; // of any transfer
    bool exclusive = false;
    bool syncFails = false; // the next time
} driver;

template <class... Arguments>
long transfer(long number, Arguments... arguments) {
    errno = driver.error;
    return driver.error != 0 ? -1 : ::syscall(number, arguments...);
}

} // namespace

// These stand before the system's own.
extern "C" int fsync(int fd) {
    errno = EIO;
    return std::exchange(driver.syncFails, false) ? -1 : static_cast<int>(::syscall(SYS_fsync, fd));
}

extern "C" ssize_t read(int fd, void* buf, std::size_t nbytes) {
    return transfer(SYS_read, fd, buf, nbytes);
}

extern "C" ssize_t write(int fd, const void* buf, std::size_t n) {
    return transfer(SYS_write, fd, buf, n);
}

extern "C" int tcflush(int fd, int queue) noexcept {
    return static_cast<int>(transfer(SYS_ioctl, fd, TCFLSH, queue));
}

extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    driver.exclusive = driver.exclusive || request == TIOCEXCL;
    if (!driver.present || (request != TIOCGSERIAL && request != TIOCSSERIAL)) {
        return static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
    }
    auto* serial = static_cast<serial_struct*>(argument);
    (request == TIOCGSERIAL ? serial->flags : driver.flags) = request == TIOCGSERIAL ? driver.flags : serial->flags;
    return request == TIOCGSERIAL ? 0 : driver.answer;
}

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

// What a command of the shell prints, without line ends.
std::string outputOf(const std::string& command) {
    std::FILE* const pipe = ::popen((command + " 2>/dev/null | tr -d '\\n'").c_str(), "r");
    char text[2000];
    const std::size_t size = std::fread(text, 1, sizeof text, pipe);
    ::pclose(pipe);
    return {text, size};
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
    name.empty() ? dialog->reject() : QTest::keyClick(line, Qt::Key_Return);
}

class RealSurroundings : QObject, public contract::Surroundings {
  public:
    RealSurroundings() : Surroundings(*realDesktop) {
        folder = makeTestFolder().string() + '/';
        unit = folder + "unit";
        end.emplace(unit);
        std::signal(SIGXFSZ, SIG_IGN); // a write that is too long fails
        outputOf("prlimit --nofile=200 --pid $PPID");
        addOperator();
        addWindow();
        addSystem();
        other.onTaskBar = false;
        desk.load(other);
        perform("device " + unit + "\t' the unit");
    }
    ~RealSurroundings() override {
        chatter = {};
        driver = {};
        desk.unload(other);
        std::filesystem::remove_all(folder);
    }

  private:
    template <class Widget = QWidget>
    Widget* find(Text name) const {
        const QWidget* window = windowOf(form);
        auto* found = window == nullptr ? nullptr : window->findChild<Widget*>(QString::fromStdString(name));
        return found != nullptr && found->isVisible() ? found : nullptr;
    }
    void press(Text name, Text by) {
        auto* button = find<QAbstractButton>(name);
        if (button == nullptr) {
            return;
        }
        QWindow* window = button->window()->windowHandle();
        if (by == "mouse") {
            QTest::mouseClick(window, Qt::LeftButton, {}, button->mapTo(button->window(), button->rect().center()));
        } else if (by == "reader") {
            auto* actions = QAccessible::queryAccessibleInterface(button)->actionInterface();
            actions->doAction(actions->actionNames().value(0));
            EXPECT_TRUE(QTest::qWaitFor([=] { return !button->isDown(); })); // it shows a press for a moment
        } else if (button->setFocus(); button->window()->focusWidget() == button) {
            QTest::keyClick(window, Qt::Key_Space);
        }
    }
    // What has arrived there, once they are so many or no more come.
    Bytes take(std::size_t count) {
        Bytes bytes(count);
        std::size_t taken = 0;
        for (int quiet = 0; taken < count && quiet < 50; ++quiet) {
            desk.waitForBytes(desk.timeGetTime() + 1); // and sends
            const std::size_t more = end->read(std::span(bytes).subspan(taken));
            taken += more;
            quiet = more > 0 ? 0 : quiet;
        }
        bytes.resize(taken);
        return bytes;
    }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }

    void addOperator() {
        commands["hand"] = [this](Text by) { hand = by; };
        commands["press"] = [this](Text name) { desk.doEvents(), press(name, hand); };
        // the one above or below
        commands["choose"] = [this](Text entry) {
            find("list")->setFocus(), commands.at("keys")(entry == "0" ? "Up" : "Down");
        };
        commands["keys"] = [this](Text names) {
            for (const QString& name : QString::fromStdString(names).split(' ')) {
                QTest::keyClick(windowOf(form)->windowHandle(), QKeySequence::fromString(name)[0].key());
            }
        };
        commands["request"] = [this](Text) {
            desk.doEvents();
            if (QWidget* window = windowOf(form); window != nullptr && window->windowHandle()->close()) {
                say("closed");
            }
        };
        commands["later"] = [this](Text wait) { QTimer::singleShot(std::stoi(wait), [this] { say("later"); }); };
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
        commands["look"] = [this](Text name) {
            say(textOf(*QAccessible::queryAccessibleInterface(find(name))).toStdString());
        };
        // in the window
        commands["place"] = [this](Text name) {
            const QPoint at = find(name)->mapTo(windowOf(form), QPoint());
            say(at.x()), say(at.y()), say(find(name)->width()), say(find(name)->height());
        };
        // of the window, which does not let itself be stretched
        commands["frame"] = [this](Text) {
            QWidget* window = windowOf(form);
            window->resize(900, 900);
            say(window->x()), say(window->y()), say(window->width()), say(window->height());
        };
        commands["corner"] = [this](Text) { form.centred = false, form.left = 150, form.top = 300; };
        commands["caption"] = [this](Text caption) { form.control("label").caption = caption; };
        commands["turn"] = [this](Text name) { form.control(name).value = form.control(name).value == 0 ? 1 : 0; };
        commands["bar"] = [this](Text value) { form.control("bar").value = std::stod(value); };
        commands["items"] = [this](Text item) {
            form.control("list").items = {"a", item}, form.control("list").listIndex = 1;
        };
        commands["ink"] = [this](Text name) { form.control(name).textColour = rgb(1, 2, 3); };
        commands["ground"] = [this](Text name) { form.control(name).backColour = rgb(0, 0, 128); };
        commands["pointer"] = [this](Text number) { form.mousePointer = static_cast<MousePointer>(std::stoi(number)); };
        commands["cursor"] = [this](Text) { say(windowOf(form)->cursor().shape()); };
        // since the last time
        commands["painted"] = [this](Text name) {
            find(name)->installEventFilter(this);
            say(std::exchange(painted, false) ? "painted" : "still");
        };
        // moves the bar as fast as it goes
        commands["race"] = [this](Text) {
            int shown = 0;
            QObject::connect(find<QProgressBar>("bar"), &QProgressBar::valueChanged, this, [&] { ++shown; });
            const std::int64_t begin = now();
            for (double& value = form.control("bar").value; shown < 5 && now() < begin + 2000; desk.waitForBytes(0)) {
                value = value < 1500 ? value + 10 : 500;
            }
            find("bar")->disconnect(this);
            say(shown == 5 && shown <= (now() - begin) / 16 + 2 ? "calm" : std::to_string(shown));
        };
        // an event that fails
        commands["fatal"] = [this](Text) {
            GTEST_FLAG_SET(death_test_style, "threadsafe"); // the toolkit's threads do not survive a plain fork
            form.control("R&D").click = [] { throw Failure(failureNumber::overflow, "Overflow"); };
            whenShown<QMessageBox>([](QMessageBox* box) { std::fputs(qPrintable(box->text()), stderr), box->close(); });
            EXPECT_EXIT(press("R&D", "mouse"), testing::ExitedWithCode(0), "Overflow");
        };
        commands["showOther"] = [this](Text) { desk.show(other); };
        commands["hideOther"] = [this](Text) { desk.hide(other); };
        // what stands above which window, and the kind of its frame
        commands["above"] = [this](Text) {
            const QWidget* modal = QApplication::activeModalWidget();
            const QWidget* window = modal != nullptr ? modal : windowOf(other);
            const QWindow* parent = window->windowHandle()->transientParent();
            say(parent == nullptr ? "nothing" : parent->title().toStdString());
            say(window->windowFlags() & (Qt::WindowType_Mask | Qt::WindowMinMaxButtonsHint));
        };
        // looks at the next one
        commands["dialog"] = [this](Text) {
            whenShown<QFileDialog>([this](QFileDialog* shown) {
                commands.at("above")("");
                const QStringList told{shown->windowTitle(), shown->nameFilters().join(' '), shown->directory().path(),
                                       shown->findChild<QLineEdit*>()->text()};
                say(std::regex_replace(told.join(' ').toStdString(), std::regex(folder.substr(0, folder.size() - 1)),
                                       "folder"));
                shown->reject();
            });
            dialog.initialDirectory = "/usr";
            desk.showOpen(dialog);
        };
        commands["screen"] = [this](Text) { say(desk.screenSize().width), say(desk.screenSize().height); };
    }

    void addSystem() {
        constexpr int low = ASYNC_LOW_LATENCY;
        commands["give"] = [this](Text text) { end->write(bytes(text)); };
        commands["arrived"] = [this](Text count) { sayBytes(take(std::stoul(count))); };
        commands["unsent"] = [this](Text) { say(take(200'000).size() < 100'000 ? "dropped" : "sent"); };
        commands["chatter"] = [this](Text) {
            chatter = std::jthread([this](const std::stop_token& stop) {
                for (; !stop.stop_requested(); QThread::msleep(5)) {
                    end->write(Bytes{'x'});
                }
            });
        };
        commands["pull"] = [this](Text) { end.reset(); };
        commands["plug"] = [this](Text) { end.emplace(unit); };
        commands["hold"] = [this](Text) { program->open(unit, {}); };
        commands["free"] = [this](Text) { program->close(); };
        commands["die"] = [this](Text) {
            EXPECT_EXIT((port.open(), std::raise(SIGKILL)), testing::KilledBySignal(SIGKILL), "");
        };
        commands["device"] = [this](Text path) {
            std::ofstream(desk.programDirectory() + "Setting.INI")
                << "[DEVICE]\nCOM3=" << path << "\nCOM4=/nowhere/tty\n";
        };
        commands["usual"] = [this](Text number) { say(usualDevice(std::stoi(number)) + '.'); };
        commands["sh"] = [this](Text command) { say(outputOf("cd " + folder + " && " + command)); };
        commands["exclusive"] = [this](Text) { say(driver.exclusive ? "exclusive" : "shared"); };
        // whether it takes the wish for low latency, and has it already
        commands["driver"] = [](Text text) {
            driver = {.present = true, .answer = std::stoi(text), .flags = text.ends_with("low") ? low : 0};
        };
        commands["latency"] = [this](Text) { say(driver.flags == low ? "low" : std::to_string(driver.flags)); };
        commands["error"] = [](Text number) { driver.error = std::stoi(number); };
        commands["break"] = [](Text) { driver.syncFails = true; };
        commands["room"] = [](Text most) { outputOf("prlimit --pid $PPID --fsize=" + most + ':'); };
        commands["idle"] = [this](Text) {
            const std::clock_t used = std::clock();
            desk.waitForBytes(desk.timeGetTime() + 50);
            say(std::clock() - used < CLOCKS_PER_SEC / 100 ? "asleep" : "busy");
        };
    }

    std::string hand = "mouse";
    std::string unit;
    std::optional<simulator::PseudoTerminal> end;
    std::jthread chatter;
    std::unique_ptr<LineDevice> program = makeLineDevice(); // another one
    TestForm other{"other"};
    bool painted = false;
};

TEST(Real, TheSecondInstanceIsTheOneWhileTheFirstLives) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (::getenv("OWN_FOLDER") == nullptr) { // the other process starts this test anew, in the same folder
        ::setenv("OWN_FOLDER", makeTestFolder().c_str(), 1);
    }
    ::setenv("XDG_RUNTIME_DIR", ::getenv("OWN_FOLDER"), 1);
    EXPECT_EXIT(::_exit(becomeOnlyInstance() ? 0 : 1), testing::ExitedWithCode(0), "");
    const bool free = becomeOnlyInstance();
    EXPECT_EXIT(::_exit(becomeOnlyInstance() ? 1 : 0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(free);
    std::filesystem::remove_all(::getenv("OWN_FOLDER"));
}

TEST(Real, TheSleepLockIsAChildsAndEndsWithItsInput) {
    const std::string folder = makeTestFolder();
    std::ofstream(folder + "/systemd-inhibit") << "cd " << folder << "\necho $1 >>held\n"
                                               << "[ $1 = --what=idle ] || exit 1\nread -r line\nmv held over\n";
    ::chmod((folder + "/systemd-inhibit").c_str(), 0700);
    ::setenv("PATH", (folder + ':' + ::getenv("PATH")).c_str(), 1);
    for (const bool on : {true, true, false}) { // once
        realDesktop->keepAwake(on);
        const std::string file = folder + (on ? "/held" : "/over");
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return outputOf("cat " + file) == "--what=sleep:idle:handle-lid-switch--what=idle"; }, 2000));
    }
    std::filesystem::remove_all(folder);
}

} // namespace

namespace contract {

std::unique_ptr<Surroundings> makeSurroundings() {
    return std::make_unique<RealSurroundings>();
}

INSTANTIATE_TEST_SUITE_P(Real, PlatformContract, testing::ValuesIn(sectionsOf("realDesktop.txt")), testName);

} // namespace contract
