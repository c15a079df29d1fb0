// A write from the button to the last box, and every way in which it ends.
#include "tests/session.h"
#include "transfer/readProcedure.h"
#include "transfer/writeProcedure.h"

namespace {

using simulator::PacketAnswer;
using Fate = PacketAnswer::Fate;

const std::string succeed = "Tarn Beacon|Succeed|65>1\n";
const std::string broken = box::error + "|16>1\n" + box::failed;
const std::string all = "50 51 54 53 ";
const std::string notChecked =
    "Tarn Beacon|I could not check that it communicate with a sensor normally. May I continue work ? \r\n( I recommend "
    "you to choose \"cancellation\" and perform again)|1>1\n";
const std::string notAdapted =
    "Tarn Beacon|Since the loaded file is not adapted to the connected unit, firmware upgrade "
    "cannot be performed.|0>1\n";

// What the unit has said in place of its answer to the n-th packet.
PacketAnswer said(Bytes bytes, Fate fate = Fate::asUsual) {
    return {fate, std::move(bytes)};
}

Preparation answerFrom(int first, int count, const PacketAnswer& answer) {
    return unit([=](auto& options) {
        for (int packet = first; packet < first + count; ++packet) {
            options.packetAnswers[packet] = answer;
        }
    });
}

// What the unit says in place of its first start bytes.
Preparation startInstead(const std::vector<std::string>& texts) {
    return unit([=](auto& options) {
        for (const std::string& text : texts) {
            options.startInstead.emplace(options.startInstead.size() + 1, Bytes(text.begin(), text.end()));
        }
    });
}

TEST(Write, EndsInOneOfItsWays) {
    struct Row {
        const char* what;
        Preparation prepare; // after the load
        std::string boxes;
        std::string operations;
        bool equal;             // the unit holds the file
        std::int16_t retry = 0; // run.commRetry at the end
        Micros atLeast = 0;
    };
    const Row rows[] = {
        {"as it should be", nothing, succeed, all, true},
        {"checksum", unit([](auto& options) { options.crc = false; }), succeed, all, true},
        {"50 on its third try", answers({{"300550", 1, "1001"}, {"300550", 2, "1234"}}), succeed, all, true},
        {"50 refused three times", answers({{"300550", 0, "1001"}}), box::failed, "54 53 ", false, 4},
        {"50 refused with 1234: the third try asks", answers({{"300550", 0, "1234"}}), box::goOn + "1\n" + box::failed,
         "54 53 ", false, 4},
        {"51 on its second try", answers({{"300551", 1, "2204"}}), succeed, all, true, 2},
        {"51 on its third try, 54 and 53 ask",
         answers({{"300551", 1, "2204"}, {"300551", 2, "2204"}, {"300554", 0, "1234"}, {"300553", 0, "1234"}}),
         box::goOn + "1\n" + box::goOn + "1\n" + succeed, "50 51 ", true, 3},
        {"51 refused three times", answers({{"300551", 0, "2204"}}), broken, "50 54 53 ", false, 4},
        {"silence at 51",
         [](World& world) {
             world.unit.options().answers = {{"300551", 0, {.silent = true, .ignored = true}}};
         },
         broken, "50 54 53 ", false, 4, seconds(30)},
        {"54 and 53 refused: not looked at", answers({{"300554", 0, "5555"}, {"300553", 0, "1234"}}), succeed, "50 51 ",
         true},
        {"check fails, operator goes on", answers({{"0101D4", 0, "0E00"}}), notChecked + succeed, all, true},
        {"no first byte", unit([](auto& options) { options.startDelay = seconds(70); }), broken, all, false, 0,
         seconds(60)},
        {"ten unknown bytes at the start", startInstead({"xxxxx", "xxxxx", "x", "x", "x", "x", "x", "x", "x", "x"}),
         broken, all, false},
        {"nine unknown bytes, one CAN", startInstead({"x", "x", "x", "\x18", "x", "x", "x"}), succeed, all, true},
        {"two CAN at the start, noise between", startInstead({"\x18", "x", "\x18"}), broken, all, false},
        {"nine NAKs", answerFrom(700, 9, said({0x15}, Fate::ignored)), succeed, all, true},
        {"ten NAKs", answerFrom(700, 10, said({0x15}, Fate::ignored)), broken, all, false},
        {"ten NAKs on EOT", answerFrom(1921, 10, said({0x15}, Fate::ignored)), broken, all, false},
        {"a late ACK", answerFrom(5, 1, {Fate::asUsual, Bytes{0x06}, seconds(11)}), succeed, all, true, 0, seconds(11)},
        {"silence from block 3 on", answerFrom(3, 5000, said({}, Fate::ignored)), broken, all, false, 0, seconds(100)},
        {"lone CAN, NAK, CAN",
         [](World& world) {
             world.unit.options().packetAnswers[4] = said({0x18, 0x15}, Fate::ignored);
             world.unit.options().packetAnswers[5] = said({0x18, 0x06});
         },
         succeed, all, true},
        {"two CAN", answerFrom(4, 1, {Fate::cancels}), broken, all, false},
        {"noise ahead of each ACK", answerFrom(1, 1921, said({'n', 'C', 0x00, 0x06})), succeed, all, true},
        {"adapter pulled while the tool waits", pulledAfter(seconds(5)), box::lost + box::failed, "50 51 ", false},
        {"a write of a block fails once",
         [](World& world) {
             world.port.operations().add(failNth(Operation::writePort,
                                                 world.port.operations().passed(Operation::writePort) + 100,
                                                 Lasting::once, Failure(failureNumber::portLost, "It broke.")));
         },
         "エラー|It broke.|16>1\n" + broken, all, false},
        {"the port is gone before the start", pulledAfter(1), box::timeout + notChecked + box::lost + box::failed, "",
         false},
        {"the format test", [](World&) { frmMain().LabelWriteProtect.visible = true; },
         "TarnBeacon|形式認識テストです　書込み処理はスキップします。|0>1\n", "", false},
        {"another model in the row", [](World&) { frmMain().lblTitle[0].caption = "qt-mvr"; }, notAdapted, "", false},
        {"the other row", [](World& world) { world.person.perform(click("frmMain", "optPresent", 1)); }, notAdapted, "",
         false},
    };
    for (const Row& row : rows) {
        Session session;
        World& world = session.world;
        session.load();
        SCOPED_TRACE(row.what);
        row.prepare(world);
        const Micros before = world.clock.now();
        session.press("cmdUpgrade");
        EXPECT_EQ(session.boxes(), row.boxes);
        EXPECT_EQ(session.operations(), row.operations);
        EXPECT_EQ(world.unit.receivedImage() == world.image && world.unit.journal().imageComplete, row.equal);
        EXPECT_TRUE(session.atRest());
        EXPECT_EQ(run.commRetry, row.retry);
        EXPECT_GE(world.clock.now() - before, row.atLeast);
        EXPECT_EQ(frmMain().lblVersion[0].caption, row.equal ? "1.046" : "1.022");
        EXPECT_TRUE(frmMain().cmdUpgrade.enabled);

        // The way on: nothing stands between the operator and the next try.
        if (row.equal || world.port.socket(3).pulledAt != noMoment || row.operations.empty()) {
            continue;
        }
        world.unit.options() = simulator::UnitOptions();
        session.press("cmdUpgrade");
        EXPECT_TRUE(session.boxes().ends_with(succeed)) << session.boxes();
        EXPECT_EQ(world.unit.receivedImage(), world.image);
    }
}

TEST(Write, IsLeftByCancelAtTheQuestion) {
    Session session;
    session.load();
    answers({{"0101D4", 0, "1001"}})(session.world);
    session.world.desktop.answerBox = [](const Box&) { return boxAnswer::cancel; };
    session.press("cmdUpgrade");
    EXPECT_EQ(session.operations(), "");
    EXPECT_EQ(frmMain().mousePointer, MousePointer::arrow);
    EXPECT_TRUE(session.atRest());
    EXPECT_TRUE(run.fileLoaded);
}

TEST(Steps, DoNothingWhileOneRunsAndForStatesNotTheirs) {
    Session session;
    session.start();
    for (std::int32_t state = 0; state <= 14; ++state) {
        run.stepBusy = true;
        EXPECT_EQ(FirmComm::fncWriteStep(state), 0);
        EXPECT_EQ(FirmComm::fncReadStep(state), 0);
        run.stepBusy = false;
        EXPECT_TRUE(state == 7 || state == 12 || FirmComm::fncWriteStep(state) == state);
        EXPECT_TRUE(state == 1 || state == 2 || state == 4 || state == 5 || FirmComm::fncReadStep(state) == state);
    }
    EXPECT_EQ(session.operations(), "");
    EXPECT_TRUE(session.atRest());
}

TEST(Write, GoesToTheSelectedRow) {
    Session session({.image = {.typeText = "KP42FIRM", .rawVersion = 3100}});
    session.load();
    session.press("optPresent", 1);
    session.press("cmdUpgrade");
    EXPECT_EQ(session.boxes(), succeed);
    EXPECT_EQ(session.world.unit.journal().frames.back().text, "300553000000");
    EXPECT_EQ(session.world.unit.options().interfaceUnitImage, session.world.image);
    EXPECT_EQ(frmMain().lblVersion[1].caption, "3.100");
    EXPECT_EQ(frmMain().lblVersion[0].caption, "1.022");
}

TEST(Write, ShowsItsProgressAndKeepsTheOperatorOut) {
    Session session;
    World& world = session.world;
    session.load();
    std::vector<std::string> seen;
    const auto look = [&] {
        const FrmMain& form = frmMain();
        std::string state = form.enabled ? "enabled" : "disabled";
        state += form.mousePointer == MousePointer::hourglass ? " hourglass" : " no hourglass";
        if (frmWaitLoaded() && frmWait().visible) {
            state += " " + frmWait().lblMsg.caption;
            EXPECT_GT(frmWait().prbComm.value, 0);
            EXPECT_LT(frmWait().prbComm.value, frmWait().prbComm.max);
        }
        seen.push_back(state);
        for (const Deed& deed : {click("frmMain", "cmdUpgrade"), click("frmMain", "cmdEnd"), closing("frmMain"),
                                 click("frmMain", "optPresent", 1), click("frmWait", "cmdCancel")}) {
            EXPECT_FALSE(world.person.perform(deed)) << deed.control << ' ' << deed.form;
        }
    };
    // The close box of the progress dialog changes nothing.
    world.desktop.schedule(world.clock.now() + seconds(20), [&] { world.person.perform(closing("frmWait")); });
    world.desktop.schedule(world.clock.now() + seconds(30), look);
    world.desktop.boxStands = [&](const Box&) { look(); };
    session.press("cmdUpgrade");
    EXPECT_EQ(seen, (std::vector<std::string>{"disabled hourglass QT-MVR is under updating to ver1.046.",
                                              "enabled hourglass"}));
    EXPECT_EQ(frmMain().mousePointer, MousePointer::standard);
}

TEST(Write, SendsItsBlocksByteForByte) {
    for (const bool crc : {true, false}) {
        Session session;
        World& world = session.world;
        world.unit.options().crc = crc;
        session.load();
        std::fill(run.firmwareImage.begin(), run.firmwareImage.begin() + blockSize, std::uint8_t{0xFF});
        world.line.record().keep(10000);
        world.line.record().clear();
        session.press("cmdUpgrade");
        const Bytes sent = world.line.record().sent(Direction::toUnit);
        const std::size_t frames = 24 + 20 + 20; // the check, "50" and "51"
        const std::size_t size = crc ? 133 : 132;
        ASSERT_EQ(sent.size(), frames + 1920 * size + 1 + 2 * 20);
        Bytes first{0x01, 0x01, 0xFE};
        first.resize(131, 0xFF);
        first.insert(first.end(),
                     crc ? std::initializer_list<std::uint8_t>{0xED, 0xA9} : std::initializer_list<std::uint8_t>{0x80});
        const auto block = [&](std::size_t number) {
            const auto start = sent.begin() + static_cast<std::ptrdiff_t>(frames + (number - 1) * size);
            return Bytes(start, start + static_cast<std::ptrdiff_t>(size));
        };
        EXPECT_EQ(block(1), first);
        EXPECT_EQ((Bytes{block(255)[1], block(256)[1], block(256)[2], block(257)[1], block(1920)[1]}),
                  (Bytes{255, 0, 255, 1, 128}));
        EXPECT_EQ(sent[frames + 1920 * size], 0x04);
        EXPECT_EQ(session.boxes(), succeed);
    }
}

TEST(Write, ClosesInJapanese) {
    const std::pair<const char*, const char*> rows[] = {{"", "Tarn Beacon|正常終了|64>1\n"},
                                                        {"300550", "Tarn Beacon|異常終了|64>1\n"}};
    for (const auto& [refused, boxes] : rows) {
        Session session;
        session.load();
        frmMain().fraLanguage.visible = true;
        session.press("optLanguage", 0);
        if (*refused != '\0') {
            answers({{refused, 0, "1001"}})(session.world);
        }
        session.press("cmdUpgrade");
        EXPECT_EQ(session.boxes(), boxes);
    }
}

TEST(Write, EndsTheProgramAtOnceFromWithinABox) {
    Session session;
    session.load();
    answers({{"300550", 0, "1234"}})(session.world);
    session.world.desktop.answerBox = [](const Box&) { return boxAnswer::cancel; };
    EXPECT_EQ(session.press("cmdUpgrade"), RunEnd::programEnded);
    EXPECT_EQ(session.operations(), "");
    EXPECT_TRUE(session.world.port.isOpen());
}

} // namespace
