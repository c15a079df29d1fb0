// The host without windows, on a pseudo terminal, meets the contract of all hosts for what it has. What it tells the one
// in the operator's place is in tests/stories/terminalHost.txt.
#include "platform/terminal/terminalHost.h"

#include "tests/lineFixture.h"

#include <list>

namespace {

using namespace platform;
using contract::Text;

struct Terminal {
    TerminalOperator theOperator;
    TerminalHost terminal{theOperator};
};

// A window event at its time.
struct Event : Form {
    Event() { timers.push_back(&timer); }
    Timer timer{"event"};
};

class TerminalFixture : Terminal, public LineFixture {
  public:
    TerminalFixture() : LineFixture(terminal) {
        theOperator.folder = folder;
        theOperator.answer = [this](const Message&) { return answer; };
        theOperator.openPath = theOperator.savePath = [this](const FileDialog&) { return path; };
        theOperator.progress = [this](double value, double max) {
            passed += (passed.empty() ? "" : " ") + std::to_string(std::lround(value)) + '/' +
                      std::to_string(std::lround(max));
        };
        theOperator.waiting = [this](bool events) { (events ? inEvents : inBytes) = true; };
        theOperator.transfer = [this](bool on) { add(on ? "transfer" : "over"); };
        commands["later"] = [this](Text wait) {
            Event& event = later.emplace_back();
            event.timer.tick = [this, &event] { add("later"), event.timer.setEnabled(false); };
            event.timer.setInterval(std::stoi(wait)), event.timer.setEnabled(true);
            desk.load(event);
        };
        commands["atBox"] = [this](Text script) { perform(script); };
        commands["ok"] = [this](Text) { answer = boxAnswer::ok; };
        commands["escape"] = [this](Text) { answer = boxAnswer::cancel; };
        commands["atDialog"] = [this](Text name) { path = name.empty() ? name : folder + name; };
        // of the bar since the last call
        commands["passed"] = [this](Text) { add(std::exchange(passed, {})); };
        commands["bar"] = [this](Text value) { form.control("bar").value = std::stod(value); };
        // the kinds of waits in which the operator has been asked since the last call
        commands["asked"] = [this](Text) {
            add(std::string(std::exchange(inBytes, false) ? "bytes" : "") +
                (std::exchange(inEvents, false) ? "events" : ""));
        };
        commands["awake"] = [this](Text on) { desk.keepAwake(on == "on"); };
        perform("device " + unit);
    }
    ~TerminalFixture() override {
        for (Event& event : later) {
            desk.unload(event);
        }
        theOperator.waiting = [](bool) {}; // the base still lets events run
    }

  private:
    int answer = boxAnswer::ok;
    std::string path, passed;
    bool inBytes = false, inEvents = false;
    std::list<Event> later;
};

} // namespace

namespace contract {

std::unique_ptr<Fixture> makeFixture() {
    return std::make_unique<TerminalFixture>();
}

INSTANTIATE_TEST_SUITE_P(Line, PlatformContract, testing::ValuesIn(sectionsOf("lineHost.txt")), testName);
INSTANTIATE_TEST_SUITE_P(Terminal, PlatformContract, testing::ValuesIn(sectionsOf("terminalHost.txt")), testName);

} // namespace contract
