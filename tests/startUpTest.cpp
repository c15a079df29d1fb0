// The way from the start to the main window, and all the ways that do not lead there.
#include "startup/identification.h"
#include "tests/session.h"

namespace {

const std::string timeout = "Tarn Beacon|It is a receiving timeout error.|16>1\n";
const std::string portSetup = "Tarn Beacon|An error is in a setup of a COM port.Please check.|48>1\n";
const std::string missing3 = "Tarn Beacon|現在の通信ポート(COM3)は有効ではありません|16>1\n";
const std::string notEffective3 = "Tarn Beacon|現在の通信ポート(COM3)は有効ではありません|48>1\n";
const std::string held =
    "Tarn Beacon|通信ポートが開けません。通信ポートを使用するアプリケーションを終了して再度起動して"
    "下さい。|16>1\n";
const std::string typeIni = "/tarnbeacon/TYPE.INI";
const std::string settingIni = "/tarnbeacon/Setting.INI";

enum class Screen { main, ports, none };

testing::AssertionResult shows(const Session& session, Screen screen) {
    const bool start = session.world.desktop.form("frmStartUp") != nullptr && frmStartUp().visible;
    const bool main = session.world.desktop.form("frmMain") != nullptr && frmMain().visible;
    const bool buttons = start && frmStartUp().cmdTest.visible && frmStartUp().cmdEnd.visible &&
                         frmStartUp().cmbCom.visible && frmStartUp().lblCom.visible && frmStartUp().shpComm.visible &&
                         !frmStartUp().cmbBps.visible && !frmStartUp().lblBPS.visible;
    const Screen shown = main && !start ? Screen::main : buttons && !main ? Screen::ports : Screen::none;
    return shown == screen && session.world.desktop.violations().empty()
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "start-up " << start << " ports " << buttons << " main " << main;
}

TEST(StartUp, EndsInOneOfItsWays) {
    struct Row {
        const char* what;
        std::function<void(World&)> prepare;
        std::string boxes;
        Screen screen; // none: the program has ended
        Micros lasts = 0;
    };
    const auto answer = [](const char* prefix, const char* code, int occurrence = 0) {
        return [=](World& world) { world.unit.options().answers = {{prefix, occurrence, {.resultCode = code}}}; };
    };
    const auto silent = [](const char* prefix, int occurrence) {
        return [=](World& world) { world.unit.options().answers = {{prefix, occurrence, {.silent = true}}}; };
    };
    const auto unit = [](const char* state, int sensors) {
        return [=](World& world) {
            world.unit.options().stateText = state;
            world.unit.options().sensorCount = sensors;
        };
    };
    const std::string unusual = "Tarn Beacon|Unit connection state is unusual.|16>1\n";
    const std::string tooMany =
        "Tarn Beacon|Since the sensor connected is two or more sets, firmware upgrade cannot be "
        "performed. Connect only one sensor and reboot the application software after resetting "
        "sensor power supply.|33>1\n";
    const Row rows[] = {
        {"a unit", [](World&) {}, "", Screen::main},
        {"no TYPE.INI", [](World& world) { world.files.remove(typeIni); },
         "Tarn Beacon|INI file does not exist.|16>1\n", Screen::none},
        {"a second instance", [](World& world) { world.desktop.otherInstance = true; },
         "Tarn Beacon|This application is already started.|16>1\n", Screen::none},
        {"no TYPE.INI and a second instance",
         [](World& world) {
             world.files.remove(typeIni);
             world.desktop.otherInstance = true;
         },
         "Tarn Beacon|INI file does not exist.|16>1\n", Screen::none},
        {"port missing", [](World& world) { world.port.removeSocket(3); }, missing3 + timeout + portSetup,
         Screen::ports},
        {"port held", [](World& world) { world.port.socket(3).state = Socket::State::held; },
         held + timeout + portSetup, Screen::ports},
        {"silence", [](World& world) { world.unit.options().silentFrom = 0; }, portSetup, Screen::ports, seconds(5)},
        {"2204 at the probe", answer("0501", "2204", 1), "", Screen::none},
        {"1001 at the probe", answer("0501", "1001", 1), portSetup, Screen::ports},
        {"state 1004", answer("0601", "1004"), "", Screen::main},
        {"state 2204", answer("0601", "2204"), "", Screen::none},
        {"state silent", silent("0601", 0), "", Screen::none, seconds(5)},
        {"state 01, one sensor", unit("01", 1), unusual, Screen::none},
        {"state 01, two sensors", unit("01", 2), unusual, Screen::none},
        {"no sensor", unit("00", 0), unusual, Screen::none},
        {"two sensors", unit("00", 2), tooMany, Screen::none},
        {"state 02, one sensor", unit("02", 1), "", Screen::main},
        {"count unreadable",
         [](World& world) {
             world.unit.options().answers = {{"0601", 0, {.data = "00x1"}}};
         },
         "Tarn Beacon|Application error.\r\nRES : 0000|16>1\n", Screen::none},
        {"version 2204", answer("0101D4", "2204"), "", Screen::main},
        {"version 1001", answer("0101D4", "1001"), "", Screen::none},
        {"type 2204", answer("0101D5", "2204"), "", Screen::none},
        {"second 0501 fails", answer("0501", "2204", 2), "", Screen::none},
        {"raw version beyond 32 bits",
         [](World& world) {
             world.unit.options().answers = {{"0101D4", 0, {.data = "0000FFFFFFFF"}}};
         },
         "Tarn Beacon|Application error.\r\nRES : Overflow|16>1\n", Screen::main},
        {"port 17", [](World& world) { world.files.put(settingIni, "[IFU]\nCOM=17\n"); },
         "Tarn Beacon|Application error.\r\nRES : The list of ports has no COM17.|16>1\n", Screen::ports},
        {"port 99999",
         [](World& world) {
             world.files.put(settingIni, "[IFU]\nCOM=99999\n");
             world.port.socket(1).line = &world.line;
         },
         "Tarn Beacon|Application error.\r\nRES : Overflow|16>1\n", Screen::main},
        {"no Setting.INI",
         [](World& world) {
             world.files.remove(settingIni);
             world.port.socket(1).line = &world.line;
         },
         "", Screen::main},
    };
    for (const Row& row : rows) {
        Session session;
        row.prepare(session.world);
        const RunEnd end = session.start();
        EXPECT_EQ(end, row.screen == Screen::none ? RunEnd::programEnded : RunEnd::idle) << row.what;
        EXPECT_EQ(session.boxes(), row.boxes) << row.what;
        if (row.screen != Screen::none) {
            EXPECT_TRUE(shows(session, row.screen)) << row.what;
        }
        EXPECT_GE(session.world.clock.now(), row.lasts) << row.what;
    }
}

TEST(StartUp, OffersThePortsUntilAUnitAnswers) {
    Session session;
    World& world = session.world;
    world.unit.options().silentFrom = 0;
    world.port.socket(5).state = Socket::State::held;
    session.start();
    EXPECT_EQ(frmStartUp().cmbCom.listIndex, 2);
    EXPECT_EQ(frmStartUp().cmbCom.items.size(), 16u);
    EXPECT_EQ(frmStartUp().cmbCom.items[15], "COM16");
    const auto trySet = [&](int port) {
        const std::size_t before = session.boxes().size();
        EXPECT_TRUE(world.person.perform(choose("frmStartUp", "cmbCom", port - 1)));
        const Micros start = world.clock.now();
        world.desktop.run([&] { EXPECT_TRUE(world.person.perform(click("frmStartUp", "cmdTest"))); });
        EXPECT_EQ(run.comPortNumber, frmStartUp().visible ? 3 : port);
        return std::pair(session.boxes().substr(before), (world.clock.now() - start) / seconds(1));
    };
    EXPECT_EQ(trySet(4).first, "Tarn Beacon|現在の通信ポート(COM4)は有効ではありません|16>1\n");
    EXPECT_EQ(trySet(5).first, held);
    EXPECT_EQ(trySet(3), std::pair(notEffective3, std::int64_t{11})); // two tries and the box
    EXPECT_TRUE(shows(session, Screen::ports));
    world.unit.options().silentFrom.reset();
    world.unit.options().answers = {{"0501", 0, {.resultCode = "2204"}}};
    EXPECT_EQ(trySet(3).first, notEffective3);                      // does not end the program here
    world.unit.options().answers = {{"0501", 1, {.silent = true}}}; // wakes up between the two tries
    EXPECT_EQ(trySet(3).first, "");
    EXPECT_TRUE(shows(session, Screen::main));
    EXPECT_EQ(frmMain().lblTitle[0].caption, "QT-MVR");
}

TEST(StartUp, TakesASecondPressOfSetAsNone) {
    Session session;
    World& world = session.world;
    world.port.removeSocket(3);
    session.start(); // commBusy stands: the first command waits 5 s with events running
    world.port.socket(3).line = &world.line;
    world.desktop.schedule(world.clock.now() + seconds(2),
                           [&] { EXPECT_TRUE(world.person.perform(click("frmStartUp", "cmdTest"))); });
    world.desktop.run([&] { world.person.perform(click("frmStartUp", "cmdTest")); });
    EXPECT_TRUE(shows(session, Screen::main));
    EXPECT_EQ(world.unit.journal().frames.size(), 5u); // 0501, 0601, D4, D5, 0501
}

TEST(StartUp, EndsAtPortChoiceByButtonAndByCloseBox) {
    for (const Deed& deed : {click("frmStartUp", "cmdEnd"), closing("frmStartUp")}) {
        Session session;
        session.world.unit.options().silentFrom = 0;
        bool refused = false;
        session.world.desktop.boxStands = [&](const Box&) { refused = !session.world.person.perform(deed); };
        session.start();
        EXPECT_TRUE(refused); // while the box stands
        EXPECT_EQ(session.world.desktop.run([&] { session.world.person.perform(deed); }), RunEnd::programEnded);
    }
}

TEST(Identification, FillsTheRowsFromWhatTheUnitSays) {
    struct Row {
        const char* what;
        std::function<void(simulator::UnitOptions&)> prepare;
        std::array<std::string, 4> rows; // amplifier, version, interface unit, version
    };
    const Row rows[] = {
        {"the usual unit", [](auto&) {}, {"QT-MVR", "1.022", "QT-KP42", "2.301"}},
        {"base of the range", [](auto& unit) { unit.rawVersion = 10000; }, {"QT-MVR", "0.000", "QT-KP42", "2.301"}},
        {"end of the range", [](auto& unit) { unit.rawVersion = 19999; }, {"QT-MVR", "9.999", "QT-KP42", "2.301"}},
        {"above it", [](auto& unit) { unit.rawVersion = 20000; }, {"", "", "QT-KP42", "2.301"}},
        {"below it", [](auto& unit) { unit.rawVersion = 9999; }, {"", "", "QT-KP42", "2.301"}},
        {"second range",
         [](auto& unit) {
             unit.typeKey = '2';
             unit.rawVersion = 31000;
         },
         {"QT-MVS", "1.000", "QT-KP42", "2.301"}},
        {"unknown type key", [](auto& unit) { unit.typeKey = 'F'; }, {"", "", "QT-KP42", "2.301"}},
        {"short type reply",
         [](auto& unit) {
             unit.answers = {{"0101D5", 0, {.data = "000000"}}};
         },
         {"", "", "QT-KP42", "2.301"}},
        {"unknown interface unit", [](auto& unit) { unit.modelText = "kp42 units"; }, {"QT-MVR", "1.022", "", ""}},
        {"key in another case",
         [](auto& unit) { unit.modelText = "kp42 Unit"; },
         {"QT-MVR", "1.022", "QT-KP42", "2.301"}},
        {"V as character 16",
         [](auto& unit) {
             unit.answers = {{"0501", 2, {.data = "KP42 UNIT      V12345678"}}};
         },
         {"QT-MVR", "1.022", "", ""}},
        {"long version", [](auto& unit) { unit.versionText = "V1234567"; }, {"QT-MVR", "1.022", "QT-KP42", "123456"}},
        {"no version", [](auto& unit) { unit.versionText = "v2.301"; }, {"QT-MVR", "1.022", "QT-KP42", ""}},
        {"V at the end", [](auto& unit) { unit.versionText = "2.301V"; }, {"QT-MVR", "1.022", "QT-KP42", ""}},
        {"short identification",
         [](auto& unit) {
             unit.answers = {{"0501", 2, {.data = "KP42 UNIT"}}};
         },
         {"QT-MVR", "1.022", "QT-KP42", ""}},
        {"1004 at 0601",
         [](auto& unit) {
             unit.answers = {{"0601", 0, {.resultCode = "1004"}}};
         },
         {"", "", "", ""}},
        {"2204 at D4",
         [](auto& unit) {
             unit.answers = {{"0101D4", 0, {.resultCode = "2204"}}};
         },
         {"", "", "", ""}},
    };
    for (const Row& row : rows) {
        Session session;
        row.prepare(session.world.unit.options());
        session.start();
        const FrmMain& form = frmMain();
        EXPECT_EQ((std::array{form.lblTitle[0].caption, form.lblVersion[0].caption, form.lblTitle[1].caption,
                              form.lblVersion[1].caption}),
                  row.rows)
            << row.what;
        EXPECT_EQ(session.boxes(), "") << row.what;
    }
}

TEST(StartUp, WouldRefuseAUnitInJapanese) {
    Session session;
    session.start();
    frmMain().optLanguage[0].value = 1;
    frmMain().optLanguage[1].value = 0;
    session.world.unit.options().sensorCount = 2;
    EXPECT_EQ(session.world.desktop.run(StartUpWindow::subIdentifyUnit), RunEnd::programEnded);
    EXPECT_EQ(session.world.desktop.boxes().back().style, boxStyle::question);
}

} // namespace
