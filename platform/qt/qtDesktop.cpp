#include "platform/qt/qtDesktop.h"

#include "base/version.h"
#include "platform/clock.h"
#include "platform/profile.h"
#include "platform/qt/drawing.h"
#include "platform/qt/fileDialogs.h"
#include "platform/qt/messageBox.h"
#include "platform/qt/text.h"
#include "platform/system.h"

#include <QDateTime>
#include <QScreen>
#include <QStyleFactory>
#include <QThread>
#if QT_CONFIG(settings) // Qt can be built without it
#include <QSettings>
#endif

#include <algorithm>
#include <chrono>
#include <clocale>

namespace platform {

namespace {

// The program has no command line: the toolkit gets only the name, which is also the class of the windows.
char programName[] = "TarnBeacon";
char* argv[] = {programName, nullptr};
int argc = 1;

// Path of the device of a COM port: from Setting.INI, else the default of the system.
std::string portDevice(Files& files, const std::string& iniPath, int number) {
    const std::string key = "COM" + std::to_string(number);
    const std::string device = cleanedValue(getPrivateProfileString(files, "DEVICE", key, iniPath));
    return device.empty() ? defaultDevice(number) : device;
}

} // namespace

QtDesktop::QtDesktop()
    : application_(argc, argv), files_(makeFiles()),
      port_(makeLineDevice(),
            [this](int number) { return portDevice(*files_, programDirectory() + "Setting.INI", number); }),
      timers_([this](const Handler& tick) { deliver(tick); }) {
    // Numbers and causes of failures are the same in every locale.
    std::setlocale(LC_NUMERIC, "C");
    setEnglishErrors();
    QCoreApplication::setApplicationName(program::name);
    QCoreApplication::setApplicationVersion(QString("%1.%2").arg(program::major).arg(program::minor));
    QGuiApplication::setDesktopFileName("tarnbeacon"); // for desktops that do not take the icon from the window
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QFont::insertSubstitutions("ＭＳ Ｐゴシック", {"IPAPGothic", "VL PGothic", "Noto Sans CJK JP"});
    QApplication::setStyle(QStyleFactory::create("Fusion")); // the layout of the controls fits its widgets
#if QT_CONFIG(settings)
    // The toolkit's file dialog stores settings; this program must not write any.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
#endif
    watchPort();
}

// While a program holds the old device, the system gives an adapter that is plugged in again another name.
void QtDesktop::watchPort() {
    constexpr std::chrono::milliseconds interval{500}; // shorter than it takes to plug an adapter in again
    QObject::connect(&portCheck_, &QTimer::timeout, [this] { port_.checkDevice(); });
    portCheck_.start(interval);
}

QtDesktop::~QtDesktop() {
    for (const auto& [form, window] : windows_) {
        delete window;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // before the toolkit ends
}

void QtDesktop::run() {
    sync();
    QApplication::exec();
}

std::int64_t QtDesktop::timeGetTime() {
    return clockMicros() / 1000;
}

std::string QtDesktop::dateAndTime() {
    return toUtf8(QDateTime::currentDateTime().toString("yyyy/MM/dd HH:mm:ss"));
}

void QtDesktop::sleep(int milliseconds) {
    sync();
    paintChanges();
    QThread::msleep(static_cast<unsigned long>(std::max(milliseconds, 0)));
}

void QtDesktop::waitForBytes(std::int64_t until) {
    sync();
    paintChanges();
    port_.waitForInput(fromMilliseconds(until));
}

void QtDesktop::doEvents() {
    constexpr int longest = 20; // ms, even if events keep coming
    do {
        sync();
        QCoreApplication::processEvents(QEventLoop::AllEvents, longest);
    } while (windowMappingPending());
    paintChanges();
    eventsAt_ = clockMicros();
}

// Waits on the port first, because the toolkit's dispatch takes much longer to report a byte. Window events are delayed by
// 20 ms at most, also while bytes keep coming.
void QtDesktop::waitForEvents(std::int64_t until) {
    constexpr Micros longest = 20'000;
    timers_.readSettings();
    const Micros events = eventsAt_ + longest;
    if (clockMicros() >= events || !port_.waitForInput(std::min({fromMilliseconds(until), timers_.due(), events}))) {
        sync();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        timers_.tickDue();
        eventsAt_ = clockMicros();
    }
}

int QtDesktop::msgBox(const std::string& text, int style, const std::string& title) {
    sync();
    return showMessageBox(text, style, title);
}

void QtDesktop::showOpen(FileDialog& dialog) {
    sync();
    showFileDialog(dialog, FileDialogKind::open);
}

void QtDesktop::showSave(FileDialog& dialog) {
    sync();
    showFileDialog(dialog, FileDialogKind::save);
}

void QtDesktop::load(Form& form) {
    windows_[&form] = new FormWindow(form, [this](const Handler& handler) { deliver(handler); });
    timers_.add(form);
}

void QtDesktop::show(Form& form) {
    form.visible = true;
    sync();
}

void QtDesktop::hide(Form& form) {
    form.visible = false;
    sync();
}

void QtDesktop::unload(Form& form) {
    const auto window = windows_.find(&form);
    if (window == windows_.end()) {
        return;
    }
    timers_.remove(form);
    window->second->dismiss();
    windows_.erase(window);
    form.visible = false;
}

Size QtDesktop::screenSize() {
    const QSize size = QGuiApplication::primaryScreen()->size();
    return {size.width() * twipsPerPixel, size.height() * twipsPerPixel};
}

std::string QtDesktop::programDirectory() {
    return toUtf8(QCoreApplication::applicationDirPath()) + '/';
}

void QtDesktop::keepAwake(bool on) {
    platform::keepAwake(on);
}

bool QtDesktop::previousInstance() {
    return !takeInstanceLock();
}

void QtDesktop::endProgram() {
    port_.releaseDevice();
    stopProcess();
}

// Applies what the program has changed since the last call to windows and timers.
void QtDesktop::sync() {
    for (const auto& [form, window] : windows_) {
        window->sync();
    }
    timers_.readSettings();
    timers_.arm();
}

void QtDesktop::paintChanges() {
    for (const auto& [form, window] : windows_) {
        window->paintChanges();
    }
}

bool QtDesktop::windowMappingPending() const {
    return std::ranges::any_of(windows_, [](const auto& entry) { return entry.second->mappingPending(); });
}

void QtDesktop::deliver(const Handler& handler) {
    try {
        handler();
    } catch (const std::exception& failure) {
        endUnhandled(failure.what());
    }
    sync();
}

// A failure that no handler caught must not pass through the toolkit, and the state of the program is unknown after it.
void QtDesktop::endUnhandled(const std::string& description) {
    msgBox(description, boxStyle::critical, program::name);
    endProgram();
}

} // namespace platform
