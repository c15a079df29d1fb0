#include "gallery/scenes.h"

#include "app/program.h"
#include "base/failure.h"
#include "platform/qt/text.h"
#include "simulator/sampleImage.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "ui/forms.h"
#include "ui/resourceSetting.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryFile>
#include <QTimer>

#include <deque>
#include <utility>

namespace gallery {

namespace {

namespace boxStyle = platform::boxStyle;

// Parameters of one run through the scenes.
struct Run {
    platform::QtHost& host;
    UnitLine& line;
    Language language;
    const Visitor& visitor;

    simulator::UnitOptions& unit() const { return line.unit->options(); }
};

QWidget& windowOf(const platform::Form& form) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->objectName() == platform::fromUtf8(form.name)) {
            return *window;
        }
    }
    throw Failure(failureNumber::objectNotSet, "There is no window " + form.name + ".");
}

void visit(const Run& run, const std::string& scene, const platform::Form& form) {
    run.host.doEvents();
    run.visitor(scene, windowOf(form));
}

// Calls the visitor as soon as the next dialog is open, then closes it: a box by OK, a file dialog with the file if there
// is one. The other scenes are those of the dialogs that follow.
void visitDialogs(const Run& run, std::deque<std::string> scenes, const QString& file = {}) {
    QTimer::singleShot(0, [run, scenes = std::move(scenes), file]() mutable {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog != nullptr) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            if (files != nullptr) {
                files->setDirectory(QDir::current());
            }
            run.visitor(scenes.front(), *dialog);
            scenes.pop_front();
            if (files == nullptr) {
                qobject_cast<QMessageBox*>(dialog)->defaultButton()->click();
            } else {
                files->findChild<QLineEdit*>()->setText(file);
                auto* any = static_cast<QDialog*>(files);
                file.isEmpty() ? any->reject() : any->accept();
            }
        }
        if (!scenes.empty()) {
            visitDialogs(run, std::move(scenes), file);
        }
    });
}

// The operator chooses the language. The delivered screen hides these buttons, and each start selects English.
void selectLanguage(const Run& run) {
    FrmMain& form = frmMain();
    form.optLanguage[0].value = run.language == Language::japanese ? 1 : 0;
    form.optLanguage[1].value = 1 - form.optLanguage[0].value;
    form.optLanguage[0].click();
    ResourceSetting::subSetFormText(frmStartUp().name);
}

void selectRow(int row) {
    FrmMain& form = frmMain();
    form.optPresent[row].value = 1;
    form.optPresent[1 - row].value = 0;
    form.optPresent[row].click();
}

void showStartUp(const Run& run) {
    run.unit().replies = {{"0501", 0, {.resultCode = "1004"}}};
    run.line.moment = [&] {
        selectLanguage(run);
        visit(run, "start-up", frmStartUp());
        return true;
    };
    visitDialogs(run, {"box-port-setup"});
    program::start();
    FrmStartUp& form = frmStartUp();
    visit(run, "port-choice", form);
    form.cmbCom.listIndex = 4; // COM5
    visitDialogs(run, {"box-port-not-effective"});
    form.cmdTest.click();
    run.unit().replies.clear();
    form.cmdTest.click();
}

void showMain(const Run& run) {
    FrmMain& form = frmMain();
    visit(run, "main-window", form);
    const Bytes image = simulator::makeSampleImage({.rawVersion = 11123});
    QTemporaryFile file(QDir::tempPath() + "/XXXXXX.bin");
    file.open();
    file.write(reinterpret_cast<const char*>(image.data()), static_cast<qint64>(image.size()));
    file.close();
    visitDialogs(run, {"load-dialog"}, file.fileName());
    form.cmdLoading.click();
    visit(run, "file-loaded", form);
    selectRow(1);
    visit(run, "interface-unit-selected", form);
    visitDialogs(run, {"box-not-adapted"});
    form.cmdUpgrade.click();
    selectRow(0);
    form.LabelWriteProtect.visible = true; // the program never shows it
    visit(run, "write-protected", form);
    form.LabelWriteProtect.visible = false;
    visitDialogs(run, {"save-dialog"});
    form.cmdPresent.click();
}

// Upgrades until the boxes have told how it ended.
void upgrade(const Run& run, const std::deque<std::string>& boxes) {
    visitDialogs(run, boxes);
    frmMain().cmdUpgrade.click();
    while (!frmMain().enabled) {
        run.host.waitForEvents(run.host.timeGetTime() + 100);
    }
}

void showTransfer(const Run& run) {
    run.unit().replies = {{"0101", 0, {.resultCode = "1004"}}, {"300550", 0, {.resultCode = "1234"}}};
    run.line.moment = [&] {
        visit(run, "main-window-disabled", frmMain());
        return true;
    };
    upgrade(run, {"box-question", "box-cancel-ends", "box-failed"});
    run.unit().replies.clear();
    run.line.moment = [&] {
        constexpr int blocks = 653; // 34 %
        if (run.line.unit->journal().blocksAccepted < blocks) {
            return false;
        }
        run.host.sleep(20); // the bar is drawn that often at most
        FrmWait& form = frmWait();
        visit(run, "progress", form);
        // A read takes minutes on the clock: it would look like this.
        form.cmdCancel.enabled = true;
        visit(run, "save", form);
        form.lblMsg.caption = selectedText(textId::verificationRuns);
        visit(run, "verification", form);
        return true;
    };
    upgrade(run, {"box-end"});
}

// The program ends after the first; the second holds a path of the operator's computer.
void showOtherBoxes(const Run& run) {
    const bool japanese = run.language == Language::japanese;
    visitDialogs(run, {"box-sensors"});
    fncMsgBox(textId::notOnlyOneSensor, boxStyle::question + (japanese ? boxStyle::ok : boxStyle::okCancel));
    visitDialogs(run, {"box-error"});
    fncMsgBox(textId::applicationError, boxStyle::critical,
              "/home/operator/firmware/2026-November/amplifier-with-a-rather-long-name-1.123.bin: Input/output error");
}

} // namespace

QPalette darkPalette() {
    QPalette palette;
    const QColor light(240, 240, 240);
    const QColor grey(127, 127, 127);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, light);
        palette.setColor(QPalette::Disabled, role, grey);
    }
    palette.setColor(QPalette::Window, QColor(45, 45, 45));
    palette.setColor(QPalette::Button, QColor(60, 60, 60));
    palette.setColor(QPalette::Base, QColor(30, 30, 30));
    palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
    return palette;
}

void showAll(platform::QtHost& host, UnitLine& line, Language language, const Visitor& visitor) {
    line.unit = std::make_unique<simulator::Unit>(simulator::UnitOptions{.versionText = "V1.200"});
    const Run run{host, line, language, visitor};
    showStartUp(run);
    showMain(run);
    showOtherBoxes(run);
    showTransfer(run);
    host.commPort().close();
    host.unload(frmStartUp());
    host.unload(frmMain());
    resetForms();
}

} // namespace gallery
