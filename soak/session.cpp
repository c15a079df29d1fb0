#include "soak/session.h"

#include "simulator/frame.h"
#include "story/player.h"
#include "story/record/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>
#include <utility>

namespace soak {

using namespace platform;

namespace {

// Usual lines, and lines with unusual timing: bits in a second, latency of the adapter, whole writes.
constexpr std::array paces{"38400 0.001", "38400 0.001", "38400 0.001 whole", "38400 0", "38400 0.016", "0 0 whole"};

// Files that the operator may name, the usual one first.
constexpr std::array loadPaths{
    World::firmwarePath, World::firmwarePath, World::firmwarePath, "/other", "/short", "/none"};
constexpr std::array savePaths{World::savedPath, World::savedPath, "/long", "/readOnly"};

// How often the operator uses a control, compared with a control that is not listed.
constexpr std::array<std::pair<std::string_view, int>, 6> weights{
    {{"cmdUpgrade", 50}, {"cmdPresent", 25}, {"cmdLoading", 30}, {"chkVerify", 5}, {"cmdTest", 60}, {"cmdCancel", 9}}};

template <class... Parts>
std::string words(const Parts&... parts) {
    std::ostringstream text;
    const char* blank = "";
    ((text << std::exchange(blank, " ") << parts), ...);
    return text.str();
}

// A time that the commands read, in seconds.
std::string seconds(Micros time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6f", static_cast<double>(time) / 1e6);
    return text.data();
}

std::string spreadTime(Random& random, int least, int most) { // milliseconds
    return seconds(fromMilliseconds(random.spread(least, most)));
}

std::string escapedBytes(const Bytes& bytes) {
    return story::escaped({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

using Commands = std::vector<std::string>;

std::string lineFault(Random& random, const char* direction, const char* kind, const std::string& rest = "") {
    constexpr std::array rates{1000, 300, 50, 10};
    const std::int64_t last = random.chance(500) ? 1 : random.spread(2, 2000);
    return words("line", direction, kind, last, last == 1 ? 1000 : random.pick(rates)) +
           (rest.empty() ? "" : ' ' + rest);
}

const char* someDirection(Random& random) {
    return random.chance(500) ? "toUnit" : "fromUnit";
}

Commands flood(Random& random) {
    const Bytes answers[]{simulator::frameOf("00000030050000"), {simulator::ack}, {simulator::nak}, Bytes(400, '~')};
    Commands commands;
    Micros moment = 0;
    for (std::int64_t burst = random.spread(1, 20); burst > 0; --burst) {
        commands.push_back(words("noise", seconds(moment), escapedBytes(random.pick(answers))));
        moment += fromMilliseconds(random.spread(1, 5000));
    }
    return commands;
}

std::string replyOtherwise(Random& random) {
    constexpr std::array prefixes{"any", "0501", "0601", "0101", "300550", "300551", "300552", "300554"};
    constexpr std::array codes{"0000", "0101", "1001", "1004", "1101", "2204", "1234", "1234", "5555", "A0F1"};
    constexpr std::array endCodes{"00", "0F", "11", "13", "FF"};
    std::string what;
    switch (random.below(6)) {
    case 0: what = words("end", random.pick(endCodes)); break;
    case 1: what = "silent"; break;
    case 2: what = "wrongCheck"; break;
    case 3: what = words("delayed", spreadTime(random, 1, 16'000)); break;
    default: what = random.pick(codes); break;
    }
    const char* prefix = random.pick(prefixes);
    return words("reply", prefix, random.chance(600) ? 0 : 1, what);
}

std::string breakOperations(Random& random, const char* command, std::int64_t within) {
    const std::int64_t n = random.spread(1, within);
    return words(command, n, random.chance(500) ? "once" : "forever");
}

struct FaultRow {
    const char* name;
    Commands (*draw)(Random&);
};
const FaultRow faultRows[]{
    {"bytes changed",
     [](Random& random) -> Commands {
         constexpr std::array kinds{"lose", "flip", "twice", "insert", "insert", "cut", "drop", "repeat"};
         const char* direction = someDirection(random);
         const char* kind = random.pick(kinds);
         return {lineFault(random, direction, kind)};
     }},
    {"bytes late",
     [](Random& random) -> Commands {
         const char* direction = someDirection(random);
         return {lineFault(random, direction, "delay", spreadTime(random, 1, 25'000))};
     }},
    {"another answer to packets",
     [](Random& random) -> Commands {
         using namespace simulator;
         const Bytes answers[]{{ack}, {nak}, {can}, {can, can}, {can, ack}, {can, nak}, {eot}, {crcStart}};
         return {lineFault(random, "fromUnit", "replace", escapedBytes(random.pick(answers)))};
     }},
    {"NAK after NAK, and between them CAN",
     [](Random& random) -> Commands {
         const std::int64_t last = random.between(9, 30);
         return {words("line fromUnit replace", last, 1000, escapedBytes({simulator::nak})),
                 words("line fromUnit replace", last, 100, escapedBytes({simulator::can}))};
     }},
    {"noise and early answers", flood},
    {"another reply to commands", [](Random& random) -> Commands { return {replyOtherwise(random)}; }},
    {"silence or restart",
     [](Random& random) -> Commands {
         const std::string off = seconds(random.spread(1, fromMilliseconds(100)));
         return {words("restart", off, spreadTime(random, 10, 60'000))};
     }},
    {"blocks in pieces",
     [](Random& random) -> Commands {
         const std::string vary = words("varyPieces", random.below(1'000'000));
         constexpr std::array<int, 11> tricky{1, 2, 3, 4, 5, 126, 127, 128, 129, 130, 131};
         const std::int64_t size = random.chance(500) ? random.pick(tricky) : random.between(1, 131);
         return {random.chance(500) ? vary : words("pieces", size, spreadTime(random, 1, 4000))};
     }},
    {"blocks late", [](Random& random) -> Commands { return {words("sendDelay", spreadTime(random, 1, 4000))}; }},
    {"packets sent again soon",
     [](Random& random) -> Commands { return {words("answerLimit", spreadTime(random, 50, 2500))}; }},
    {"EOT sent once", [](Random&) -> Commands { return {"oneEnd"}; }},
    {"port fails", [](Random& random) -> Commands { return {breakOperations(random, "failPort", 64)}; }},
    {"an operation of the port fails",
     [](Random& random) -> Commands {
         constexpr std::array operations{"writePort", "clearReceived", "countReceived", "readPort"};
         return {words("fail", random.pick(operations), random.spread(1, 8))};
     }},
    {"adapter pulled",
     [](Random& random) -> Commands {
         const Micros pulled = random.spread(1, fromMilliseconds(200));
         const Micros back = pulled + fromMilliseconds(random.spread(1, 60'000));
         return random.chance(300) ? Commands{words("pull", seconds(pulled))}
                                   : Commands{words("pull", seconds(pulled)), words("plug", seconds(back))};
     }},
    {"disk fails", [](Random& random) -> Commands { return {breakOperations(random, "failDisk", 16)}; }},
    {"disk full", [](Random& random) -> Commands { return {words("room", random.below(300'000))}; }},
    {"unexpected actions of the operator",
     [](Random& random) {
         Commands commands;
         for (std::int64_t actions = random.spread(1, 8); actions > 0; --actions) {
             const std::string after = spreadTime(random, 1, 60'000);
             commands.push_back(words("after", after, "anything", random.below(1'000'000)));
         }
         return commands;
     }},
    {"operator cancels", [](Random& random) -> Commands { return {words("cancels", random.below(1'000'000))}; }},
};

// Draws the lines of one session; each one depends on what the lines before it have led to.
struct Drawing {
    explicit Drawing(std::uint64_t seed) : random(seed), result{words("==", "seed", seed) + '\n', {}, {}, 0} {}

    void add(char mark, const std::string& command) {
        if (session->goesOn()) {
            result.story += session->perform(mark + (' ' + command) + '\n');
        }
    }
    void event(const std::string& command) { add('.', command); }

    Random random;
    std::unique_ptr<story::Session> session = story::newSession();
    Result result;
};

void drawWorld(Drawing& drawing) {
    Random& random = drawing.random;
    const std::int64_t image = random.below(1'000'000);
    for (const std::string& command :
         {std::string("rules"), std::string("controls"), words("lineSeed", random.below(1'000'000)),
          words("pace", random.pick(paces)), words("sample", World::firmwarePath, image, "AMPFIRM"),
          words("sample", "/other", image, "KP42FIRM"), words("image", image + 1), words("interfaceImage", image + 2),
          words("copy", World::firmwarePath, "/short"), std::string("cutAt /short 245759"),
          words("copy", World::firmwarePath, "/long"), std::string("put /long xxxxxxxx"), std::string("put /readOnly"),
          std::string("readOnly /readOnly"), words("startDelay", spreadTime(random, 1, 5000)),
          words("replyDelay", spreadTime(random, 1, 300)), words("reaction", spreadTime(random, 10, 8000))}) {
        drawing.event(command);
    }
    if (random.chance(300)) {
        drawing.event(words("packetDelay", spreadTime(random, 1, 200)));
    }
    if (random.chance(500)) {
        drawing.event("checksum");
    }
}

// The beginning and the end of a transfer get more faults than the middle.
void drawFaults(Drawing& drawing, int perMille) {
    constexpr int endOfTransfer = 1925; // messages
    Random& random = drawing.random;
    for (; random.chance(perMille); perMille = 350) {
        const std::int64_t part = random.below(100);
        const std::int64_t place = part < 45   ? random.between(0, 10)
                                   : part < 70 ? random.spread(1, endOfTransfer)
                                               : random.between(endOfTransfer - 10, endOfTransfer + 5);
        const FaultRow& row = random.pick(faultRows);
        ++drawing.result.counts[row.name];
        for (const std::string& command : row.draw(random)) {
            drawing.event(place == 0 ? command : words("at message", place, command));
        }
    }
}

void drawAction(Drawing& drawing) {
    std::vector<Action> actions;
    for (const Action& action : drawing.session->world().theOperator.possible()) {
        const auto weight = std::ranges::find(weights, action.control, &std::pair<std::string_view, int>::first);
        actions.insert(actions.end(), weight == weights.end() ? 1 : static_cast<std::size_t>(weight->second), action);
    }
    const Action action = drawing.random.pick(actions);
    const std::string index = action.index < 0 ? "" : ' ' + std::to_string(action.index);
    drawing.add('*', action.kind == Action::Kind::close    ? words("close", action.form)
                     : action.kind == Action::Kind::choose ? words("choose", action.entry + 1)
                                                           : words("press", action.control) + index);
}

} // namespace

Result runSession(std::uint64_t seed) {
    Drawing drawing(seed);
    Random& random = drawing.random;
    drawWorld(drawing);
    drawFaults(drawing, 100);
    drawing.add('*', "start");
    for (std::int64_t actions = random.between(2, 6); actions > 0 && drawing.session->goesOn(); --actions) {
        drawFaults(drawing, 700);
        drawing.event(words("dialog", random.pick(loadPaths)));
        drawing.event(words("save", random.pick(savePaths)));
        drawAction(drawing);
    }
    drawing.add('*', seed % 2 == 0 ? "finish write" : "finish save");
    Result& result = drawing.result;
    result.story += drawing.session->end();
    const story::Monitor& monitor = *drawing.session->monitor();
    result.violation = monitor.violations.empty() ? "" : monitor.violations.front();
    for (const auto& [end, count] : monitor.counts) {
        result.counts[end] += count;
    }
    result.virtualTime = drawing.session->world().clock.now();
    return result;
}

} // namespace soak
