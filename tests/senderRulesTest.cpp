// The XMODEM sender against the rules of the protocol, written as two tables: every short sequence of what a receiver
// can answer, from the start of a transfer and from places near its limits and its end.
#include "tests/session.h"
#include "transfer/xModem.h"

#include <algorithm>
#include <array>

namespace {

using Answers = std::vector<int>; // a byte each, or silence up to the time limit

constexpr int silence = -1;
constexpr int other = -2; // in the tables: all that has no row of its own
constexpr int ack = simulator::ack;
constexpr int nak = simulator::nak;
constexpr int can = simulator::can;

constexpr int endPacket = blockCount + 1;

// What an answer does to a count.
enum class Count { keeps, clears, raises };

struct Rule {
    int answer;
    Count failures; // unknown bytes at the start, NAKs and time-outs in a reply wait
    Count cancels;
    enum Action { begins, acknowledges, sendsAgain, waits, ends } action;
    int result = 0;           // when a count that it raises comes to its limit, or when it ends
    bool clearsInput = false; // also when it is not the last one
};

constexpr std::array startRules{
    Rule{'C', Count::keeps, Count::keeps, Rule::begins},
    Rule{nak, Count::keeps, Count::keeps, Rule::begins},
    Rule{can, Count::clears, Count::raises, Rule::waits, 0x1003},
    Rule{silence, Count::keeps, Count::keeps, Rule::ends, 0x1002, true},
    Rule{other, Count::raises, Count::keeps, Rule::waits, 0x1001, true},
};
constexpr std::array replyRules{
    Rule{ack, Count::clears, Count::clears, Rule::acknowledges},
    Rule{nak, Count::raises, Count::clears, Rule::sendsAgain, 0x1001, true},
    Rule{silence, Count::raises, Count::clears, Rule::sendsAgain, 0x1002, true},
    Rule{can, Count::clears, Count::raises, Rule::waits, 0x1003},
    Rule{other, Count::keeps, Count::keeps, Rule::waits},
};

constexpr std::int64_t answerTime = 10; // milliseconds from one answer to the next

// What can be seen of a transfer: each packet sent, by number, each clearing of the input ("-"), and the end.
std::string endText(int result, std::int64_t duration, double progress) {
    return " = " + std::to_string(result) + " after " + std::to_string(duration) + " ms, bar at " +
           std::to_string(static_cast<int>(progress));
}

// The transfer as the tables have it, one answer after the other.
struct Expected {
    std::string course = {};
    bool ended = false;
    int packet = 0; // none: the start
    int failures = 0;
    int cancels = 0;
    std::int64_t duration = 0;
    double progress = 0;

    void take(int answer) {
        const auto& rules = packet == 0 ? startRules : replyRules;
        const auto found = std::ranges::find(rules, answer, &Rule::answer);
        const Rule& rule = found == rules.end() ? rules.back() : *found;
        duration += answer != silence ? answerTime : packet == 0 ? 60'000 : 10'000;
        const bool atLimit = apply(rule.failures, failures, 10) || apply(rule.cancels, cancels, 2);
        if (atLimit || rule.action == Rule::ends) {
            // What is still on its way in goes, but not when a start is cancelled.
            course += packet == 0 && answer == can ? "" : "-";
            end(rule.result);
        } else {
            act(rule);
        }
    }

    // True when the count comes to its limit.
    static bool apply(Count rule, int& count, int limit) {
        count = rule == Count::clears ? 0 : rule == Count::raises ? count + 1 : count;
        return rule == Count::raises && count == limit;
    }

    void act(const Rule& rule) {
        switch (rule.action) {
        case Rule::begins: failures = cancels = 0; [[fallthrough]];
        case Rule::acknowledges:
            progress = 128.0 * std::min(packet, blockCount);
            if (packet++ == endPacket) {
                end(0);
                return;
            }
            [[fallthrough]];
        case Rule::sendsAgain: course += "-" + std::to_string(packet); break;
        default: course += rule.clearsInput ? "-" : "";
        }
    }

