#include "ui/resourceSetting.h"

#include "base/text.h"
#include "state/variables.h"
#include "ui/artNumbers.h"
#include "ui/language.h"
#include "ui/messages.h"
#include "ui/stringTable.h"

#include <array>

using platform::Control;

namespace ResourceSetting {

namespace {

struct CaptionRow {
    Control& control;
    std::int32_t id;
};

void setCaptions(std::initializer_list<CaptionRow> rows, std::int32_t languageOffset) {
    for (const CaptionRow& row : rows) {
        row.control.caption = loadText(row.id + languageOffset);
        row.control.font.name = shared.screenFontName;
    }
}

// Sets the names of the rows for screen readers; on the screen the rows have no captions.
void nameRows(FrmMain& form) {
    struct Row {
        const char* japanese;
        const char* english;
    };
    constexpr std::array names{Row{"アンプ", "Amplifier"}, Row{"インターフェースユニット", "Interface unit"},
                               Row{"ファイル", "File"}};
    for (std::size_t row = 0; row < names.size(); ++row) {
        const std::string name = japaneseSelected() ? names[row].japanese : names[row].english;
        form.lblTitle[row].accessibleName = name + (japaneseSelected() ? " 型式" : " model");
        form.lblVersion[row].accessibleName = name + (japaneseSelected() ? " バージョン" : " version");
        if (row < form.optPresent.size()) {
            form.optPresent[row].accessibleName = name;
        }
    }
}

std::string waitText(const std::string& model, const std::string& version) {
    return japaneseSelected() ? model + " のソフトウェアを ver" + version + " にアップデート中です。"
                              : model + " is under updating to ver" + version + ".";
}

} // namespace

void subSetFormText(std::string_view formName) {
    try {
        const std::int32_t languageOffset = japaneseSelected() ? 0 : englishOffset;
        if (formName == "frmMain") {
            subSetMainText(languageOffset);
        } else if (formName == "frmStartUp") {
            subSetStartUpText(languageOffset);
        } else if (formName == "frmWait") {
            subSetWaitText(languageOffset);
        }
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetMainText(std::int32_t languageOffset) {
    try {
        FrmMain& form = frmMain();
        shared.screenFontName = loadText(textId::fontName + languageOffset);
        shared.binFileFilter = loadText(textId::binFileFilter + languageOffset);
        form.title = loadText(textId::mainTitle);
        setCaptions({{form.lblPresent, textId::presentHeading},
                     {form.lblRewriting, textId::rewritingHeading},
                     {form.cmdLoading, textId::loadFile},
                     {form.cmdPresent, textId::savePresent},
                     {form.cmdUpgrade, textId::startUpgrade},
                     {form.cmdEnd, textId::end}},
                    languageOffset);
        nameRows(form);
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetStartUpText(std::int32_t languageOffset) {
    try {
        FrmStartUp& form = frmStartUp();
        shared.screenFontName = loadText(textId::fontName + languageOffset);
        subLoadMessageTexts();
        setCaptions({{form.lblBPS, textId::speed},
                     {form.lblCom, textId::port},
                     {form.cmdEnd, textId::cancelStart},
                     {form.cmdTest, textId::setPort}},
                    languageOffset);
        form.imgLogo.picture = art::logo;
    } catch (const std::exception&) {
        subReportError();
    }
}

void subSetWaitText(std::int32_t languageOffset) {
    try {
        FrmWait& form = frmWait();
        shared.screenFontName = loadText(textId::fontName + languageOffset);
        subLoadMessageTexts();
        form.title = loadText(textId::waitTitle + languageOffset);
        form.lblMsg.caption = trim(waitText(frmMain().lblTitle[2].caption, frmMain().lblVersion[2].caption));
        form.lblMsg.font.name = shared.screenFontName;
        form.prbComm.accessibleName = japaneseSelected() ? "進行状況" : "Progress";
        setCaptions({{form.cmdCancel, textId::cancelWait}}, languageOffset);
    } catch (const std::exception&) {
        subReportError();
    }
}

void subLoadMessageTexts() {
    try {
        shared.portSetupText = loadText(textId::portSetup + (englishSelected() ? englishOffset : 0));
    } catch (const std::exception&) {
        subReportError();
    }
}

void optLanguage_Click() {
    try {
        frmMain().chkVerify.caption = japaneseSelected() ? "ベリファイ実行" : "Verification";
        subSetFormText("frmMain");
    } catch (const std::exception&) {
        subReportError();
    }
}

} // namespace ResourceSetting
