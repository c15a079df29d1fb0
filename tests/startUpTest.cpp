// The way from the start to the main window, and all the ways that do not lead there.
#include "tests/session.h"

namespace {

const std::string portSetup = "Tarn Beacon|An error is in a setup of a COM port.Please check.|48>1\n";
const std::string missing3 = "Tarn Beacon|現在の通信ポート(COM3)は有効ではありません|16>1\n";
const std::string notEffective3 = "Tarn Beacon|現在の通信ポート(COM3)は有効ではありません|48>1\n";
const std::string unusual = "Tarn Beacon|Unit connection state is unusual.|16>1\n";
const std::string tooMany = "Tarn Beacon|Since the sensor connected is two or more sets, firmware upgrade cannot be "
                            "performed. Connect only one sensor and reboot the application software after resetting "
                            "sensor power supply.|33>1\n";
const std::string ports = "shpComm lblCom cmbCom cmdTest cmdEnd ";
const std::string typeIni = "/tarnbeacon/TYPE.INI";

// The window that stands, alone and whole.
std::string shown(const Session& session) {
    const FrmStartUp& start = frmStartUp();
    std::string parts;
    for (const Control* control : start.controls) {
        parts += control->visible && control->kind != ControlKind::menu ? control->name + ' ' : "";
    }
    if (start.visible == frmMain().visible || !session.world.desktop.violations().empty()) {
        return "both or none, or a failure left an event";
    }
    return !frmMain().visible ? parts : frmMain().cmdUpgrade.enabled ? "main, ready without a file" : "main";
}

Preparation sensors(const char* state, int count) {
    return unit([=](auto& options) {
        options.stateText = state;
        options.sensorCount = count;
    });
}

// The unit is on COM1, and Setting.INI says that, or is not there.
Preparation setting(const std::optional<std::string>& text) {
    return [=](World& world) {
        const std::string path = "/tarnbeacon/Setting.INI";
        text ? world.files.put(path, *text) : world.files.remove(path);
        world.port.socket(1).line = &world.line;
    };
}

TEST(StartUp, EndsInOneOfItsWays) {
    struct Row {
        const char* what;
        Preparation prepare;
        std::string boxes;
        std::string screen; // empty: the program has ended
        Micros lasts = 0;
    };
    const auto withoutTypes = [](World& world) { world.files.remove(typeIni); };
    const auto secondInstance = [](World& world) { world.desktop.otherInstance = true; };
    const std::string noFile = "Tarn Beacon|INI file does not exist.|16>1\n";
    const Row rows[] = {
        {"a unit", nothing, "", "main"},
        {"no TYPE.INI", withoutTypes, noFile, ""},
        {"a second instance", secondInstance, "Tarn Beacon|This application is already started.|16>1\n", ""},
        {"both", [=](World& world) { withoutTypes(world), secondInstance(world); }, noFile, ""},
        {"port missing", [](World& world) { world.port.removeSocket(3); }, missing3 + box::timeout + portSetup, ports},
        {"port held", [](World& world) { world.port.socket(3).state = Socket::State::held; },
         box::portHeld + box::timeout + portSetup, ports},
        {"silence", unit([](auto& options) { options.silentFrom = 0; }), portSetup, ports, fromSeconds(5)},
        {"2204 at the probe", answers({{"0501", 1, "2204"}}), "", ""},
        {"1001 at the probe", answers({{"0501", 1, "1001"}}), portSetup, ports},
        {"state 1004", answers({{"0601", 0, "1004"}}), "", "main"},
        {"state 2204", answers({{"0601", 0, "2204"}}), "", ""},
        {"state silent", answersWith("0601", {.silent = true}), "", "", fromSeconds(5)},
        {"state 01, one sensor", sensors("01", 1), unusual, ""},
        {"state 01, two sensors", sensors("01", 2), unusual, ""},
        {"no sensor", sensors("00", 0), unusual, ""},
        {"two sensors", sensors("00", 2), tooMany, ""},
        {"state 02, one sensor", sensors("02", 1), "", "main"},
        {"count unreadable", answersWith("0601", {.data = "00x1"}), box::error + "0000|16>1\n", ""},
        {"version 2204", answers({{"0101D4", 0, "2204"}}), "", "main"},
        {"version 1001", answers({{"0101D4", 0, "1001"}}), "", ""},
        {"type 2204", answers({{"0101D5", 0, "2204"}}), "", ""},
        {"second 0501 fails", answers({{"0501", 2, "2204"}}), "", ""},
        {"raw version beyond 32 bits", answersWith("0101D4", {.data = "0000FFFFFFFF"}), box::error + "Overflow|16>1\n",
         "main"},
        {"port 17", setting("[IFU]\nCOM=17\n"), box::error + "The list of ports has no COM17.|16>1\n", ports},
        {"port 99999", setting("[IFU]\nCOM=99999\n"), box::error + "Overflow|16>1\n", "main"},
        {"port 16", setting("[IFU]\nCOM=16\n"),
         "Tarn Beacon|現在の通信ポート(COM16)は有効ではありません|16>1\n" + box::timeout + portSetup, ports},
        {"no Setting.INI", setting(std::nullopt), "", "main"},
    };
    for (const Row& row : rows) {
        Session session;
        SCOPED_TRACE(row.what);
        row.prepare(session.world);
        EXPECT_EQ(session.start(), row.screen.empty() ? RunEnd::programEnded : RunEnd::idle);
        EXPECT_EQ(session.boxes(), row.boxes);
        EXPECT_TRUE(row.screen.empty() || shown(session) == row.screen) << shown(session);
        EXPECT_GE(session.world.clock.now(), row.lasts);
    }
}

TEST(StartUp, ShowsItsPictureBeforeItTouchesThePort) {
    Session session;
    World& world = session.world;
    bool ran = false;
    world.desktop.schedule(0, [&] {
        ran = true;
        EXPECT_EQ(shown(session), "");
        EXPECT_EQ(frmStartUp().left, (1920 * 15 - 4800) / 2);
        EXPECT_EQ(frmStartUp().top, (1080 * 15 - 855) / 2);
        EXPECT_EQ(world.port.operations().passed(), 0);
        world.person.perform(closing("frmStartUp")); // is ignored
    });
    EXPECT_EQ(session.start(), RunEnd::idle);
    EXPECT_TRUE(ran);
    EXPECT_EQ(shown(session), "main");
}

TEST(StartUp, OffersThePortsUntilAUnitAnswers) {
    Session session;
    World& world = session.world;
    world.unit.options().silentFrom = 0;
    world.port.socket(5).state = Socket::State::held;
    session.start();
    EXPECT_EQ(frmStartUp().cmbCom.listIndex, 2);
    EXPECT_EQ(frmStartUp().cmbCom.items.size(), 16u);
    EXPECT_EQ(frmStartUp().cmbCom.items[0] + frmStartUp().cmbCom.items[15], "COM1COM16");
    const auto trySet = [&](int port) {
        const std::size_t before = session.boxes().size();
        EXPECT_TRUE(world.person.perform(choose("frmStartUp", "cmbCom", port - 1)));
        world.desktop.run([&] { EXPECT_TRUE(world.person.perform(click("frmStartUp", "cmdTest"))); });
        EXPECT_EQ(shared.comPortNumber, frmStartUp().visible ? 3 : port);
        return session.boxes().substr(before);
    };
    EXPECT_EQ(trySet(4), "Tarn Beacon|現在の通信ポート(COM4)は有効ではありません|16>1\n");
    EXPECT_EQ(trySet(5), box::portHeld);
    const Micros start = world.clock.now();
    std::vector<Micros> moments; // of two events, each in one of the two tries
    for (const int at : {2, 7}) {
        world.desktop.schedule(start + fromSeconds(at),
                               [&] { moments.push_back((world.clock.now() - start) / fromSeconds(1)); });
    }
    EXPECT_EQ(trySet(3), notEffective3);
    EXPECT_EQ(moments, (std::vector<Micros>{5, 10}));
    EXPECT_EQ((world.clock.now() - start) / fromSeconds(1), 11); // and the box
    EXPECT_EQ(shown(session), ports);
    world.unit.options().silentFrom.reset();
    world.unit.options().answers = {{"0501", 0, {.resultCode = "2204"}}};
    EXPECT_EQ(trySet(3), notEffective3);                            // does not end the program here
    world.unit.options().answers = {{"0501", 1, {.silent = true}}}; // wakes up between the two tries
    world.port.socket(6).line = &world.line;
    EXPECT_EQ(trySet(6), "");
    EXPECT_EQ(shown(session), "main");
    EXPECT_EQ(frmMain().lblTitle[0].caption, "QT-MVR");
}

TEST(StartUp, StaysAliveWhileItWaitsForTheLink) {
    for (const Deed& deed : {click("frmStartUp", "cmdTest"), click("frmStartUp", "cmdEnd"), closing("frmStartUp")}) {
        const bool ends = deed.control != "cmdTest"; // a second press counts as none
        Session session;
        World& world = session.world;
        world.port.removeSocket(3);
        session.start(); // commBusy stands: the first command waits 5 s with events running
        world.port.socket(3).line = &world.line;
        const Micros start = world.clock.now();
        for (int at = 0; ends && at < 6000; at += 5) { // the port chatters
            world.line.put(Direction::fromUnit, {'x'}, start + fromMilliseconds(at));
        }
        world.desktop.schedule(start + fromSeconds(2), [&] {
            EXPECT_LT(world.clock.now(), start + fromMilliseconds(2100));
            EXPECT_TRUE(world.person.perform(deed));
        });
        EXPECT_EQ(world.desktop.run([&] { world.person.perform(click("frmStartUp", "cmdTest")); }),
                  ends ? RunEnd::programEnded : RunEnd::idle);
        EXPECT_EQ(world.unit.journal().frames.size(), ends ? 0U : 5U); // 0501, 0601, D4, D5, 0501
    }
}

TEST(Identification, FillsTheRowsFromWhatTheUnitSays) {
    struct Row {
        const char* what;
        Preparation prepare;
        std::string rows; // amplifier and its version, interface unit and its version
    };
    const auto model = [](const std::string& text) { return unit([=](auto& options) { options.modelText = text; }); };
    const auto version = [](const char* text) { return unit([=](auto& options) { options.versionText = text; }); };
    const Row rows[] = {
        {"the usual unit", nothing, "QT-MVR|1.022|QT-KP42|2.301"},
        {"second range", unit([](auto& options) {
             options.typeKey = '2';
             options.rawVersion = 31000;
         }),
         "QT-MVS|1.000|QT-KP42|2.301"},
        {"two bytes ahead of the version", answersWith("0101D4", {.data = "FFFF2B0E"}), "QT-MVR|1.022|QT-KP42|2.301"},
        {"unknown type key", unit([](auto& options) { options.typeKey = 'F'; }), "||QT-KP42|2.301"},
        {"short type reply", answersWith("0101D5", {.data = "000000"}), "||QT-KP42|2.301"},
        {"unknown interface unit", model("kp42 units"), "QT-MVR|1.022||"},
        {"key in another case", model("kp42 Unit"), "QT-MVR|1.022|QT-KP42|2.301"},
        {"V as character 16", answersWith("0501", {.data = "KP42 UNIT      V12345678"}, 2),
         "QT-MVR|1.022|QT-KP42|123456"},
        {"filled up with zero bytes", model(std::string("KP42 UNIT\0\0\0\0\0\0\0", 16)), "QT-MVR|1.022|QT-KP42|2.301"},
        {"V within the model", model("V42"), "QT-MVR|1.022|QT-KP42|2.301"},
        {"long version", version("V1234567"), "QT-MVR|1.022|QT-KP42|123456"},
        {"blanks around the version", version("V 2.3"), "QT-MVR|1.022|QT-KP42|2.3"},
        {"no version", version("v2.301"), "QT-MVR|1.022|QT-KP42|"},
        {"V at the end", version("2.301V"), "QT-MVR|1.022|QT-KP42|"},
        {"short identification", answersWith("0501", {.data = "KP42 UNIT"}, 2), "QT-MVR|1.022|QT-KP42|"},
        {"1004 at 0601", answers({{"0601", 0, "1004"}}), "|||"},
        {"2204 at D4", answers({{"0101D4", 0, "2204"}}), "|||"},
    };
    for (const Row& row : rows) {
        Session session;
        row.prepare(session.world);
        session.world.files.put(typeIni, session.world.files.find(typeIni)->content +
                                             "[IFU_TYPE]\nV42=K42\nKP42 UNIT      V=K42\n");
        session.start();
        const auto& [title, number] = std::tie(frmMain().lblTitle, frmMain().lblVersion);
        EXPECT_EQ(title[0].caption + '|' + number[0].caption + '|' + title[1].caption + '|' + number[1].caption,
                  row.rows)
            << row.what;
        EXPECT_EQ(session.boxes(), "") << row.what;
    }
}

} // namespace
