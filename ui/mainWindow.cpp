#include "ui/mainWindow.h"

#include "base/exitCode.h"
#include "base/version.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "ui/forms.h"
#include "ui/resourceSetting.h"

#include <array>
#include <cstdio>

using platform::host;

namespace MainWindow {

namespace {

std::string titleText() {
    std::array<char, 32> version{};
    std::snprintf(version.data(), version.size(), " ver%d.%03d", program::major, program::minor);
    return std::string(program::name) + version.data();
}

void requireTypeFile() {
    if (host().files().exists(host().programDirectory() + "TYPE.INI")) {
        return;
    }
    fncMsgBox(textId::iniFileMissing, platform::boxStyle::critical);
    host().endProgram(exitCode::configurationWrong);
}

} // namespace

void Form_Load() {
    try {
        FrmMain& form = frmMain();
        form.optLanguage[0].value = 0;
        form.optLanguage[1].value = 1;
        optPresent_Click(0);
        ResourceSetting::optLanguage_Click();
        shared.fileLoaded = false;
        form.cmdUpgrade.enabled = shared.fileLoaded;
        shared.stepBusy = false;
        ResourceSetting::subSetFormText(form.name);
        requireTypeFile();
        subSetAllVersion();
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetAllVersion() {
    try {
        FrmMain& form = frmMain();
        form.title = titleText();
        const std::array models{&shared.ampTypeName, &shared.ifuTypeName, &shared.fileTypeName};
        const std::array versions{&shared.ampVersionText, &shared.ifuVersionText, &shared.fileVersionText};
        for (std::size_t row = 0; row < models.size(); ++row) {
            form.lblTitle[row].caption = *models[row];
            form.lblVersion[row].caption = models[row]->empty() ? std::string() : *versions[row];
        }
    } catch (const std::exception&) {
        subReportError();
    }
}

void optPresent_Click(std::int16_t index) {
    try {
        FrmMain& form = frmMain();
        constexpr std::size_t fileRow = 2;
        shared.targetUnit = index == 1 ? 0 : 1;
        for (std::size_t row = 0; row < form.lblTitle.size(); ++row) {
            const bool selected = static_cast<std::int16_t>(row) == index || row == fileRow;
            const platform::Colour colour = selected ? platform::windowText : platform::greyText;
            form.lblTitle[row].textColour = colour;
            form.lblVersion[row].textColour = colour;
        }
    } catch (const std::exception&) {
        subReportError();
    }
}

void cmdEnd_Click() {
    Form_QueryUnload();
}

void Form_QueryUnload() {
    host().endProgram(exitCode::done);
}

} // namespace MainWindow
