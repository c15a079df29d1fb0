// What every desktop owes the program: one set of tests, which the test of each desktop runs in surroundings of its own.
#pragma once

#include "platform/desktop.h"
#include "tests/failureOf.h"
#include "tests/testForm.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <sstream>

namespace contract {

using namespace platform;
using Text = const std::string&;

// A desktop, and what stands around it, worked by commands of one word with an argument.
struct Surroundings {
    virtual ~Surroundings() = default;
    virtual Desktop& desktop() = 0;

    std::string folder; // with a separator at its end
    TestForm form;
    std::string said; // what came of the commands

    void say(Text text) { said += (said.empty() ? "" : " ") + text; }
    void say(const Bytes& bytes) { say(bytes.empty() ? "-" : std::string(bytes.begin(), bytes.end())); }
    void say(std::int64_t number) { say(std::to_string(number)); }
    static Bytes bytes(Text text) { return {text.begin(), text.end()}; }

    // Each desktop has its own:
    // - "press", "key", "reader" CONTROL: the operator, by mouse, by keyboard and through a screen reader; "choose"
    //   ENTRY of the list; "request": to close the window. What no person could do at that moment has no effect.
    // - "later" MS: an event of the window then, by the name of "later".
    // - "atBox" BUTTON: at the next box presses a button of the form, asks the form to close, and presses "ok", or the
    //   Escape key for anything else.
    // - "atDialog" NAME,OTHER: at the next file dialog gives a name in the folder, and the other where the first must
    //   not be overwritten. Without a name the dialog is cancelled.
    // - "room" BYTES: no file grows beyond that. "break": the next closing fails.
    // - "give" BYTES at the far end of COM3's line, "arrived" COUNT there, "chatter" MS: a byte every five,
    //   "pull" and "plug" the device, "hold" and "free" it by another program. There is no COM4.
    std::map<std::string, std::function<void(Text)>> commands;
};

class PlatformContract : public testing::TestWithParam<std::unique_ptr<Surroundings> (*)()> {
  protected:
    PlatformContract() {
        form.queryUnload = [this] { form.events.emplace_back("close"); };
        form.timer.tick = [this] { ticks.push_back(now()); };
        desk.load(form);
        desk.show(form);
        desk.doEvents();
        start = desk.timeGetTime();
        addCommands();
    }
    ~PlatformContract() override {
        port.close();
        desk.unload(form);
        desk.doEvents();
    }

    // Carries out commands between bars, and gives all results and failures.
    std::string run(const std::string& script) {
        around->said.clear();
        std::istringstream words(script);
        for (std::string word; std::getline(words, word, '|');) {
            const std::size_t blank = std::min(word.find(' '), word.size());
            try {
                around->commands.at(word.substr(0, blank))(word.substr(std::min(blank + 1, word.size())));
            } catch (const Failure& failure) {
                around->say(failureNames.at(failure.number()));
            }
        }
        return around->said;
    }

    std::int64_t now() const { return desk.timeGetTime() - start; } // milliseconds of the test
    void waitUntil(std::int64_t moment) const {
        while (now() < moment) {
            desk.waitForEvents(start + moment);
        }
    }
    void waitForTick(std::size_t number) const {
        while (ticks.size() < number) {
            desk.waitForEvents(never);
        }
    }
    void startTimer(int interval) {
        form.timer.setInterval(interval);
        form.timer.setEnabled(true);
    }

    const std::unique_ptr<Surroundings> around = GetParam()();
    Desktop& desk = around->desktop();
    SerialPort& port = desk.commPort();
    Files& files = desk.files();
    TestForm& form = around->form;
    std::int64_t start = 0;
    std::vector<std::int64_t> ticks; // their moments

  private:
    void addCommands();

    void setVisible(Text name, bool visible) {
        if (name != "form") {
            form.control(name).visible = visible;
        } else {
            visible ? desk.show(form) : desk.hide(form);
        }
        desk.doEvents();
    }
    void setEnabled(Text name, bool enabled) {
        (name == "form" ? form.enabled : form.control(name).enabled) = enabled;
        desk.doEvents();
    }
    void ask(Text names, void (Desktop::*show)(FileDialog&)) {
        around->commands.at("atDialog")(names);
        (desk.*show)(dialog);
        around->say('"' + dialog.fileName.substr(around->folder.size()) + '"');
    }
    // Until the port tells of so many bytes.
    void await(int count) const {
        for (const std::int64_t limit = desk.timeGetTime() + 1000;
             port.countReceived() < count && desk.timeGetTime() < limit;) {
            desk.waitForBytes(limit);
        }
    }