    void end(int result) {
        ended = true;
        course += endText(result, duration, progress);
    }
};

// Plays a receiver to the program's sender. The unit itself is not heard.
class Sender : public testing::Test {
  protected:
    Sender() {
        session.start();
        world.clock.setLimit(never);
        for (int block = 1; block <= blockCount; ++block) { // a block's data begin with the high byte of its number
            shared.firmwareImage[static_cast<std::size_t>((block - 1) * blockSize)] =
                static_cast<std::uint8_t>(block >> 8);
        }
        world.line.setPace(unpaced);
        world.line.addHook([this](Passage& passage) {
            const Bytes sent = std::exchange(passage.bytes, {});
            if (passage.direction == Direction::toUnit) {
                course += std::to_string(sent.size() == 1 ? endPacket : sent[3] * 256 + sent[1]);
            }
        });
        world.port.operations().add(
            [this](const OperationCall& call) { course += call.operation == Operation::clearReceived ? "-" : ""; });
    }

    void put(int answer, Micros at) { world.line.put(Direction::fromUnit, {static_cast<std::uint8_t>(answer)}, at); }

    std::string transfer(const Answers& answers) {
        const Micros begin = world.clock.now();
        Micros at = begin;
        Micros limit = fromSeconds(60);
        for (const int answer : answers) {
            at += answer == silence ? limit : fromMilliseconds(answerTime);
            if (answer != silence) {
                put(answer, at);
            }
            limit = answer == 'C' || answer == nak ? fromSeconds(10) : limit;
        }
        course.clear();
        frmWait().prbComm.value = 0;
        int result = 0;
        EXPECT_EQ(world.desktop.run([&] { result = xModem::xModemS(); }), RunEnd::idle);
        const Timer& limitTimer = frmWait().timerWait;
        EXPECT_FALSE(limitTimer.enabled() || limitTimer.interval() != 0);
        return course + endText(result, (world.clock.now() - begin) / 1000, frmWait().prbComm.value);
    }

    // Each sequence of up to `depth` answers after those given; after the last one there is silence.
    void tryAll(Answers answers, int depth) {
        Expected expected;
        for (const int answer : answers) {
            expected.take(answer);
        }
        if (depth > 0 && !expected.ended) {
            for (const int answer : {ack, nak, can, silence, int{'C'}}) {
                answers.push_back(answer);
                tryAll(answers, depth - 1);
                answers.pop_back();
            }
            return;
        }
        while (!expected.ended) {
            answers.push_back(silence);
            expected.take(silence);
        }
        if (!HasFailure()) {
            EXPECT_EQ(transfer(answers), expected.course) << testing::PrintToString(answers);
        }
    }

    Session session;
    World& world = session.world;
    std::string course;
};

Answers repeat(int count, Answers answers) {
    Answers repeated;
    while (count-- > 0) {
        repeated.insert(repeated.end(), answers.begin(), answers.end());
    }
    return repeated;
}

Answers operator+(Answers first, const Answers& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(Sender, KeepsTheRulesOfTheStart) {
    tryAll({}, 7);
    tryAll(repeat(8, {0x00}), 4);
    tryAll(repeat(8, {0xFF}) + Answers{can}, 4);
}

TEST_F(Sender, KeepsTheRulesOfReplies) {
    for (const Answers& failures : {repeat(8, {nak}), repeat(8, {silence}), repeat(4, {nak, 0x00, silence})}) {
        tryAll(Answers{'C'} + failures, 5);
        tryAll(Answers{nak, ack} + failures + Answers{can}, 4);
    }
}

TEST_F(Sender, KeepsTheRulesAtTheEnd) {
    tryAll(Answers{'C'} + repeat(blockCount - 1, {ack}), 4);
}

TEST_F(Sender, TakesAnyByteForWhatItIs) {
    for (int byte = 0; byte <= 0xFF; ++byte) {
        tryAll({byte}, 1);
        tryAll({'C', byte}, 1);
        tryAll({nak, nak, byte}, 1);
    }
}

TEST_F(Sender, TakesAByteThatComesWithTheLimit) {
    put('C', world.clock.now() + fromSeconds(60));
    put(ack, world.clock.now() + fromSeconds(70));
    EXPECT_TRUE(transfer({}).starts_with("-1-2-2"));
}

TEST_F(Sender, LetsWindowEventsRunThoughBytesWait) {
    std::string seen;
    for (const std::uint8_t answer : Bytes{'C', 'x', 'x', 'x'}) {
        put(answer, world.clock.now());
    }
    world.clock.advanceTo(world.clock.now() + 1);
    world.desktop.schedule(world.clock.now(), [&] { seen += course + "!"; });
    world.desktop.schedule(world.clock.now(), [&] { seen += course + "!"; });
    transfer({});
    EXPECT_EQ(seen, "!-1!");
}

} // namespace
