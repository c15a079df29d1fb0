// What the windows hold: places, fonts, texts in both languages, the boxes.
#include "base/text.h"
#include "tests/session.h"
#include "ui/messages.h"
#include "ui/resourceSetting.h"
#include "ui/stringTable.h"

#include <algorithm>

namespace {

const Control& find(const Form& form, const std::string& name, int index) {
    const auto found = std::ranges::find_if(
        form.controls, [&](const Control* control) { return control->name == name && control->index == index; });
    EXPECT_NE(found, form.controls.end()) << name << index;
    return **found;
}

std::string size(const Form& form) {
    return std::to_string(form.clientArea.width) + " x " + std::to_string(form.clientArea.height);
}

TEST(StoredScreen, HoldsEveryControlAtItsPlace) {
    struct Row {
        const char* name;
        int index;
        Place place;
        bool visible;
        int tab;
    };
    const Row main[] = {
        {"lblPresent", -1, {240, 120, 3255, 255}, true, -1},
        {"optPresent", 0, {360, 480, 255, 255}, true, 0},
        {"lblTitle", 0, {720, 480, 1335, 255}, true, -1},
        {"lblVersion", 0, {2040, 480, 1455, 255}, true, -1},
        {"optPresent", 1, {360, 720, 255, 255}, true, 1},
        {"lblTitle", 1, {720, 720, 1335, 255}, true, -1},
        {"lblVersion", 1, {2040, 720, 1455, 255}, true, -1},
        {"lblRewriting", -1, {240, 1200, 3255, 255}, true, -1},
        {"lblTitle", 2, {720, 1560, 1335, 255}, true, -1},
        {"lblVersion", 2, {2040, 1560, 1455, 255}, true, -1},
        {"cmdLoading", -1, {2400, 1920, 1095, 315}, true, 3},
        {"Line1", -1, {0, 2520, 5400, 0}, true, -1},
        {"cmdUpgrade", -1, {600, 2640, 1335, 315}, true, 5},
        {"cmdEnd", -1, {2160, 2640, 1335, 315}, true, 6},
        {"cmdPresent", -1, {0, 2640, 75, 315}, false, 4},
        {"chkVerify", -1, {360, 2160, 1935, 255}, false, 2},
        {"fraLanguage", -1, {120, 960, 15, 735}, false, 7},
        {"optLanguage", 0, {120, 180, 1095, 180}, true, 8},
        {"optLanguage", 1, {120, 480, 1095, 180}, true, 9},
        {"LabelWriteProtect", -1, {3480, 120, 1935, 255}, false, -1},
        {"Line2", -1, {3720, 0, 0, 2520}, false, -1},
    };
    const FrmMain form;
    EXPECT_EQ(form.controls.size(), std::size(main));
    EXPECT_EQ(size(form), "5475 x 3300");
    for (const Row& row : main) {
        const Control& control = find(form, row.name, row.index);
        EXPECT_EQ(control.place, row.place) << row.name;
        EXPECT_EQ(control.visible, row.visible) << row.name;
        EXPECT_EQ(control.tabIndex, row.tab) << row.name;
    }
    EXPECT_EQ(form.optLanguage[0].value, 1);
    const FrmWait wait;
    EXPECT_EQ(size(wait), "5220 x 1755");
    EXPECT_EQ(wait.lblMsg.place, (Place{360, 240, 4575, 255}));
    EXPECT_EQ(wait.prbComm.place, (Place{240, 720, 4695, 495}));
    EXPECT_EQ(wait.cmdCancel.place, (Place{3720, 1320, 1095, 315}));
    EXPECT_FALSE(wait.cmdCancel.visible);
    EXPECT_FALSE(wait.onTaskBar);
    EXPECT_EQ(size(FrmStartUp()), "4800 x 855");
}

// The title and what the controls show, in their order.
std::string captions(const Form& form) {
    std::string line = form.title;
    for (const Control* control : form.controls) {
        line += control->caption.empty() ? "" : '|' + control->caption;
    }
    return line;
}

class Screen : public testing::Test {
  protected:
    Screen() { session.start(); }

    void selectLanguage(int index) {
        FrmMain& form = frmMain();
        form.optLanguage[static_cast<std::size_t>(index)].value = 1;
        form.optLanguage[static_cast<std::size_t>(1 - index)].value = 0;
        form.optLanguage[static_cast<std::size_t>(index)].click();
    }
    // Text and title of the box that an id raises.
    std::string boxOf(std::int32_t id, int style, const std::string& msg1 = {}) {
        EXPECT_EQ(fncMsgBox(id, style, msg1), 1);
        const Box& box = session.world.desktop.boxes().back();
        EXPECT_EQ(box.style, style);
        EXPECT_EQ(box.title, "Tarn Beacon");
        return box.text;
    }

