// A write from the button to the last box, and every way in which it ends.
#include "tests/story.h"
#include "transfer/readProcedure.h"
#include "transfer/writeProcedure.h"

namespace {

using Fate = simulator::PacketAnswer::Fate;

void answerCancel(World& world) {
    answers({{"0101D4", 0, "1001"}})(world);
    world.desktop.answerBox = [](const Box& box) { return box.style == 1 ? boxAnswer::cancel : boxAnswer::ok; };
}

// The same for some packets in a row.
Preparation packets(int first, int count, const simulator::PacketAnswer& answer) {
    return unit([=](auto& options) {
        for (int packet = first; packet < first + count; ++packet) {
            options.packetAnswers[packet] = answer;
        }
    });
}

TEST(Write, IsAStoryInEachOfItsWays) {
    enum class Then { unitHoldsFile, nextOneSucceeds, noMatter };
    struct Row {
        const char* what; // also in the file of stories
        Preparation prepare;
        Then then = Then::nextOneSucceeds;
    };
    const Row rows[] = {
        {"as it should be", nothing, Then::unitHoldsFile},
        {"checksum", unit([](auto& options) { options.crc = false; }), Then::unitHoldsFile},
        {"50 on its third try, 51 on its second",
         answers({{"300550", 1, "1001"}, {"300550", 2, "1234"}, {"300551", 1, "1234"}}), Then::unitHoldsFile},
        {"50 refused", answers({{"300550", 0, "1001"}})},
        {"1234 to 50 and 54", answers({{"300550", 0, "1234"}, {"300554", 0, "1234"}})},
        {"51 on its third try, the end refused",
         answers({{"300551", 1, "2204"}, {"300551", 2, "2204"}, {"300554", 0, "1234"}, {"300553", 0, "5555"}}),
         Then::unitHoldsFile},
        {"51 refused", answers({{"300551", 0, "2204"}})},
        {"silence at 51", answersWith("300551", {.silent = true, .ignored = true})},
        {"not checked, the operator goes on", answers({{"0101D4", 0, "0E00"}}), Then::unitHoldsFile},
        {"not checked, the operator does not go on", answerCancel},
        {"no first byte", unit([](auto& options) { options.startDelay = fromSeconds(70); })},
        {"ten NAKs", packets(700, 10, {.fate = Fate::ignored})},
        {"cancelled by the unit", packets(2, 1, {.fate = Fate::cancels})},
        {"nine answers to EOT lost", packets(1921, 9, {.bytes = Bytes{}}), Then::unitHoldsFile},
        {"the unit restarts at a block",
         [](World& world) {
             world.restartUnit(world.clock.now() + fromSeconds(2), world.clock.now() + fromSeconds(3));
         }},
        {"pulled at a block", pulledAfter(fromSeconds(1) + fromMilliseconds(12)), Then::noMatter},
        {"pulled before the start", pulledAfter(1), Then::noMatter},
        {"pulled while 50 is unanswered",
         [](World& world) {
             answersWith("300550", {.silent = true})(world);
             pulledAfter(fromSeconds(3))(world);
         },
         Then::noMatter},
        {"a block cannot be written", fails(Operation::writePort, 13)},
        {"a command cannot be written", fails(Operation::writePort, 9), Then::unitHoldsFile},
        {"the start fails", fails(Operation::clearUnsent, 1)},
        {"the format test", [](World&) { frmMain().LabelWriteProtect.visible = true; }, Then::noMatter},
        {"the format test, not checked",
         [](World& world) {
             frmMain().LabelWriteProtect.visible = true;
             answerCancel(world);
         },
         Then::noMatter},
        {"another model in the row", [](World&) { frmMain().lblTitle[0].caption = "qt-mvr"; }, Then::noMatter},
        {"the other row", [](World& world) { world.person.perform(click("frmMain", "optPresent", 1)); },
         Then::noMatter},
        {"in Japanese", inJapanese(nothing), Then::unitHoldsFile},
        {"in Japanese, 50 refused", inJapanese(answers({{"300550", 0, "1234"}, {"0101D4", 0, "1001"}}))},
        {"in Japanese, 51 refused", inJapanese(answers({{"300551", 0, "2204"}}))},
        {"in Japanese, another model", inJapanese([](World&) { frmMain().lblTitle[0].caption = "QT-MV"; }),
         Then::noMatter},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Session session;
        World& world = session.world;
        session.load();
        row.prepare(world);
        Story story(session);
        session.press("cmdUpgrade");
        story.expect("write.txt", row.what);
        EXPECT_TRUE(session.atRest());
        if (row.then == Then::nextOneSucceeds) {
            EXPECT_FALSE(world.unit.options().amplifierImage == world.image);
            world.unit.options() = simulator::UnitOptions();
            session.press("cmdUpgrade");
            EXPECT_EQ(frmMain().lblVersion[0].caption, "1.046");
        }
        EXPECT_EQ(world.unit.options().amplifierImage == world.image, row.then != Then::noMatter);
    }
}

TEST(Write, GoesToTheSelectedRow) {
    Session session({.image = {.typeText = "KP42FIRM", .rawVersion = 3100}});
    session.load();
    session.press("optPresent", 1);
    Story story(session);
    session.press("cmdUpgrade");
    story.expect("write.txt", "the interface unit");
    EXPECT_EQ(session.world.unit.options().interfaceUnitImage, session.world.image);
}

TEST(Write, KeepsTheOperatorOut) {
    Session session;
    World& world = session.world;
    session.load();
    int looks = 0;
    const auto look = [&] {
        ++looks;
        frmWait().cmdCancel.visible = true;
        for (const Deed& deed : {click("frmMain", "cmdUpgrade"), click("frmMain", "cmdEnd"), closing("frmMain"),
                                 click("frmMain", "optPresent", 1), click("frmWait", "cmdCancel")}) {
            EXPECT_FALSE(world.person.perform(deed)) << deed.control << ' ' << deed.form;
        }
        EXPECT_TRUE(world.person.perform(closing("frmWait"))); // and nothing comes of it
    };
    world.desktop.schedule(world.clock.now() + fromSeconds(30), look);
    session.press("cmdUpgrade");
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(session.world.unit.receivedImage(), session.world.image);
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
}

} // namespace
