#include "platform/qt/qtHost.h"

#include "base/version.h"
#include "platform/qt/drawing.h"
#include "platform/qt/fileDialogs.h"
#include "platform/qt/messageBox.h"
#include "platform/qt/text.h"

#include <QScreen>
#include <QSessionManager>
#include <QStyleFactory>
#include <QThread>
#if QT_CONFIG(settings) // Qt can be built without it
#include <QSettings>
#endif

#include <algorithm>
#include <chrono>
#include <clocale>
#include <utility>

namespace platform {

namespace {

// The program has no command line: the toolkit gets only the name, which is also the class of the windows.
char programName[] = "TarnBeacon";
char* argv[] = {programName, nullptr};
int argc = 1;

} // namespace

QtHost::QtHost(std::unique_ptr<LineDevice> line)
    : SystemHost(std::move(line)), application_(argc, argv), timers_([this](const Handler& tick) { deliver(tick); }) {
    std::setlocale(LC_NUMERIC, "C"); // the toolkit has set the user's
    setEnglishErrors();
    QCoreApplication::setApplicationName(program::name);
    QCoreApplication::setApplicationVersion(QString("%1.%2").arg(program::major).arg(program::minor));
    QGuiApplication::setDesktopFileName("tarnbeacon"); // for desktops that do not take the icon from the window
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // The first is the same font where the system has it under its English name only.
    QFont::insertSubstitutions("ＭＳ Ｐゴシック", {"MS PGothic", "IPAPGothic", "VL PGothic", "Noto Sans CJK JP"});
    QApplication::setStyle(QStyleFactory::create("Fusion")); // the layout of the controls fits its widgets
#if QT_CONFIG(settings)
    // The toolkit's file dialog stores settings; this program must not write any.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
#endif
    allowSlowWindows();
    application_.installNativeEventFilter(this);
    QObject::connect(&application_, &QGuiApplication::commitDataRequest, [this](QSessionManager& session) {
        if (keptAwake_) {
            session.cancel();
        }
    });
    watchSystem();
}

// While a program holds the old device, the system gives an adapter that is plugged in again another name.
void QtHost::watchSystem() {
    constexpr std::chrono::milliseconds interval{500}; // shorter than it takes to plug an adapter in again
    QObject::connect(&systemCheck_, &QTimer::timeout, [this] {
        port().checkDevice();
        endIfRequested();
    });
    systemCheck_.start(interval);
}

void QtHost::endIfRequested() {
    if (!ending_ && terminationRequested()) {
        ending_ = true;
        deliver(endRequested);
    }
}

// The transfer runs in an event of the toolkit, and would stand still while the system runs a loop of its own.
bool QtHost::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    return keptAwake_ && beginsSystemLoop(message);
}

void QtHost::keepAwake(bool on) {
    keptAwake_ = on;
    SystemHost::keepAwake(on);
    holdTermination(on);
}

QtHost::~QtHost() {
    for (const auto& [form, window] : windows_) {
        delete window;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // before the toolkit ends
}

void QtHost::run() {
    sync();
    QApplication::exec();
}

void QtHost::sleep(int milliseconds) {
    sync();
    paintChanges();
    QThread::msleep(static_cast<unsigned long>(std::max(milliseconds, 0)));
}

void QtHost::waitForBytes(std::int64_t until) {
    sync();
    paintChanges();
    port().waitForInput(fromMilliseconds(until));
}

void QtHost::doEvents() {
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
void QtHost::waitForEvents(std::int64_t until) {
    constexpr Micros longest = 20'000;
    timers_.readSettings();
    const Micros events = eventsAt_ + longest;
    if (clockMicros() >= events || !port().waitForInput(std::min({fromMilliseconds(until), timers_.due(), events}))) {
        sync();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        timers_.tickDue();
        eventsAt_ = clockMicros();
    }
}

int QtHost::msgBox(const Message& message) {
    sync();
    return ending_ ? boxAnswer::cancel : showMessageBox(message);
}

void QtHost::showOpen(FileDialog& dialog) {
    sync();
    showFileDialog(dialog, FileDialogKind::open);
}

void QtHost::showSave(FileDialog& dialog) {
    sync();
    showFileDialog(dialog, FileDialogKind::save);
}

void QtHost::load(Form& form) {
    windows_[&form] = new FormWindow(form, [this](const Handler& handler) { deliver(handler); });
    timers_.add(form);
}

void QtHost::show(Form& form) {
    form.visible = true;
    sync();
}

void QtHost::hide(Form& form) {
    form.visible = false;
    sync();
}

void QtHost::unload(Form& form) {
    const auto window = windows_.find(&form);
    if (window == windows_.end()) {
        return;
    }
    timers_.remove(form);
    window->second->dismiss();
    windows_.erase(window);
    form.visible = false;
}

Size QtHost::screenSize() {
    const QSize size = QGuiApplication::primaryScreen()->size();
    return {size.width() * twipsPerPixel, size.height() * twipsPerPixel};
}

// Applies what the program has changed since the last call to windows and timers.
void QtHost::sync() {
    for (const auto& [form, window] : windows_) {
        window->sync();
    }
    timers_.readSettings();
    timers_.arm();
}

void QtHost::paintChanges() {
    for (const auto& [form, window] : windows_) {
        window->paintChanges();
    }
}

bool QtHost::windowMappingPending() const {
    return std::ranges::any_of(windows_, [](const auto& entry) { return entry.second->mappingPending(); });
}

void QtHost::deliver(const Handler& handler) {
    handler();
    sync();
}

} // namespace platform
