#include "ui/resourceSetting.h"

#include "base/text.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "ui/artNumbers.h"
#include "ui/forms.h"

#include <array>

using platform::Control;

namespace ResourceSetting {

namespace {

struct CaptionRow {
    Control& control;
    std::int32_t id;
};

void setCaptions(std::initializer_list<CaptionRow> rows, std::int32_t offset) {
    for (const CaptionRow& row : rows) {
        row.control.caption = loadText(row.id + offset);
        row.control.font.name = shared.screenFontName;
    }
}

// Sets the names of the rows for screen readers; on the screen the rows have no captions.
void nameRows(FrmMain& form) {
    constexpr std::array names{textId::amplifier, textId::interfaceUnit, textId::file};
    for (std::size_t row = 0; row < names.size(); ++row) {
        const std::string name = selectedText(names[row]);
        form.lblTitle[row].accessibleName = name + selectedText(textId::model);
        form.lblVersion[row].accessibleName = name + selectedText(textId::version);
        if (row < form.optPresent.size()) {
            form.optPresent[row].accessibleName = name;
        }
    }
}

std::string waitText(const std::string& model, const std::string& version) {
    return model + selectedText(textId::updating1) + version + selectedText(textId::updating2);
}

} // namespace

void subSetFormText(std::string_view formName) {
    try {
        const std::int32_t offset = languageOffset();
        if (formName == "frmMain") {
            subSetMainText(offset);
        } else if (formName == "frmStartUp") {
            subSetStartUpText(offset);
        } else if (formName == "frmWait") {
            subSetWaitText(offset);
        }
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetMainText(std::int32_t offset) {
    try {
        FrmMain& form = frmMain();
        shared.screenFontName = loadText(textId::fontName + offset);
        shared.binFileFilter = loadText(textId::binFileFilter + offset);
        form.title = loadText(textId::mainTitle);
        setCaptions({{form.lblPresent, textId::presentHeading},
                     {form.lblRewriting, textId::rewritingHeading},
                     {form.cmdLoading, textId::loadFile},
                     {form.cmdPresent, textId::savePresent},
                     {form.cmdUpgrade, textId::startUpgrade},
                     {form.cmdEnd, textId::end}},
                    offset);
        nameRows(form);
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetStartUpText(std::int32_t offset) {
    try {
        FrmStartUp& form = frmStartUp();
        shared.screenFontName = loadText(textId::fontName + offset);
        subLoadMessageTexts();
        setCaptions({{form.lblBPS, textId::speed},
                     {form.lblCom, textId::port},
                     {form.cmdEnd, textId::cancelStart},
                     {form.cmdTest, textId::setPort}},
                    offset);
        form.imgLogo.picture = art::logo;
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetWaitText(std::int32_t offset) {
    try {
        FrmWait& form = frmWait();
        shared.screenFontName = loadText(textId::fontName + offset);
        subLoadMessageTexts();
        form.title = loadText(textId::waitTitle + offset);
        form.lblMsg.caption = trim(waitText(frmMain().lblTitle[2].caption, frmMain().lblVersion[2].caption));
        form.lblMsg.font.name = shared.screenFontName;
        form.prbComm.accessibleName = selectedText(textId::progress);
        setCaptions({{form.cmdCancel, textId::cancelWait}}, offset);
    } catch (const std::exception&) {
        subReportError();
    }
}

void subLoadMessageTexts() {
    try {
        shared.portSetupText = selectedText(textId::portSetup);
    } catch (const std::exception&) {
        subReportError();
    }
}

void optLanguage_Click() {
    try {
        shared.language = frmMain().optLanguage[0].value == 1 ? Language::japanese : Language::english;
        frmMain().chkVerify.caption = selectedText(textId::verification);
        subSetFormText("frmMain");
    } catch (const std::exception&) {
        subReportError();
    }
}

} // namespace ResourceSetting
