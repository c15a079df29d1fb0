// What the operator reads after each choice of the language, and how the program ends.
#include "tests/session.h"
#include "tests/storyFile.h"
#include "texts/messages.h"
#include "ui/resourceSetting.h"

namespace {

// The title, and of each control the number of its picture or its caption, with "(a)" if the font is the English one and
// "pale" if the text is grey.
std::string textOf(const Form& form) {
    std::string line = form.title;
    for (const Control* control : form.controls) {
        std::string part = control->picture == 0 ? "" : '#' + std::to_string(control->picture);
        part += control->caption.empty() ? "" : '|' + control->caption + (control->font.name == "Arial" ? " (a)" : "");
        part += control->textColour == greyText ? " pale" : "";
        line += !part.empty() && line.size() - line.rfind('\n') > 90 ? "\n " : ""; // of the last line
        line += part;
    }
    return line + '\n';
}

TEST(Screen, UsesTheSelectedLanguage) {
    Session session;
    std::string text;
    session.world.host.formChanges = [&](const Form& form, FormChange change) {
        text += form.name + (change == FormChange::shown ? " shown " : change == FormChange::hidden ? " hidden " : " ");
    };
    session.start();
    session.world.host.formChanges = nullptr;
    text += '\n' + textOf(frmStartUp()) + textOf(frmMain());
    for (const std::size_t language : {0U, 1U}) {
        frmMain().optLanguage[language].value = 1;
        frmMain().optLanguage[1 - language].value = 0;
        frmMain().optLanguage[language].click();
        const std::size_t before = session.boxes().size();
        for (const std::int32_t id : {2002, 2003, 2004, 2020, 2021, 2515, 3023, 3031, 3531, 0, 2016, 3999}) {
            text += fncMsgBox(id, 48, "7") == 0 ? "no " : "";
        }
        ResourceSetting::subSetFormText("frmOther");
        text += textOf(frmMain()) + textOf(frmStartUp()); // its texts do not change
        ResourceSetting::subSetFormText("frmStartUp");
        text += textOf(frmStartUp()) + textOf(frmWait()) + shared.binFileFilter + shared.portSetupText + '\n' +
                session.boxes().substr(before);
        unloadFrmWait();
    }
    std::erase(text, '\r');
    expectStory("windows.txt", "Choice of the language", text);
}

TEST(Screen, ReportsTheCurrentFailure) {
    Session session;
    session.start();
    subReportError(); // none
    frmStartUp().cmbBps.listIndex = -1;
    frmStartUp().cmdTest.click(); // has no handler of its own
    const auto report = [] {
        try {
            throw std::runtime_error("whatever");
        } catch (const std::exception&) {
            subReportError(); // an exception other than Failure
        }
    };
    EXPECT_THROW(report(), ProgramEnd);
    EXPECT_EQ(session.boxes(), "Tarn Beacon|Application error.\r\nRES : |16>1\n"
                               "Tarn Beacon|Application error.\r\nRES : Subscript out of range|16>1\n"
                               "Tarn Beacon|Application error.\r\nRES : 予期せぬエラーが発生しました。|16>1\n");
}

} // namespace
