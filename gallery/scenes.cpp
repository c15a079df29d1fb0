#include "gallery/scenes.h"

#include "base/failure.h"
#include "platform/qt/text.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"
#include "ui/resourceSetting.h"

#include <QDialog>
#include <QDir>
#include <QTimer>

namespace gallery {

namespace {

namespace boxStyle = platform::boxStyle;

// Parameters of one run through the scenes.
struct Run {
    platform::QtHost& host;
    Language language;
    const Visitor& visitor;

    bool inJapanese() const { return language == Language::japanese; }
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

// Calls the visitor as soon as the next dialog is open, then closes the dialog.
void visitDialog(const Run& run, const std::string& scene) {
    QTimer::singleShot(0, [run, scene] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) { // not open yet
            visitDialog(run, scene);
            return;
        }
        run.visitor(scene, *dialog);
        dialog->reject();
    });
}

void loadForms(const Run& run) {
    resetForms();
    shared = SharedVariables();
    const auto nothing = [](auto& form) { form.load = [] {}; };
    setFormBinders(
        {nothing, nothing, [](FrmWait& form) { form.load = [] { ResourceSetting::subSetFormText("frmWait"); }; }});
    FrmMain& form = frmMain();
    form.optLanguage[0].value = run.inJapanese() ? 1 : 0;
    form.optLanguage[1].value = run.inJapanese() ? 0 : 1;
    ResourceSetting::optLanguage_Click();
    form.chkVerify.font.name = shared.screenFontName;
    MainWindow::optPresent_Click(0);
}

void unloadForms(const Run& run) {
    unloadFrmWait();
    run.host.unload(frmStartUp());
    run.host.unload(frmMain());
    resetForms();
}

void showStartUp(const Run& run) {
    FrmStartUp& form = frmStartUp();
    form.centred = true;
    ResourceSetting::subSetFormText(form.name);
    form.cmbBps.items = {"38400 bps"};
    for (int number = 1; number <= 16; ++number) {
        form.cmbCom.items.push_back("COM" + std::to_string(number));
    }
    form.cmbBps.listIndex = form.cmbCom.listIndex = 0;
    const auto portChoice = {&form.shpComm, &form.lblCom, &form.cmbCom, &form.cmdTest, &form.cmdEnd};
    for (platform::Control* control : {&form.lblBPS, &form.cmbBps}) {
        control->visible = false;
    }
    for (platform::Control* control : portChoice) {
        control->visible = false;
    }
    run.host.show(form);
    visit(run, "start-up", form);
    for (platform::Control* control : portChoice) {
        control->visible = true;
    }
    visit(run, "port-choice", form);
    run.host.hide(form);
}

void showMain(const Run& run) {
    FrmMain& form = frmMain();
    shared.ampTypeName = "QT-MVR";
    shared.ampVersionText = "1.022";
    shared.ifuTypeName = "QT-KP42";
    shared.ifuVersionText = "1.200";
    form.cmdUpgrade.enabled = false;
    MainWindow::subSetAllVersion();
    run.host.show(form);
    visit(run, "main-window", form);

    shared.fileTypeName = "QT-MVR";
    shared.fileVersionText = "1.123";
    form.cmdUpgrade.enabled = true;
    MainWindow::subSetAllVersion();
    visit(run, "file-loaded", form);

    form.optPresent[0].value = 0;
    form.optPresent[1].value = 1;
    MainWindow::optPresent_Click(1);
    visit(run, "interface-unit-selected", form);
    form.optPresent[0].value = 1;
    form.optPresent[1].value = 0;
    MainWindow::optPresent_Click(0);

    form.LabelWriteProtect.visible = true;
    visit(run, "write-protected", form);
    form.LabelWriteProtect.visible = false;
}

void showTransfer(const Run& run) {
    frmMain().enabled = false;
    visit(run, "main-window-disabled", frmMain());
    FrmWait& form = frmWait();
    form.prbComm.max = imageSize;
    form.prbComm.value = 0.34 * imageSize;
    run.host.show(form);
    visit(run, "progress", form);
    form.lblMsg.caption = selectedText(textId::verificationRuns);
    visit(run, "verification", form);
    unloadFrmWait();
    frmMain().enabled = true;
}

void showTableBoxes(const Run& run) {
    struct Row {
        const char* scene;
        std::int32_t id;
        int style;
        const char* msg1;
    };
    const int sensorStyle = boxStyle::question + (run.inJapanese() ? boxStyle::ok : boxStyle::okCancel);
    for (const Row& row : {
             Row{"box-port-not-effective", textId::portNotEffective1, boxStyle::exclamation, "5"},
             Row{"box-sensors", textId::notOnlyOneSensor, sensorStyle, ""},
             Row{"box-not-adapted", textId::fileNotAdapted, boxStyle::ok, ""},
             Row{"box-question", textId::sensorNotChecked, boxStyle::okCancel, ""},
             Row{"box-cancel-ends", textId::shutDownByCancel, boxStyle::critical + boxStyle::okCancel,
                 "通信で異常が発生しました。"},
             Row{"box-error", textId::applicationError, boxStyle::critical,
                 "/home/operator/firmware/2026-November/amplifier-with-a-rather-long-name-1.123.bin: "
                 "Input/output error"},
         }) {
        visitDialog(run, row.scene);
        fncMsgBox(row.id, row.style, row.msg1);
    }
}

void showLiteralBoxes(const Run& run) {
    visitDialog(run, "box-port-setup");
    run.host.msgBox({textId::portSetup, shared.portSetupText, boxStyle::exclamation, messageText::title});
    visitDialog(run, "box-end");
    fncMsgBox(textId::succeed, boxStyle::information + (run.inJapanese() ? boxStyle::ok : boxStyle::okCancel));
    visitDialog(run, "box-failed");
    fncMsgBox(textId::failed, boxStyle::information);
}

void showFileDialogs(const Run& run) {
    platform::FileDialog& dialog = frmMain().cmdSoft;
    dialog.filter = shared.binFileFilter;
    dialog.initialDirectory = platform::toUtf8(QDir::currentPath());
    visitDialog(run, "load-dialog");
    run.host.showOpen(dialog);
    visitDialog(run, "save-dialog");
    run.host.showSave(dialog);
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

void showAll(platform::QtHost& host, Language language, const Visitor& visitor) {
    const Run run{host, language, visitor};
    loadForms(run);
    showStartUp(run);
    showMain(run);
    showTableBoxes(run);
    showLiteralBoxes(run);
    showFileDialogs(run);
    showTransfer(run);
    unloadForms(run);
}

} // namespace gallery
