// Saves a picture of every window in every state, in both languages, in FOLDER/en and FOLDER/ja. QT_SCALE_FACTOR in the
// environment sets the scale. On a display with a window manager a picture includes the frame.
#include "gallery/scenes.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QScreen>
#include <QThread>
#include <QWindow>

#include <cstdio>

namespace {

bool hasFrames() {
    return QGuiApplication::platformName() == "xcb";
}

// Waits for the frame, 10 s at most, and then for the painting and for the list of a file dialog.
void settle(const QWidget& window) {
    const int painting = hasFrames() ? 400 : 60;
    QElapsedTimer timer;
    timer.start();
    while (hasFrames() && window.frameGeometry() == window.geometry() && timer.elapsed() < 10'000) {
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    for (timer.start(); timer.elapsed() < painting; QThread::msleep(10)) {
        QCoreApplication::processEvents();
    }
}

QPixmap pictureOf(QWidget& window) {
    settle(window);
    if (!hasFrames()) {
        return window.grab();
    }
    const QRect area = window.frameGeometry();
    return window.screen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
}

void saveAll(platform::QtHost& host, gallery::UnitLine& line, Language language, const QDir& folder) {
    folder.mkpath(".");
    gallery::showAll(host, line, language, [&](const std::string& scene, QWidget& window) {
        const QString path = folder.filePath(QString::fromStdString(scene) + ".png");
        if (!pictureOf(window).save(path)) {
            std::fprintf(stderr, "%s could not be saved.\n", qPrintable(path));
            std::exit(1);
        }
    });
}

} // namespace

int main(int argc, char** argv) {
    auto line = std::make_unique<gallery::UnitLine>();
    gallery::UnitLine& unit = *line;
    platform::QtHost host(std::move(line));
    platform::setHost(&host);

    QCommandLineParser options;
    options.setApplicationDescription("Saves a picture of every window, in both languages.");
    options.addHelpOption();
    options.addOptions({{"dark", "Use a dark palette."}, {"font", "Size of the desktop's font, in points.", "POINTS"}});
    options.addPositionalArgument("FOLDER", "Where the pictures go.");
    options.process(QStringList(argv, argv + argc));
    const QStringList folders = options.positionalArguments();
    if (folders.size() != 1) {
        options.showHelp(1);
    }
    if (options.isSet("font")) {
        QFont font = QApplication::font();
        font.setPointSizeF(options.value("font").toDouble());
        QApplication::setFont(font);
    }
    if (options.isSet("dark")) {
        QApplication::setPalette(gallery::darkPalette());
    }
    saveAll(host, unit, Language::english, QDir(folders.front() + "/en"));
    saveAll(host, unit, Language::japanese, QDir(folders.front() + "/ja"));
}
