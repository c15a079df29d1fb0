// What the operator reads, in either language, and what the main window does by itself.
#include "tests/session.h"
#include "ui/messages.h"
#include "ui/resourceSetting.h"

namespace {

class Screen : public testing::Test {
  protected:
    Screen() { session.start(); }

    static void select(std::size_t language) {
        frmMain().optLanguage[language].value = 1;
        frmMain().optLanguage[1 - language].value = 0;
        frmMain().optLanguage[language].click();
    }
    // The title and what the controls hold, in their order.
    static std::string texts(const Form& form) {
        std::string line = form.title;
        for (const Control* control : form.controls) {
            line += control->caption.empty() ? "" : '|' + control->caption;
        }
        return line;
    }
    const Box& lastBox() const { return session.world.desktop.boxes().back(); }

    Session session;
};

TEST_F(Screen, SpeaksBothLanguages) {
    const std::string startUp = "|COM SPEED|COM PORT|Set|Cancel|Tarn Beacon";
    EXPECT_EQ(texts(frmStartUp()), startUp);
    EXPECT_EQ(texts(frmMain()), "TarnBeacon ver1.003|The present firmware|QT-MVR|1.022|QT-KP42|2.301|"
                                "The rewriteing firmware|Verification|Loading file|Save the present firmware|"
                                "Start upgrade|End|Language|Japanese|English");
    for (const Control* control : frmMain().controls) {
        EXPECT_EQ(control->font.name, control->border ? "ＭＳ Ｐゴシック" : "Arial") << control->name;
    }
    EXPECT_EQ(frmStartUp().imgLogo.picture, 1101);
    select(0);
    EXPECT_EQ(texts(frmMain()), "Tarn Beacon|現ソフト|QT-MVR|1.022|QT-KP42|2.301|書換ソフト|ベリファイ実行|読込|"
                                "現在のソフトを保存|書込開始|終了|Language|Japanese|English");
    EXPECT_EQ(frmMain().lblPresent.font.name, "ＭＳ Ｐゴシック");
    EXPECT_EQ(shared.binFileFilter, "Binファイル (*.bin)|*.bin||");
    EXPECT_EQ(texts(frmStartUp()), startUp); // keeps its texts
    ResourceSetting::subSetFormText("frmOther");
    ResourceSetting::subSetFormText("frmStartUp");
    EXPECT_EQ(texts(frmStartUp()), "|通信速度|COMポート|設定|終了|Tarn Beacon");
    EXPECT_EQ(shared.portSetupText, "通信ポートの設定に誤りがあります。確認して下さい。");
    EXPECT_EQ(texts(frmWait()), "ターンビーコン|のソフトウェアを ver にアップデート中です。|キャンセル");
    EXPECT_EQ(frmWait().lblMsg.font.name + frmWait().cmdCancel.font.name, "ＭＳ ＰゴシックＭＳ Ｐゴシック");
    unloadFrmWait();
    select(1);
    EXPECT_EQ(frmMain().title, "Tarn Beacon"); // until the versions are shown again
    EXPECT_EQ(texts(frmWait()), "Tarn Beacon|is under updating to ver.|Cancel");
}

TEST_F(Screen, ComposesTheBoxes) {
    const std::string notEffective = "現在の通信ポート(COM7)は有効ではありません";
    const std::string tooMany =
        "Since the sensor connected is two or more sets, firmware upgrade cannot be performed. Connect "
        "only one sensor and reboot the application software after resetting sensor power supply.";
    const std::tuple<std::int32_t, const char*, std::string, std::string> rows[] = {
        {2002, "a", "aIt is a receiving timeout error.", "a受信タイムアウトエラーです。"},
        {2003, "", "\r\nApplication is shut down by [cancel].\r\n",
         "\r\n[キャンセル]でアプリケーションを終了します。\r\n"},
        {2004, "1", "Application error.\r\nRES : 1", "アプリケーションで異常が発生しました。\r\nRES : 1"},
        {2020, "", "INI file does not exist.", "INIファイルが存在しません"},
        {2515, "", tooMany, tooMany},
        {3023, "", "This application is already started.", "既にこのアプリケーションは起動されています。"},
        {3031, "7", notEffective, notEffective},
        {3531, "7", notEffective, notEffective},
    };
    for (const std::size_t language : {0U, 1U}) {
        select(language);
        for (const auto& [id, msg1, english, japanese] : rows) {
            EXPECT_EQ(fncMsgBox(id, 48, msg1), 1);
            EXPECT_EQ(lastBox().text, language == 0 ? japanese : english);
            EXPECT_EQ(lastBox().title + std::to_string(lastBox().style), "Tarn Beacon48");
        }
    }
    for (const std::int32_t id : {0, 102, 1005, 2001, 2016, 3030, 3999, 12345}) {
        EXPECT_EQ(fncMsgBox(id, 16), 0);
        EXPECT_EQ(lastBox().title + std::to_string(lastBox().style), "fncMsgBox関数のエラー0");
        EXPECT_TRUE(lastBox().text.starts_with("番号 : 326\r\n内容 : ")) << lastBox().text;
    }
    subReportError(); // nothing in flight
    EXPECT_EQ(lastBox().text, "Application error.\r\nRES : ");
    const auto report = [] {
        try {
            throw std::runtime_error("whatever");
        } catch (const std::exception&) {
            subReportError(); // of a failure that nothing here raises
        }
    };
    EXPECT_THROW(report(), ProgramEnd);
    EXPECT_EQ(lastBox().text, "Application error.\r\nRES : 予期せぬエラーが発生しました。");
}

TEST_F(Screen, SelectsTheRow) {
    // Black or grey: the models, then the versions.
    const auto colours = [] {
        std::string letters;
        for (const auto& labels : {frmMain().lblTitle, frmMain().lblVersion}) {
            for (const Control& label : labels) {
                letters += label.textColour == windowText ? 'b' : label.textColour == greyText ? 'g' : '?';
            }
        }
        return letters + std::to_string(shared.targetUnit);
    };
    for (const char* seen : {"bgbbgb1", "gbbgbb0", "bgbbgb1"}) {
        EXPECT_EQ(colours(), seen);
        session.press("optPresent", shared.targetUnit);
    }
}

TEST_F(Screen, EndsByButtonAndByCloseRequest) {
    EXPECT_EQ(session.press("cmdEnd"), RunEnd::programEnded);
    EXPECT_TRUE(session.world.port.isOpen()); // the stop closes nothing
    Session other;
    other.start();
    EXPECT_EQ(other.world.desktop.run([&] { other.world.person.perform(closing("frmMain")); }), RunEnd::programEnded);
}

} // namespace
