// A write from the button to the last box, and every way in which it ends.
#include "tests/session.h"
#include "transfer/readProcedure.h"
#include "transfer/writeProcedure.h"

namespace {

const std::string succeed = "Tarn Beacon|Succeed|65>1\n";
const std::string broken = box::error + "|16>1\n" + box::failed;
const std::string all = "50 51 54 53 ";
const std::string notChecked =
    "Tarn Beacon|I could not check that it communicate with a sensor normally. May I continue work ? \r\n( I recommend "
    "you to choose \"cancellation\" and perform again)|1>1\n";
const std::string notAdapted =
    "Tarn Beacon|Since the loaded file is not adapted to the connected unit, firmware upgrade "
    "cannot be performed.|0>1\n";

// The unit refuses that many packets in a row.
Preparation refuses(int first, int count) {
    return unit([=](auto& options) {
        for (int packet = first; packet < first + count; ++packet) {
            options.packetAnswers[packet] = {simulator::PacketAnswer::Fate::ignored};
        }
    });
}

TEST(Write, EndsInOneOfItsWays) {
    struct Row {
        const char* what;
        Preparation prepare; // after the load
        std::string boxes, operations;
        bool equal;             // the unit holds the file
        std::int16_t retry = 0; // shared.commRetry at the end
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
        {"silence at 51", answersWith("300551", {.silent = true, .ignored = true}), broken, "50 54 53 ", false, 4,
         fromSeconds(30)},
        {"54 and 53 refused", answers({{"300554", 0, "5555"}, {"300553", 0, "1234"}}), succeed, "50 51 ", true},
        {"check fails, operator goes on", answers({{"0101D4", 0, "0E00"}}), notChecked + succeed, all, true},
        {"no first byte", unit([](auto& options) { options.startDelay = fromSeconds(70); }), broken, all, false, 0,
         fromSeconds(60)},
        {"ten NAKs", refuses(700, 10), broken, all, false},
        {"adapter pulled while the tool waits", pulledAfter(fromSeconds(5) + fromMilliseconds(12)),
         box::lost + box::failed, "50 51 ", false},
        {"a write of a block fails once",
         [](World& world) {
             OperationGate& gate = world.port.operations();
             const Failure failure(failureNumber::portLost, "It broke.");
             gate.add(failNth(Operation::writePort, gate.passed(Operation::writePort) + 100, Lasting::once, failure));
         },
         "エラー|It broke.|16>1\n" + broken, all, false},
        {"pulled before the start", pulledAfter(1), box::timeout + notChecked + box::lost + box::failed, "", false},
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
        EXPECT_EQ(shared.commRetry, row.retry);
        EXPECT_GE(world.clock.now() - before, row.atLeast);
        EXPECT_EQ(frmMain().lblVersion[0].caption, row.equal ? "1.046" : "1.022");
        EXPECT_TRUE(frmMain().cmdUpgrade.enabled);

        // The way on: nothing stands between the operator and the next try.
        if (row.equal || world.port.socket(3).pulledAt != never || row.operations.empty()) {
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
    EXPECT_TRUE(shared.fileLoaded);
}

TEST(Steps, DoNothingWhileOneRunsAndForStatesNotTheirs) {
    Session session;
    session.start();
    for (std::int32_t state = 0; state <= 14; ++state) {
        shared.stepBusy = true;
        EXPECT_EQ(FirmComm::fncWriteStep(state), 0);
        EXPECT_EQ(FirmComm::fncReadStep(state), 0);
        shared.stepBusy = false;
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
    world.desktop.schedule(world.clock.now() + fromSeconds(20), [&] { world.person.perform(closing("frmWait")); });
    world.desktop.schedule(world.clock.now() + fromSeconds(30), look);
    world.desktop.boxStands = [&](const Box&) { look(); };
    session.press("cmdUpgrade");
    EXPECT_EQ(seen, (std::vector<std::string>{"disabled hourglass QT-MVR is under updating to ver1.046.",
                                              "enabled hourglass"}));
    EXPECT_EQ(frmMain().mousePointer, MousePointer::standard);
}

TEST(Write, SendsABlockByteForByte) {
    for (const bool crc : {true, false}) {
        Session session;
        session.world.unit.options().crc = crc;
        session.load();
        std::fill(shared.firmwareImage.begin(), shared.firmwareImage.begin() + blockSize, std::uint8_t{0xFF});
        Bytes sent;
        session.world.line.addHook([&](Passage& passage) {
            if (sent.empty() && passage.bytes.size() > blockSize) {
                sent = passage.bytes;
            }
        });
        session.press("cmdUpgrade");
        Bytes packet{0x01, 0x01, 0xFE};
        packet.resize(131, 0xFF);
        const Bytes check = crc ? Bytes{0xED, 0xA9} : Bytes{0x80};
        packet.insert(packet.end(), check.begin(), check.end());
        EXPECT_EQ(sent, packet);
        EXPECT_EQ(session.boxes(), succeed);
    }
}

TEST(Write, ClosesInJapanese) {
    const std::pair<const char*, const char*> rows[] = {{"nothing", "Tarn Beacon|正常終了|64>1\n"},
                                                        {"300550", "Tarn Beacon|異常終了|64>1\n"}};
    for (const auto& [refused, boxes] : rows) {
        Session session;
        session.load();
        frmMain().fraLanguage.visible = true;
        session.press("optLanguage", 0);
        answers({{refused, 0, "1001"}})(session.world);
        session.press("cmdUpgrade");
        EXPECT_EQ(session.boxes(), boxes);
    }
}

} // namespace
