// The simulated desktop judges everything above the seam, so its own times and refusals are held against fixed values.
#include "platform/simulated/world.h"
#include "simulator/frame.h"
#include "tests/failureOf.h"
#include "tests/testForm.h"

using namespace platform;

namespace {

class SimulatedDesktopTest : public testing::Test {
  protected:
    SimulatedDesktopTest() {
        desk.load(form);
        desk.show(form);
        form.timer.tick = [this] { ticks.push_back(world.clock.now() / 1000); };
    }

    void startTimer(int interval) {
        form.timer.setInterval(interval);
        form.timer.setEnabled(true);
    }
    static void openPort(World& world) {
        world.port.choosePort(3);
        world.port.setSettings("38400,n,8,1");
        world.port.open();
    }

    World world;
    SimulatedDesktop& desk = world.desktop;
    TestForm form;
    std::vector<std::int64_t> ticks; // moments in milliseconds
    using Moments = std::vector<std::int64_t>;
};

TEST_F(SimulatedDesktopTest, TimersTickOnTheirOwnTimeAndDoNotPileUp) {
    startTimer(100);
    desk.sleep(350);
    EXPECT_EQ(ticks, Moments{});
    desk.doEvents(); // one of three missed
    desk.waitForEvents(5000);
    EXPECT_EQ(ticks, (Moments{350, 400}));
    desk.sleep(50);
    startTimer(100); // begins anew
    desk.sleep(99);
    desk.doEvents();
    desk.waitForEvents(5000);
    desk.unload(form);
    desk.waitForEvents(5000);
    EXPECT_EQ(ticks, (Moments{350, 400, 550}));
    EXPECT_EQ(desk.timeGetTime(), 5000);
}

TEST_F(SimulatedDesktopTest, ATickRunsInsideATickThatLetsEventsRun) {
    int depth = 0;
    int deepest = 0;
    form.timer.tick = [&] {
        deepest = std::max(deepest, ++depth);
        if (depth == 1) {
            desk.msgBox("busy", boxStyle::ok, "");
            form.timer.setEnabled(false);
        }
        --depth;
        ticks.push_back(desk.timeGetTime());
    };
    startTimer(400);
    EXPECT_EQ(desk.run({}), RunEnd::idle);
    EXPECT_EQ(deepest, 2);
    EXPECT_EQ(ticks, (Moments{800, 1200, 1400}));
}

TEST_F(SimulatedDesktopTest, WaitsKeepWindowEventsApart) {
    openPort(world);
    startTimer(10);
    world.line.put(Direction::fromUnit, {1}, milliseconds(100));
    desk.waitForBytes(1000);
    EXPECT_EQ(world.clock.now(), 101'000); // 260 us on the line, then the adapter's millisecond
    EXPECT_EQ(ticks, Moments{});
    desk.waitForEvents(1000); // the overdue tick; the byte has been waited for already
    EXPECT_EQ(ticks, Moments{101});
    world.line.put(Direction::fromUnit, {2}, milliseconds(105));
    desk.waitForEvents(1000);
    EXPECT_EQ(desk.timeGetTime(), 106);
    EXPECT_EQ(ticks.size(), 1u);
    EXPECT_EQ(world.port.countReceived(), 2);
}

TEST_F(SimulatedDesktopTest, BytesArriveAtThePaceOfTheLine) {
    struct Row {
        LinePace pace;
        Moments arrivals; // in microseconds, of three bytes sent at 1000
    };
    const Row rows[]{
        {{38400, false, 0}, {1260, 1520, 1781}},
        {{38400, true, 0}, {1781, 1781, 1781}},
        {{38400, false, 500}, {1500, 2000, 2000}},
        {{9600, false, 1000}, {3000, 4000, 5000}},
        {unpaced, {1000, 1000, 1000}},
    };
    for (const Row& row : rows) {
        World other({.pace = row.pace});
        openPort(other);
        other.port.setReadLimit(1);
        other.line.put(Direction::fromUnit, {7, 8, 9}, 1000);
        Moments arrivals;
        for (int i = 0; i < 3; ++i) {
            other.desktop.waitForBytes(100);
            arrivals.push_back(other.clock.now());
            EXPECT_EQ(other.port.read(), Bytes{static_cast<std::uint8_t>(7 + i)});
        }
        EXPECT_EQ(arrivals, row.arrivals);
    }
}

TEST_F(SimulatedDesktopTest, ClearUnsentKeepsWhatHasLeft) {
    openPort(world);
    const Bytes frame = simulator::frameOf("000000501");
    world.port.write(frame);
    desk.sleep(1); // the fourth byte is on its way
    world.port.clearUnsent();
    world.port.write(Bytes{0x03, 0x03}); // ends the frame: STX 0 0 0 ETX check
    desk.waitForBytes(1000);
    desk.sleep(20);
    ASSERT_EQ(world.unit.journal().frames.size(), 1u);
    EXPECT_EQ(world.unit.journal().frames[0].text, "000");
}

TEST_F(SimulatedDesktopTest, TheOperatorActsOnlyWhereAPersonCould) {
    struct Row {
        std::function<void(bool)> prevent; // and allow again
        const char* refused;
    };
    const Row rows[]{
        {[&](bool now) { form.enabled = !now; }, "the form is disabled"},
        {[&](bool now) { now ? desk.hide(form) : desk.show(form); }, "the form is hidden"},
        {[&](bool now) { form.second.enabled = !now; }, "the control is disabled"},
        {[&](bool now) { form.second.visible = !now; }, "the control is hidden"},
        {[&](bool now) { form.frame.visible = !now; }, "the control is hidden"},
    };
    form.second.container = "frame";
    for (const Row& row : rows) {
        row.prevent(true);
        EXPECT_FALSE(world.person.perform(click("form", "second")));
        EXPECT_EQ(world.person.done().back().refused, row.refused);
        row.prevent(false);
    }
    desk.boxStands = [&](const Box&) { EXPECT_EQ(world.person.refusal(click("form", "second")), "a box stands"); };
    desk.msgBox("", boxStyle::ok, "");
    EXPECT_FALSE(world.person.perform(click("other", "second")));
    EXPECT_FALSE(world.person.perform(choose("form", "list", 3)));
    EXPECT_TRUE(form.events.empty());
}

TEST_F(SimulatedDesktopTest, ControlsChangeBeforeTheirClickRuns) {
    std::vector<double> seen;
    form.inFrame[1].click = [&] { seen = {form.inFrame[0].value, form.inFrame[1].value, form.outside.value}; };
    EXPECT_TRUE(world.person.perform(click("form", "inFrame1")));
    EXPECT_EQ(seen, (std::vector<double>{0, 1, 1}));
    EXPECT_TRUE(world.person.perform(click("form", "check")));
    EXPECT_TRUE(world.person.perform(choose("form", "list", 1)));
    EXPECT_EQ(form.check.value, 1);
    EXPECT_EQ(form.list.listIndex, 1);
    EXPECT_EQ(world.person.possible().size(), 10u); // 6 clicks, 3 entries, the close box
}

TEST_F(SimulatedDesktopTest, BoxesAndDialogsAreAnsweredByTheOperator) {
    desk.answerBox = [](const Box&) { return boxAnswer::cancel; };
    EXPECT_EQ(desk.msgBox("", boxStyle::ok + boxStyle::critical, ""), boxAnswer::ok); // there is no such button
    EXPECT_EQ(desk.msgBox("", boxStyle::okCancel + boxStyle::question, ""), boxAnswer::cancel);
    EXPECT_EQ(desk.boxes().back().at, milliseconds(1000));

    FileDialog dialog;
    dialog.flags = FileDialog::overwritePrompt;
    dialog.cancelError = true;
    world.files.put("taken", "");
    desk.chooseFile = [](const AskedFile& asked) { return asked.askedToOverwrite ? "free" : "taken"; };
    desk.confirmOverwrite = [](const AskedFile&) { return false; };
    desk.showSave(dialog);
    EXPECT_EQ(dialog.fileName, "free");
    EXPECT_TRUE(desk.askedFiles().back().askedToOverwrite);
    desk.showOpen(dialog);
    EXPECT_EQ(dialog.fileName, "taken");
    desk.chooseFile = {};
    EXPECT_EQ(failureOf([&] { desk.showOpen(dialog); }), failureNumber::dialogCancelled);
    EXPECT_EQ(dialog.fileName, "taken");
    EXPECT_EQ(desk.askedFiles().size(), 3u);
}

TEST_F(SimulatedDesktopTest, WhatCanNeverGoOnIsStuckWhateverTheProgramCatches) {
    const std::vector<std::function<void()>> ways{
        // over and over
        [&] { desk.waitForEvents(never); },
        [&] { desk.waitForBytes(never); },
        [&] { desk.doEvents(); },
        [&] { world.port.countReceived(); },
        [&] {
            form.timer.tick = [&] { desk.msgBox("", boxStyle::ok, ""); }; // a box in each tick, on top of the last
            startTimer(100);
            desk.waitForEvents(never);
        },
        [&] { desk.sleep(INT32_MAX); },
    };
    openPort(world);
    for (const auto& way : ways) {
        const RunEnd end = desk.run([&] {
            try {
                for (;;) {
                    way();
                }
            } catch (const std::exception&) {
            }
        });
        EXPECT_EQ(end, RunEnd::stuck);
        EXPECT_NE(desk.stuckReason(), "");
    }
}

TEST_F(SimulatedDesktopTest, FailuresThatLeaveAnEventAreKept) {
    desk.schedule(1, [] { throw Failure(failureNumber::overflow, "Overflow"); });
    desk.schedule(2, [&] { desk.endProgram(); });
    EXPECT_EQ(desk.run({}), RunEnd::programEnded);
    EXPECT_EQ(desk.violations(), std::vector<std::string>{"a failure left an event: Overflow"});
    EXPECT_THROW(desk.doEvents(), ProgramEnd);
    EXPECT_EQ(desk.violations().size(), 2u);
}

TEST_F(SimulatedDesktopTest, AnAdapterThatIsPulledIsNoticedAndComesBack) {
    openPort(world);
    world.port.socket(3).pulledAt = milliseconds(50);
    world.port.socket(3).backAt = milliseconds(200);
    desk.waitForEvents(1000);
    EXPECT_EQ(desk.timeGetTime(), 50);
    desk.waitForEvents(100); // told once
    EXPECT_EQ(desk.timeGetTime(), 100);
    desk.waitForBytes(1000); // a poll is told each time
    EXPECT_EQ(desk.timeGetTime(), 100);
    EXPECT_TRUE(world.port.isOpen());
    EXPECT_EQ(failureOf([&] { world.port.write(Bytes{1}); }), failureNumber::portLost);
    world.port.close();
    EXPECT_EQ(failureOf([&] { world.port.countReceived(); }), failureNumber::portNotOpen);
    EXPECT_EQ(failureOf([&] { openPort(world); }), failureNumber::portMissing);
    desk.sleep(100);
    EXPECT_EQ(failureOf([&] { openPort(world); }), 0);
}

TEST_F(SimulatedDesktopTest, TheNthOperationFailsOnceOrForGood) {
    openPort(world);
    const Failure lost(failureNumber::portLost, "lost");
    const auto failures = [&](const OperationHook& hook) {
        world.port.operations().add(hook);
        std::string pattern;
        for (int i = 0; i < 4; ++i) {
            pattern += failureOf([&] { world.port.countReceived(); }) == 0 ? '.' : 'x';
        }
        world.port.operations().removeHooks();
        return pattern;
    };
    EXPECT_EQ(failures(failNth(Operation::countReceived, 2, Lasting::once, lost)), ".x..");
    EXPECT_EQ(failures(failNth(Operation::countReceived, 7, Lasting::forGood, lost)), "..xx");
    EXPECT_EQ(failures(failNth(Operation::readPort, 1, Lasting::forGood, lost)), "....");
    EXPECT_EQ(failures(failNthOfAll(world.port.operations().passed() + 4, Lasting::once, lost)), "...x");
}

TEST_F(SimulatedDesktopTest, HooksChangeWhatIsOnTheLineAndTheRecordShowsIt) {
    openPort(world);
    world.line.addHook([&](Passage& passage) {
        if (passage.direction == Direction::toUnit) {
            passage.bytes[0] ^= 1;
        } else {
            passage.bytes.resize(4);
            passage.at += milliseconds(3);
        }
    });
    Bytes frame = simulator::frameOf("000000501");
    frame[0] ^= 1;
    world.port.write(frame);
    desk.waitForBytes(1000);
    desk.sleep(10);
    EXPECT_EQ(world.port.read(), (Bytes{0x02, '0', '0', '0'}));
    world.port.write(Bytes{0x04, 0x05});
    EXPECT_EQ(world.line.record().text(), "     0.000000 tool: ETX \"000000501\" ETX \"7\"\n"
                                          "     0.000000 tool altered: STX \"000000501\" ETX \"7\"\n"
                                          "     0.005125 unit: STX \"00000005010000KP42 UNIT       V2.301\" ETX \"d\"\n"
                                          "     0.008125 unit altered: STX \"000\"\n"
                                          "     0.019000 tool: EOT 05\n"
                                          "     0.019000 tool altered: 05 05\n");
}

TEST_F(SimulatedDesktopTest, TheDiskTakesAndGivesBytesAtTheirPlace) {
    SimulatedFiles& files = world.files;
    files.put("a", "abcdef");
    Bytes four(4);
    const auto file = files.openBinary("a", FileAccess::write);
    file->read(2, four);
    EXPECT_EQ(four, (Bytes{'c', 'd', 'e', 'f'}));
    EXPECT_EQ(failureOf([&] { file->read(3, four); }), failureNumber::fileBroken);
    files.setRoom(3);
    file->write(4, four); // two bytes over old ones, two new ones
    EXPECT_EQ(files.find("a")->content, "abcdcdef");
    EXPECT_EQ(failureOf([&] { file->write(7, four); }), failureNumber::fileBroken);
    EXPECT_EQ(files.find("a")->content, "abcdcdecd");
    files.remove("a");
    EXPECT_EQ(failureOf([&] { files.length("a"); }), failureNumber::fileNotFound);
}

} // namespace