    Session session;
};

TEST_F(Screen, SpeaksBothLanguages) {
    const std::string startUp = "|COM SPEED|COM PORT|Set|Cancel|Tarn Beacon";
    EXPECT_EQ(captions(frmMain()), "TarnBeacon ver1.003|The present firmware|QT-MVR|1.022|QT-KP42|2.301|"
                                   "The rewriteing firmware|Verification|Loading file|Save the present firmware|"
                                   "Start upgrade|End|Language|Japanese|English");
    EXPECT_EQ(captions(frmStartUp()), startUp);
    EXPECT_EQ(frmMain().lblPresent.font, (Font{"Arial", 11.25, false, true}));
    EXPECT_EQ(frmMain().lblTitle[0].font, (Font{"ＭＳ Ｐゴシック", 9.75, false, false}));
    EXPECT_EQ(frmMain().chkVerify.font.name, "Arial");
    EXPECT_EQ(frmStartUp().lblCom.font, (Font{"Arial", 9.75, true, false}));
    EXPECT_EQ(shared.binFileFilter, "Bin File (*.bin)|*.bin||");

    selectLanguage(0);
    EXPECT_EQ(captions(frmMain()), "Tarn Beacon|現ソフト|QT-MVR|1.022|QT-KP42|2.301|書換ソフト|ベリファイ実行|読込|"
                                   "現在のソフトを保存|書込開始|終了|Language|Japanese|English");
    EXPECT_EQ(frmMain().lblPresent.font, (Font{"ＭＳ Ｐゴシック", 11.25, false, true}));
    EXPECT_EQ(shared.binFileFilter, "Binファイル (*.bin)|*.bin||");
    EXPECT_EQ(captions(frmStartUp()), startUp); // keeps its texts
    ResourceSetting::subSetFormText("frmStartUp");
    EXPECT_EQ(captions(frmStartUp()), "|通信速度|COMポート|設定|終了|Tarn Beacon");
    ResourceSetting::subSetFormText("frmOther");
    EXPECT_EQ(captions(frmWait()), "ターンビーコン|のソフトウェアを ver にアップデート中です。|キャンセル");
    unloadFrmWait();

    selectLanguage(1);
    EXPECT_EQ(frmMain().title, "Tarn Beacon"); // until the versions are shown again
    EXPECT_EQ(captions(frmWait()), "Tarn Beacon|is under updating to ver.|Cancel");
}

TEST_F(Screen, ComposesTheBoxes) {
    struct Row {
        std::int32_t id;
        const char* msg1;
        const char* english;
        const char* japanese;
    };
    const char* notAdapted =
        "Since the loaded file is not adapted to the connected unit, firmware upgrade cannot be performed.";
    const char* notEffective = "現在の通信ポート(COM7)は有効ではありません";
    const Row rows[] = {
        {2002, "a", "aIt is a receiving timeout error.", "a受信タイムアウトエラーです。"},
        {2003, "", "\r\nApplication is shut down by [cancel].\r\n",
         "\r\n[キャンセル]でアプリケーションを終了します。\r\n"},
        {2004, "0000", "Application error.\r\nRES : 0000", "アプリケーションで異常が発生しました。\r\nRES : 0000"},
        {3031, "7", notEffective, notEffective},
        {3531, "7", notEffective, notEffective},
        {2513, "x", notAdapted, notAdapted},
        {2014, "",
         "I could not check that it communicate with a sensor normally. May I continue work ? \r\n( I recommend you to "
         "choose \"cancellation\" and perform again)",
         "センサと正常に通信できることを確認できませんでした。続行してよろしいですか？\r\n（「キャンセル」し、再度実行"
         "することをお勧めします）"},
        {3023, "", "This application is already started.", "既にこのアプリケーションは起動されています。"},
    };
    for (const Row& row : rows) {
        selectLanguage(1);
        EXPECT_EQ(boxOf(row.id, 16, row.msg1), row.english);
        selectLanguage(0);
        EXPECT_EQ(boxOf(row.id, 48, row.msg1), row.japanese);
    }
    for (const std::int32_t id : {0, 102, 1005, 2001, 2016, 3030, 3999, 12345}) {
        EXPECT_EQ(fncMsgBox(id, 16), 0);
        const Box& box = session.world.desktop.boxes().back();
        EXPECT_EQ(box.title, "fncMsgBox関数のエラー");
        EXPECT_EQ(box.style, 0);
        EXPECT_TRUE(box.text.starts_with("番号 : 326\r\n内容 : ")) << box.text;
    }
}

TEST_F(Screen, EndsBehindAFailureThatNothingHereRaises) {
    const auto report = [](const std::exception& failure) {
        try {
            throw failure;
        } catch (const std::exception&) {
            subReportError();
        }
    };
    subReportError(); // nothing in flight
    EXPECT_EQ(session.world.desktop.boxes().back().text, "Application error.\r\nRES : ");
    EXPECT_THROW(report(std::runtime_error("whatever")), ProgramEnd);
    EXPECT_EQ(session.world.desktop.boxes().back().text, "Application error.\r\nRES : 予期せぬエラーが発生しました。");
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
    EXPECT_EQ(colours(), "bgbbgb1");
    session.press("optPresent", 1);
    EXPECT_EQ(colours(), "gbbgbb0");
    session.press("optPresent", 0);
    EXPECT_EQ(colours(), "bgbbgb1");
}

TEST_F(Screen, EndsByButtonAndByCloseRequest) {
    EXPECT_EQ(session.press("cmdEnd"), RunEnd::programEnded);
    EXPECT_TRUE(session.world.port.isOpen()); // the stop closes nothing
    Session other;
    other.start();
    EXPECT_EQ(other.world.desktop.run([&] { other.world.person.perform(closing("frmMain")); }), RunEnd::programEnded);
}

} // namespace