    FileDialog dialog{.initialDirectory = around->folder, .fileName = "", .filter = "Bin (*.bin)|*.bin||"};
    std::unique_ptr<BinaryFile> file;
    const std::map<int, std::string> failureNames{{failureNumber::fileNotFound, "missing"},
                                                  {failureNumber::fileBroken, "broken"},
                                                  {failureNumber::fileRefused, "refused"},
                                                  {failureNumber::invalidProperty, "invalid"},
                                                  {failureNumber::dialogCancelled, "cancelled"},
                                                  {failureNumber::portMissing, "missing"},
                                                  {failureNumber::portHeld, "held"},
                                                  {failureNumber::portNotOpen, "closed"},
                                                  {failureNumber::portLost, "lost"}};
};

inline void PlatformContract::addCommands() {
    const auto path = [this](Text name) { return around->folder + name; };
    around->commands.merge(std::map<std::string, std::function<void(Text)>>{
        {"show", [this](Text name) { setVisible(name, true); }},
        {"hide", [this](Text name) { setVisible(name, false); }},
        {"enable", [this](Text name) { setEnabled(name, true); }},
        {"disable", [this](Text name) { setEnabled(name, false); }},
        {"value", [this](Text name) { around->say(static_cast<std::int64_t>(form.control(name).value)); }},
        {"entry", [this](Text) { around->say(std::int64_t{form.list.listIndex}); }},
        {"events",
         [this](Text) {
             for (Text event : std::exchange(form.events, {})) {
                 around->say(event);
             }
         }},
        {"box", [this](Text style) { around->say(std::int64_t{desk.msgBox("text", std::stoi(style), "title")}); }},
        {"openDialog", [this](Text names) { ask(names, &Desktop::showOpen); }},
        {"saveDialog", [this](Text names) { ask(names, &Desktop::showSave); }},
        {"prompt", [this](Text) { dialog.flags = FileDialog::overwritePrompt; }},
        {"fail", [this](Text) { dialog.cancelError = true; }},

        {"open",
         [this](Text number) {
             port.choosePort(static_cast<std::int16_t>(number.empty() ? 3 : std::stoi(number)));
             port.setSettings("38400,n,8,1");
             port.open();
         }},
        {"close", [this](Text) { port.close(); }},
        {"isOpen", [this](Text) { around->say(port.isOpen() ? "yes" : "no"); }},
        {"settings", [this](Text settings) { port.setSettings(settings); }},
        {"sizes", [this](Text input) { port.setBufferSizes(std::stoi(input), 512); }},
        {"limit", [this](Text most) { port.setReadLimit(std::stoi(most)); }},
        {"count", [this](Text) { around->say(std::int64_t{port.countReceived()}); }},
        {"read", [this](Text) { around->say(port.read()); }},
        {"write", [this](Text text) { port.write(Surroundings::bytes(text)); }},
        {"clear", [this](Text) { port.clearReceived(); }},
        {"drop", [this](Text) { port.clearUnsent(); }},
        {"await", [this](Text count) { await(std::stoi(count)); }},

        {"exists", [=, this](Text name) { around->say(files.exists(path(name)) ? "yes" : "no"); }},
        {"length", [=, this](Text name) { around->say(files.length(path(name))); }},
        {"append", [=, this](Text line) { files.appendLine(path(line.substr(0, 1)), line.substr(2)); }},
        {"all", [=, this](Text name) { around->say(files.readAll(path(name))); }},
        {"toRead", [=, this](Text name) { file = files.openBinary(path(name), FileAccess::read); }},
        {"toWrite", [=, this](Text name) { file = files.openBinary(path(name), FileAccess::write); }},
        {"put", [this](Text text) { file->write(text[0] - '0', Surroundings::bytes(text.substr(2))); }},
        {"get",
         [this](Text from) {
             Bytes three(3);
             file->read(from[0] - '0', three);
             around->say(three);
         }},
        {"shut", [this](Text) { file->close(); }},
    });
}

struct Script {
    std::string commands;
    std::string outcome;
};

TEST_P(PlatformContract, AWindowTakesWhatAPersonCouldDoAndNothingElse) {
    for (const std::string what : {"form", "inFrame1", "frame"}) {
        for (const auto& [prevent, allow] : {std::pair("disable ", "|enable "), std::pair("hide ", "|show ")}) {
            for (const char* hand : {"|press ", "|key ", "|reader "}) {
                std::ostringstream script;
                script << prevent << what << hand << "inFrame1|request|events|value inFrame1" << allow << what << hand
                       << "inFrame1" << hand << "inFrame0|events";
                EXPECT_EQ(run(script.str()), what == "form" ? "0 inFrame1 inFrame0" : "close 0 inFrame1 inFrame0")
                    << script.str();
            }
        }
    }
    form.queryUnload = nullptr; // the program takes a window away, no one else
    EXPECT_EQ(run("request|press second|events"), "second");
    EXPECT_EQ(run("press check|value check|press check|value check|choose 1|entry|choose 0|entry|events"),
              "1 0 1 0 check check list list");
    form.inFrame[1].click = [&] { form.outside.value += form.inFrame[1].value * 2 + form.inFrame[0].value * 4; };
    EXPECT_EQ(run("press inFrame1|value outside"), "3"); // all change before the event; it is of another group
}

TEST_P(PlatformContract, AnEventMayTakeItsFormAwayAndBringItBack) {
    startTimer(5);
    form.first.click = [&] {
        desk.unload(form);
        EXPECT_FALSE(form.visible);
        form.first.click = nullptr; // as if the form were gone
        desk.sleep(10);
        desk.doEvents();
        EXPECT_TRUE(ticks.empty()); // its timers have stopped
        desk.load(form);
        desk.show(form);
        EXPECT_TRUE(form.visible);
    };
    EXPECT_EQ(run("press R&D|press second|events"), "second");
    waitForTick(1);
}

TEST_P(PlatformContract, ABoxGivesTheAnswerWhileEventsRun) {
    const Script rows[]{{"atBox ok|box 0", "1"},
                        {"atBox cancel|box 16", "1"}, // there is no such button
                        {"atBox ok|box 33", "1"},
                        {"atBox cancel|box 17", "2"}};
    startTimer(10);
    for (const Script& row : rows) {
        ticks.clear();
        EXPECT_EQ(run(row.commands), row.outcome) << row.commands;
        EXPECT_FALSE(ticks.empty());
        EXPECT_EQ(run("events"), ""); // the box stands before the form
    }
}

TEST_P(PlatformContract, AFileDialogGivesThePathWithoutBlanksAtItsEnds) {
    EXPECT_EQ(run("append o |openDialog missing 1 |saveDialog o|prompt|saveDialog o ,new|openDialog o|openDialog |fail|"
                  "saveDialog |saveDialog p"),
              "\"missing 1\" \"o\" \"new\" \"o\" \"o\" cancelled \"p\"");
}

// A real clock goes on all the time: moments are the earliest ones.

TEST_P(PlatformContract, TimersTickOnTimeAndOnceForAllTheyMissed) {
    form.timer.setEnabled(true);
    waitUntil(20);
    startTimer(40); // an interval at last
    desk.sleep(130);
    desk.waitForBytes(start + 185);
    EXPECT_TRUE(ticks.empty()); // neither lets events run
    desk.doEvents();
    EXPECT_TRUE(ticks.size() == 1 || ticks.size() == 2) << ticks.size();
    waitForTick(2);
    EXPECT_GE(ticks[1], 220);
    startTimer(40); // set anew
    const std::int64_t anew = now();
    desk.sleep(20);
    form.timer.setEnabled(false);
    form.timer.setEnabled(true); // stopped and started between two looks
    waitForTick(3);
    EXPECT_GE(ticks[2], anew + 60);
    form.timer.setEnabled(false);
    waitUntil(now() + 50);
    EXPECT_EQ(ticks.size(), 3U);
    form.timer.tick = [&] { // ticks also within a tick that lets events run
        ticks.push_back(now());
        waitForTick(5);
    };
    startTimer(10);
    waitForTick(4);
    EXPECT_EQ(ticks.size(), 5U);
}

TEST_P(PlatformContract, AWaitEndsWithAnEventOrOnTime) {
    run("later 20|later 20");
    desk.waitForBytes(start + 30);
    EXPECT_GE(now(), 30);
    EXPECT_EQ(run("events"), "");
    desk.doEvents();
    EXPECT_EQ(run("events|later 20"), "later later");
    while (form.events.empty()) {
        desk.waitForEvents(never);
    }
    EXPECT_GE(now(), 50);
    for (const auto& wait : {&Desktop::waitForEvents, &Desktop::waitForBytes}) {
        const std::int64_t before = now();
        desk.doEvents(); // has nothing to wait for
        (desk.*wait)(before - 1);
        EXPECT_LT(now(), before + 1000);
    }
}

TEST_P(PlatformContract, APortKeepsBytesAndTellsWhatHasFailed) {
    const std::string filled(1024, 'x');
    const Script rows[]{
        {"close|count|read|write x|clear|drop|sizes 9|isOpen", "closed closed closed closed closed closed no"},
        {"settings |settings 38400|settings 38400,n,8|settings 38400,n,8,1,|settings 38400,x,8,1|settings 0,n,8,1",
         "invalid invalid invalid invalid invalid invalid"},
        {"open 4|isOpen|hold|open|isOpen|free|open|open|isOpen|close|isOpen|close", "missing no held no held yes no"},
        {"limit 2|open|give abc|await 3|read|count|close|open|count", "ab 1 0"}, // the limit stays
        {"give abc|await 3|limit 0|read|read|limit -1", "abc - invalid"},
        {"write abc|write def|arrived 6", "abcdef"},
        {"sizes 0", "invalid"},
        {"give ab|await 2|give " + filled + "|await 1024|read", "ab" + filled.substr(2)}, // the rest is lost
        {"give " + filled + filled + filled + filled + filled + "|clear|count", "0"},
        {"sizes 5|give abcdefg|await 5|read", "abcde"},
        {"give abc|await 3|give de|clear|count|give fg|await 2|read", "0 fg"},
        {"give abc|await 3|pull|count|read|count|read|write x|clear|drop|isOpen", "3 abc lost lost lost lost lost yes"},
        {"plug|count|give abc|await 3|read|pull|write x|plug|write x|count", "0 abc lost 0"},
        {"pull|count|close|count|open", "lost closed missing"},
    };
    for (const Script& row : rows) {
        EXPECT_EQ(run(row.commands), row.outcome) << row.commands;
    }
}

TEST_P(PlatformContract, NewsEndAWaitOnce) {
    run("open");
    for (const char* news : {"give a", "read|pull|count"}) {
        for (const auto& wait : {&Desktop::waitForBytes, &Desktop::waitForEvents}) {
            run(news);
            const std::int64_t before = now();
            (desk.*wait)(start + before + 10'000);
            run("count"); // a use of the port: what nobody has read is news again
            desk.waitForBytes(start + before + 10'000);
            EXPECT_LT(now(), before + 5000);
            int waits = 0;
            for (const std::int64_t limit = now() + 20; now() < limit; ++waits) {
                (desk.*wait)(start + limit);
            }
            EXPECT_LT(waits, 10); // told already
        }
    }
}

TEST_P(PlatformContract, APortThatChattersDoesNotStarveTheWindows) {
    run("open|later 60|chatter 250"); // nobody reads
    waitUntil(100);
    EXPECT_EQ(run("events"), "later");
    startTimer(40);
    waitUntil(250);
    EXPECT_GE(ticks.size(), 2U);
}

TEST_P(PlatformContract, TheDiskKeepsBytesAtTheirPlaceAndTellsWhatHasFailed) {
    const Script rows[]{
        {"exists a|length a|all a|toRead a|append a 01234567|append a xy|exists a|length a|all a|exists ",
         "no missing missing missing yes 12 01234567\nxy\n no"},
        {"toWrite a|put 2 abc|get 5|get 9|shut|all a|get 0|shut", "567 xy\n 01abc567\nxy\n broken broken"},
        {"toRead a|get 9|get : ", "xy\n broken"},
        {"toWrite b|put 3 abc|shut|length b", "6"}, // a missing file comes to be
        {"length |toWrite ", "refused refused"},
        {"room 8|toWrite b|put 6 xyz|all b|append b x|break|shut|shut",
         std::string("broken \0\0\0abcxy broken broken broken", 36)},
    };
    for (const Script& row : rows) {
        EXPECT_EQ(run(row.commands), row.outcome) << row.commands;
    }
    run("room 1000000");
    const Bytes image(100'000, 'x');
    files.openBinary(around->folder + "c", FileAccess::write)->write(0, image);
    EXPECT_EQ(files.readAll(around->folder + "c"), std::string(image.begin(), image.end()));
    for (int times = 0; times < 300; ++times) { // closed or not, none stays open
        run("toRead a|get 0");
        EXPECT_EQ(run("toRead a|shut"), "");
    }
}

TEST_P(PlatformContract, FailuresNameWhatTheyAreAbout) {
    const std::string path = around->folder + "none";
    EXPECT_TRUE(failureIn([&] { files.length(path); }).description().starts_with(path));
    EXPECT_TRUE(failureIn([&] { port.read(); }).description().starts_with("COM"));
    std::string date = desk.dateAndTime();
    std::ranges::replace_if(
        date, [](char character) { return character >= '0' && character <= '9'; }, '9');
    EXPECT_EQ(date, "9999/99/99 99:99:99");
    EXPECT_TRUE(desk.programDirectory().ends_with('/'));
    EXPECT_GE(desk.screenSize().width, desk.screenSize().height);
}

} // namespace contract
