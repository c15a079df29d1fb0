#include "gallery/scenes.h"

#include "base/failure.h"
#include "platform/qt/text.h"
#include "state/variables.h"
#include "ui/forms.h"
#include "ui/mainWindow.h"
#include "ui/messages.h"
#include "ui/resourceSetting.h"
#include "ui/stringTable.h"

#include <QDialog>
#include <QDir>
#include <QTimer>

namespace gallery {

namespace {

namespace boxStyle = platform::boxStyle;

// Parameters of one run through the scenes.
struct Walk {
    platform::QtDesktop& desktop;
    Language language;
    const Look& look;

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

void lookAt(const Walk& walk, const std::string& scene, const platform::Form& form) {
    walk.desktop.doEvents();
    walk.look(scene, windowOf(form));
}

// Looks at the next dialog as soon as it is open, and closes it.
void lookAtDialog(const Walk& walk, const std::string& scene) {
    QTimer::singleShot(0, [walk, scene] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) { // not open yet
            lookAtDialog(walk, scene);
            return;
        }
        walk.look(scene, *dialog);
        dialog->reject();
    });
}

void loadForms(const Walk& walk) {
    resetForms();
    shared = SharedVariables();
    const auto nothing = [](auto& form) { form.load = [] {}; };
    setFormBinders(
        {nothing, nothing, [](FrmWait& form) { form.load = [] { ResourceSetting::subSetFormText("frmWait"); }; }});
    FrmMain& form = frmMain();
    form.optLanguage[0].value = walk.inJapanese() ? 1 : 0;
    form.optLanguage[1].value = walk.inJapanese() ? 0 : 1;
    ResourceSetting::optLanguage_Click();
    form.chkVerify.font.name = shared.screenFontName;
    MainWindow::optPresent_Click(0);
}

void unloadForms(const Walk& walk) {
    unloadFrmWait();
    walk.desktop.unload(frmStartUp());
    walk.desktop.unload(frmMain());
    resetForms();
}

void showStartUp(const Walk& walk) {
    FrmStartUp& form = frmStartUp();
    form.centred = true;
    ResourceSetting::subSetFormText(form.name);
    form.cmbBps.items = {"38400 bps"};
    form.cmbCom.items = {"COM1", "COM2", "COM3", "COM4"};
    form.cmbBps.listIndex = form.cmbCom.listIndex = 0;
    const auto portChoice = {&form.shpComm, &form.lblCom, &form.cmbCom, &form.cmdTest, &form.cmdEnd};
    for (platform::Control* control : {&form.lblBPS, &form.cmbBps}) {
        control->visible = false;
    }
    for (platform::Control* control : portChoice) {
        control->visible = false;
    }
    walk.desktop.show(form);
    lookAt(walk, "start-up", form);
    for (platform::Control* control : portChoice) {
        control->visible = true;
    }
    lookAt(walk, "port-choice", form);
    walk.desktop.hide(form);
}

void showMain(const Walk& walk) {
    FrmMain& form = frmMain();
    shared.ampTypeName = "QT-MVR";
    shared.ampVersionText = "1.022";
    shared.ifuTypeName = "QT-KP42";
    shared.ifuVersionText = "1.200";
    form.cmdUpgrade.enabled = false;
    MainWindow::subSetAllVersion();
    walk.desktop.show(form);
    lookAt(walk, "main-window", form);

    shared.fileTypeName = "QT-MVR";
    shared.fileVersionText = "1.123";
    form.cmdUpgrade.enabled = true;
    MainWindow::subSetAllVersion();
    lookAt(walk, "file-loaded", form);

    form.optPresent[0].value = 0;
    form.optPresent[1].value = 1;
    MainWindow::optPresent_Click(1);
    lookAt(walk, "interface-unit-selected", form);
    form.optPresent[0].value = 1;
    form.optPresent[1].value = 0;
    MainWindow::optPresent_Click(0);

    form.LabelWriteProtect.visible = true;
    lookAt(walk, "write-protected", form);
    form.LabelWriteProtect.visible = false;
}

void showTransfer(const Walk& walk) {
    frmMain().enabled = false;
    lookAt(walk, "main-window-disabled", frmMain());
    FrmWait& form = frmWait();
    form.prbComm.max = imageSize;
    form.prbComm.value = 0.34 * imageSize;
    walk.desktop.show(form);
    lookAt(walk, "progress", form);
    form.lblMsg.caption = walk.inJapanese() ? "ベリファイ中..." : "Verification...";
    lookAt(walk, "verification", form);
    unloadFrmWait();
    frmMain().enabled = true;
}

void showTableBoxes(const Walk& walk) {
    struct Row {
        const char* scene;
        std::int32_t id;
        int style;
        const char* msg1;
    };
    const int sensorStyle = boxStyle::question + (walk.inJapanese() ? boxStyle::ok : boxStyle::okCancel);
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
        lookAtDialog(walk, row.scene);
        fncMsgBox(row.id, row.style, row.msg1);
    }
}

void showLiteralBoxes(const Walk& walk) {
    lookAtDialog(walk, "box-port-setup");
    walk.desktop.msgBox(shared.portSetupText, boxStyle::exclamation, messageText::title);
    lookAtDialog(walk, "box-end");
    walk.desktop.msgBox(walk.inJapanese() ? messageText::succeedJapanese : messageText::succeed,
                        boxStyle::information + (walk.inJapanese() ? boxStyle::ok : boxStyle::okCancel),
                        messageText::title);
    lookAtDialog(walk, "box-failed");
    walk.desktop.msgBox(walk.inJapanese() ? messageText::failedJapanese : messageText::failed, boxStyle::information,
                        messageText::title);
}

void showFileDialogs(const Walk& walk) {
    platform::FileDialog& dialog = frmMain().cmdSoft;
    dialog.filter = shared.binFileFilter;
    dialog.initialDirectory = platform::toUtf8(QDir::currentPath());
    lookAtDialog(walk, "load-dialog");
    walk.desktop.showOpen(dialog);
    lookAtDialog(walk, "save-dialog");
    walk.desktop.showSave(dialog);
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

void showAll(platform::QtDesktop& desktop, Language language, const Look& look) {
    const Walk walk{desktop, language, look};
    loadForms(walk);
    showStartUp(walk);
    showMain(walk);
    showTableBoxes(walk);
    showLiteralBoxes(walk);
    showFileDialogs(walk);
    showTransfer(walk);
    unloadForms(walk);
}

} // namespace gallery
