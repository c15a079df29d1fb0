// The XMODEM sender against the rules of the protocol, written as two tables: every short sequence of what a receiver
// can answer, from the start of a transfer and from places near its limits and its end.
#include "tests/session.h"
#include "transfer/xModem.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace {

using Answers = std::vector<int>; // a byte each, or silence up to the time limit

constexpr int silence = -1;
constexpr int other = -2; // in the tables: all that has no row of its own
constexpr int ack = simulator::ack;
constexpr int nak = simulator::nak;
constexpr int can = simulator::can;

constexpr int endPacket = blockCount + 1;

// What can be seen of a transfer, all of it as its answers come.
struct Course {
    int result = 0;
    std::vector<int> sent; // packets by number in the order of their sending
    std::int64_t clears = 0;
    std::int64_t duration = 0; // milliseconds
    double progress = 0;
    bool operator==(const Course&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Course& course) {
    out << "result " << course.result << ", sent";
    for (const int packet : course.sent) {
        out << ' ' << packet;
    }
    return out << ", " << course.clears << " clears, " << course.duration << " ms, progress " << course.progress;
}

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

// The transfer as the tables have it, one answer after the other.
class Expected {
  public:
    bool ended() const { return ended_; }
    const Course& course() const { return course_; }

    void take(int answer) {
        const Rule& rule = ruleFor(answer);
        course_.duration += answer != silence ? answerTime : packet_ == 0 ? 60'000 : 10'000;
        const bool atLimit = apply(rule.failures, failures_, 10) || apply(rule.cancels, cancels_, 2);
        if (atLimit || rule.action == Rule::ends) {
            // What is still on its way in goes, but not when a start is cancelled.
            course_.clears += packet_ == 0 && answer == can ? 0 : 1;
            course_.result = rule.result;
            ended_ = true;
        } else {
            act(rule);
        }
    }

  private:
    const Rule& ruleFor(int answer) const {
        const auto& rules = packet_ == 0 ? startRules : replyRules;
        const auto at = std::ranges::find(rules, answer, &Rule::answer);
        return at == rules.end() ? rules.back() : *at;
    }

    // True when the count comes to its limit.
    static bool apply(Count rule, int& count, int limit) {
        count = rule == Count::clears ? 0 : rule == Count::raises ? count + 1 : count;
        return rule == Count::raises && count == limit;
    }

    void act(const Rule& rule) {
        switch (rule.action) {
        case Rule::begins: failures_ = cancels_ = 0; [[fallthrough]];
        case Rule::acknowledges:
            course_.progress = 128.0 * std::min(packet_, blockCount);
            ended_ = packet_ == endPacket;
            ++packet_;
            [[fallthrough]];
        case Rule::sendsAgain:
            if (!ended_) {
                course_.sent.push_back(packet_);
                ++course_.clears;
            }
            break;
        default: course_.clears += rule.clearsInput ? 1 : 0;
        }
    }

    Course course_;
    int packet_ = 0; // none: the start
    int failures_ = 0;
    int cancels_ = 0;
    bool ended_ = false;
};

// Plays a receiver to the program's sender. The unit itself is not heard.
class Sender : public testing::Test {
  protected:
    Sender() {
        session.start();
        world.clock.setLimit(never);
        shared.firmwareImage.assign(imageSize + 1, 0);
        for (int block = 1; block <= blockCount; ++block) { // a block's data begin with the high byte of its number
            shared.firmwareImage[static_cast<std::size_t>((block - 1) * blockSize)] =
                static_cast<std::uint8_t>(block >> 8);
        }
        world.line.setPace(unpaced);
        world.line.addHook([this](Passage& passage) {
            if (passage.direction == Direction::toUnit) {
                note(passage.bytes);
            }
            passage.bytes.clear();
        });
    }

    void note(const Bytes& packet) {
        course.sent.push_back(packet.size() == 1 ? endPacket : packet[3] * 256 + packet[1]);
    }

    Course transfer(const Answers& answers) {
        const Micros begin = world.clock.now();
        Micros at = begin;
        Micros limit = fromSeconds(60);
        for (const int answer : answers) {
            if (answer == silence) {
                at += limit;
            } else {
                at += fromMilliseconds(answerTime);
                world.line.put(Direction::fromUnit, {static_cast<std::uint8_t>(answer)}, at);
            }
            limit = answer == 'C' || answer == nak ? fromSeconds(10) : limit;
        }
        course = {};
        OperationGate& gate = world.port.operations();
        const std::int64_t clearsBefore = gate.passed(Operation::clearReceived);
        EXPECT_EQ(world.desktop.run([&] { course.result = xModem::xModemS(); }), RunEnd::idle);
        course.clears = gate.passed(Operation::clearReceived) - clearsBefore;
        course.duration = (world.clock.now() - begin) / 1000;
        course.progress = frmWait().prbComm.value;
        return course;
    }

    // Each sequence of up to `depth` answers after those given; after the last one there is silence.
    void tryAll(Answers answers, int depth, std::span<const int> alphabet) {
        Expected expected;
        for (const int answer : answers) {
            expected.take(answer);
        }
        if (depth > 0 && !expected.ended()) {
            for (const int answer : alphabet) {
                Answers longer = answers;
                longer.push_back(answer);
                tryAll(longer, depth - 1, alphabet);
            }
            return;
        }
        while (!expected.ended()) {
            answers.push_back(silence);
            expected.take(silence);
        }
        frmWait().prbComm.value = 0;
        if (!HasFailure()) {
            EXPECT_EQ(transfer(answers), expected.course()) << testing::PrintToString(answers);
        }
    }

    Session session;
    World& world = session.world;
    Course course;
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

constexpr std::array everyAnswer{ack, nak, can, silence, int{'C'}};

TEST_F(Sender, KeepsTheRulesOfTheStart) {
    tryAll({}, 7, everyAnswer);
    tryAll(repeat(8, {0x00}), 4, everyAnswer);
    tryAll(repeat(8, {0xFF}) + Answers{can}, 4, everyAnswer);
}

TEST_F(Sender, KeepsTheRulesOfReplies) {
    for (const Answers& failures : {repeat(8, {nak}), repeat(8, {silence}), repeat(4, {nak, 0x00, silence})}) {
        tryAll(Answers{'C'} + failures, 5, everyAnswer);
        tryAll(Answers{nak, ack} + failures + Answers{can}, 4, everyAnswer);
    }
}

TEST_F(Sender, KeepsTheRulesAtTheEnd) {
    tryAll(Answers{'C'} + repeat(blockCount - 1, {ack}), 4, everyAnswer);
}

TEST_F(Sender, TakesAnyByteForWhatItIs) {
    for (int byte = 0; byte <= 0xFF; ++byte) {
        tryAll({byte}, 1, everyAnswer);
        tryAll({'C', byte}, 1, everyAnswer);
        tryAll({nak, nak, byte}, 1, everyAnswer);
    }
}

} // namespace
