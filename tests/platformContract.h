// The contract of every host, as rows of commands with their results: tests/stories/everyHost.txt. The test of each
// host performs them with its own Fixture.
//   command argument; command ... = results, failures and events in their order
// {a/b} stands for a row with a and a row with b, a number before a row repeats it, and commas separate the commands in an
// argument. In bytes, x*9 is nine times x, and ^ is a control character.
//
// The window of a section, "form", has the controls of tests/testForm.h; the port is COM3, and there is no COM4. Times are
// milliseconds since the last "mark".
//   events    click: the control, and in brackets the options and boxes that are on then; entryN: that one was chosen;
//             close: a close request; later: the event of "later"
//   failures  missing, held, forbidden, refused: an open; closed, lost: the port; broken: a file; invalid: a setting;
//             cancelled: a dialog; "cause" adds the description of the last one
//   restore   makes the window and all controls visible and enabled
//   since T   adds "early" before that time; within T adds "late" after it
//   tick N    waits for that many ticks; ticks N adds none, some, or many: more than N
//   nest N    each tick waits until there have been N ticks
//   again N   performs a command N times
//   await N   waits until N bytes are received; next: until there is any result
//   get N     the three bytes from place N of the open file; put N, shut, toRead and toWrite: the same file
#pragma once

#include "base/failure.h"
#include "platform/host.h"
#include "tests/storyFile.h"
#include "tests/testForm.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <sstream>

namespace contract {

using namespace platform;
using Text = const std::string&;

// A host and its test environment. Times are milliseconds since the last "mark". On a real clock they are lower limits.
class Fixture {
  public:
    Fixture(Host& host, Text place);
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;
    virtual ~Fixture() {
        port.close();
        desk.unload(form);
        desk.doEvents();
    }

    // Checks a row, with each of its alternatives.
    void check(Text row) {
        if (const std::size_t open = row.find('{'); open < row.size()) {
            const std::size_t end = row.find('}', open);
            std::istringstream choices(row.substr(open + 1, end - open - 1));
            for (std::string choice; std::getline(choices, choice, '/');) {
                check(row.substr(0, open) + choice + row.substr(end + 1));
            }
            return;
        }
        const std::size_t begin = row.find_first_not_of("0123456789");
        const std::size_t end = row.find(" =");
        for (int times = begin == 0 ? 1 : std::stoi(row); times > 0; --times) {
            results.clear();
            perform(row.substr(begin, end - begin));
        }
        EXPECT_EQ(results, row.substr(std::min(end + 3, row.size()))) << row;
    }

  protected:
    void perform(Text script, char separator = ';') {
        std::istringstream rest(script);
        for (std::string command; std::getline(rest >> std::ws, command, separator);) {
            const std::size_t blank = std::min(command.find(' '), command.size());
            try {
                commands.at(command.substr(0, blank))(command.substr(std::min(blank + 1, command.size())));
            } catch (const Failure& failure) {
                failed = failure.description();
                add(failureNames.at(failure.number()));
            }
        }
    }
    void add(Text text) { results += (results.empty() ? "" : " ") + text; }
    void add(std::int64_t number) { add(std::to_string(number)); }
    template <class Sequence>
    void addBytes(const Sequence& bytes) {
        std::string text(bytes.begin(), bytes.end());
        std::erase(text, '\r'); // a part of the line end on some systems
        std::ranges::replace_if(
            text, [](char sign) { return sign < ' '; }, '^');
        add(text.size() > 50 ? text.substr(0, 1) + '*' + std::to_string(text.size()) : text.empty() ? "-" : text);
    }
    static Bytes bytes(Text text) {
        const std::size_t star = text.find('*');
        return star < text.size() ? Bytes(std::stoul(text.substr(star + 1)), text[0]) : Bytes(text.begin(), text.end());
    }
    std::int64_t now() const { return desk.timeGetTime() - start; }
    // Waits for two seconds at most.
    void waitFor(const std::function<bool()>& condition) const {
        for (const std::int64_t end = desk.timeGetTime() + 2000; !condition() && desk.timeGetTime() < end;) {
            desk.waitForEvents(end);
        }
    }
    void ask(Text names, void (Host::*show)(FileDialog&)) {
        dialog.initialDirectory = folder;
        commands.at("atDialog")(names);
        (desk.*show)(dialog);
        add('"' + dialog.fileName.substr(folder.size()) + '"');
    }

    // The commands that each host implements:
    // - "input" mouse, keyboard or screenReader: how the operator works; "press" CONTROL; "choose" ENTRY of the list;
    //   "closeRequest" to the window. What no operator could do at that moment has no effect.
    // - "later" MS: an event of the window then.
    // - "atBox" COMMANDS: at the next box, the last of them "ok" or "escape".
    // - "atDialog" NAME,OTHER: at the next file dialog gives a name in the folder, and the other where the first must
    //   not be overwritten. Without a name the dialog is cancelled.
    // - "room" BYTES: no file grows beyond that. "break": the next closing fails.
    // - "give" BYTES at the far end of COM3's line, "arrived" COUNT: what has come there since, at most that many,
    //   "stream" MS: a byte every five,
    //   "pull" and "plug" the device, "hold" and "free" it by another program. There is no COM4.
    std::map<std::string, std::function<void(Text)>> commands;

    Host& desk;
    SerialPort& port = desk.commPort();
    Files& files = desk.files();
    TestForm form;
    FileDialog dialog{.initialDirectory = "", .fileName = "", .filter = "Bin (*.bin)|*.bin||"};
    const std::string folder; // with a separator at its end
    std::string failed;       // the description of the last failure

    std::int64_t ticks = 0;

  private:
    std::string results; // of the commands
    std::int64_t start = 0;
    std::int64_t nested = 0; // each tick waits for this number of ticks
    std::unique_ptr<BinaryFile> file;
    Bytes part = Bytes(3);
    const std::map<int, std::string> failureNames{{failureNumber::fileNotFound, "missing"},
                                                  {failureNumber::fileBroken, "broken"},
                                                  {failureNumber::fileRefused, "refused"},
                                                  {failureNumber::invalidProperty, "invalid"},
                                                  {failureNumber::dialogCancelled, "cancelled"},
                                                  {failureNumber::portMissing, "missing"},
                                                  {failureNumber::portForbidden, "forbidden"},
                                                  {failureNumber::portHeld, "held"},
                                                  {failureNumber::portRefused, "refused"},
                                                  {failureNumber::portNotOpen, "closed"},
                                                  {failureNumber::portLost, "lost"}};
};

inline Fixture::Fixture(Host& host, Text place) : desk(host), folder(place) {
    commands["show"] = [this](Text name) { form.control(name).visible = true; };
    commands["hide"] = [this](Text name) { form.control(name).visible = false; };
    commands["enable"] = [this](Text name) { form.control(name).enabled = true; };
    commands["disable"] = [this](Text name) { form.control(name).enabled = false; };
    commands["restore"] = [this](Text) {
        for (Control* control : form.controls) {
            control->visible = control->enabled = true;
        }
        form.enabled = true;
        desk.show(form);
    };
    commands["showForm"] = [this](Text) { desk.show(form); };
    commands["hideForm"] = [this](Text) { desk.hide(form); };
    commands["enableForm"] = [this](Text) { form.enabled = true; };
    commands["disableForm"] = [this](Text) { form.enabled = false; };
    commands["load"] = [this](Text) { desk.load(form), desk.show(form); };
    commands["unload"] = [this](Text) { desk.unload(form); };
    commands["visible"] = [this](Text) { add(form.visible ? "visible" : "hidden"); };
    commands["noCloseHandler"] = [this](Text) { form.queryUnload = nullptr; };
    commands["onClick"] = [this](Text script) { form.control("R&D").click = [=, this] { perform(script, ','); }; };
    commands["toggle"] = [this](Text name) { form.control(name).value = form.control(name).value == 0 ? 1 : 0; };
    commands["value"] = [this](Text name) { add(std::lround(form.control(name).value)); };
    commands["box"] = [this](Text style) {
        add(desk.msgBox({0, style.substr(std::min(style.find(' ') + 1, style.size())), std::stoi(style), "title"}));
    };
    commands["openDialog"] = [this](Text names) { ask(names, &Host::showOpen); };
    commands["saveDialog"] = [this](Text names) { ask(names, &Host::showSave); };
    commands["prompt"] = [this](Text) { dialog.flags = FileDialog::overwritePrompt; };
    commands["fail"] = [this](Text) { dialog.cancelError = true; };
    commands["date"] = [this](Text) {
        std::string text = desk.dateAndTime();
        std::ranges::replace_if(
            text, [](char sign) { return sign >= '0' && sign <= '9'; }, '9');
        add(text);
    };

    commands["mark"] = [this](Text) { start = desk.timeGetTime(), ticks = 0; };
    commands["since"] = [this](Text moment) { now() < std::stoi(moment) ? add("early") : void(); };
    commands["within"] = [this](Text moment) { now() > std::stoi(moment) ? add("late") : void(); };
    commands["again"] = [this](Text script) {
        for (int times = std::stoi(script); times > 0; --times) {
            perform(script.substr(script.find(' ') + 1));
        }
    };
    commands["sleep"] = [this](Text length) { desk.sleep(std::stoi(length)); };
    commands["events"] = [this](Text) { desk.doEvents(); };
    commands["bytes"] = [this](Text moment) { desk.waitForBytes(start + std::stoi(moment)); };
    commands["wait"] = [this](Text moment) { desk.waitForEvents(start + std::stoi(moment)); };
    commands["until"] = [this](Text moment) {
        while (now() < std::stoi(moment)) {
            desk.waitForEvents(start + std::stoi(moment));
        }
    };
    commands["next"] = [this](Text) { waitFor([this] { return !results.empty(); }); };
    commands["clearResults"] = [this](Text) { results.clear(); };
    commands["echo"] = [this](Text text) { add(text); };
    commands["timer"] = [this](Text interval) { form.timer.setInterval(std::stoi(interval)); };
    commands["start"] = [this](Text) { form.timer.setEnabled(true); };
    commands["stop"] = [this](Text) { form.timer.setEnabled(false); };
    commands["nest"] = [this](Text count) { nested = std::stoi(count); };
    commands["tick"] = [this](Text count) { waitFor([&] { return ticks >= std::stoi(count); }); };
    commands["ticks"] = [this](Text most) { add(ticks == 0 ? "none" : ticks > std::stoi(most) ? "many" : "some"); };

    commands["choosePort"] = [this](Text number) { port.choosePort(static_cast<std::int16_t>(std::stoi(number))); };
    commands["open"] = [this](Text) { port.open(); };
    commands["close"] = [this](Text) { port.close(); };
    commands["reopen"] = [this](Text) { port.reopenIfLost(); };
    commands["isOpen"] = [this](Text) { add(port.isOpen() ? "yes" : "no"); };
    commands["settings"] = [this](Text settings) { port.setSettings(settings); };
    commands["sizes"] = [this](Text input) { port.setBufferSizes(std::stoi(input), 512); };
    commands["limit"] = [this](Text most) { port.setReadLimit(std::stoi(most)); };
    commands["count"] = [this](Text) { add(port.countReceived()); };
    commands["await"] = [this](Text count) { waitFor([&] { return port.countReceived() >= std::stoi(count); }); };
    commands["read"] = [this](Text) { addBytes(port.read()); };
    commands["write"] = [this](Text text) { port.write(bytes(text)); };
    commands["clear"] = [this](Text) { port.clearReceived(); };
    commands["drop"] = [this](Text) { port.clearUnsent(); };

    commands["exists"] = [this](Text name) { add(files.exists(folder + name) ? "yes" : "no"); };
    commands["length"] = [this](Text name) { add(files.length(folder + name)); };
    commands["append"] = [this](Text line) { files.appendLine(folder + line.substr(0, 1), line.substr(2)); };
    commands["all"] = [this](Text name) { addBytes(files.readAll(folder + name)); };
    commands["toRead"] = [this](Text name) { file = files.openBinary(folder + name, FileAccess::read); };
    commands["toWrite"] = [this](Text name) { file = files.openBinary(folder + name, FileAccess::write); };
    commands["put"] = [this](Text text) { file->write(std::stoi(text), bytes(text.substr(text.find(' ') + 1))); };
    commands["get"] = [this](Text from) { file->read(std::stoi(from), part), addBytes(part); };
    commands["shut"] = [this](Text) { file->close(); };
    commands["cause"] = [this](Text) { // without folder and brackets
        std::string text = failed.substr(failed.starts_with(folder) ? folder.size() : 0);
        if (const std::size_t open = text.find(" ("); open < text.size()) {
            text.erase(open, text.find(')') + 1 - open);
        }
        add(text);
    };
    for (Control* control : form.controls) {
        control->click = [this, control] { // and the values that have already changed
            std::string on;
            for (const char* name : {"inFrame0", "inFrame1", "outside", "check"}) {
                on += form.control(name).value == 0 ? "" : std::string(on.empty() ? "" : ",") + name;
            }
            add(control->kind == ControlKind::button         ? control->name
                : control->kind == ControlKind::dropDownList ? "entry" + std::to_string(control->listIndex)
                                                             : control->name + '[' + on + ']');
        };
    }
    form.queryUnload = [this] { add("close"); };
    form.timer.tick = [this] {
        ++ticks;
        waitFor([this] { return ticks >= nested; });
    };
    port.setSettings("38400,n,8,1");
    port.choosePort(3);
    desk.load(form);
    desk.show(form);
}

std::unique_ptr<Fixture> makeFixture(); // each host's

class PlatformContract : public testing::TestWithParam<Section> {};

TEST_P(PlatformContract, Holds) {
    const std::unique_ptr<Fixture> fixture = makeFixture();
    std::istringstream rows(GetParam().text);
    for (std::string row; std::getline(rows, row);) {
        fixture->check(row);
    }
}

inline std::string testName(const testing::TestParamInfo<Section>& section) {
    std::string name = section.param.name;
    std::erase(name, ' ');
    return name;
}
INSTANTIATE_TEST_SUITE_P(Every, PlatformContract, testing::ValuesIn(sectionsOf("everyHost.txt")), testName);

} // namespace contract
