// The XMODEM sender: tests/stories/sender.txt has the rules of the protocol.
#include "tests/session.h"
#include "transfer/xModem.h"

#include <fstream>
#include <sstream>

namespace {

using Answers = std::vector<int>; // of the receiver: a byte each, or silence up to the timeout
constexpr int silence = -1;

// The words of a text, each after a blank; "x*3" stands for three in a row.
std::string repeated(const std::string& text) {
    std::istringstream words(text);
    std::string result;
    std::string word, next;
    for (words >> word; !word.empty(); word = std::exchange(next, "")) {
        int count = 1;
        for (; words >> next && next == word; next.clear()) {
            ++count;
        }
        result += ' ' + word + (count == 1 ? "" : '*' + std::to_string(count));
    }
    return result;
}

// A receiver for the program's sender; the line discards what the simulated unit sends.
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
        world.line.addHook([this](Transmission& transmission) {
            const Bytes sent = std::exchange(transmission.bytes, {});
            if (transmission.direction == Direction::toUnit) {
                record += sent.size() == 1 ? "EOT" : std::to_string(sent[3] * 256 + sent[1]);
            }
        });
        world.port.operations().add(
            [this](const OperationCall& call) { record += call.operation == Operation::clearReceived ? " -" : ""; });
    }

    void put(int answer, Micros at) { world.line.put(Direction::fromUnit, {static_cast<std::uint8_t>(answer)}, at); }

    // The record of a transfer with these answers, 10 ms apart, and then none.
    std::string transfer(const Answers& answers) {
        const Micros begin = world.clock.now();
        Micros at = begin;
        Micros limit = fromSeconds(60);
        for (const int answer : answers) {
            at += answer == silence ? limit : fromMilliseconds(10);
            if (answer != silence) {
                put(answer, at);
            }
            limit = answer == 'C' || answer == simulator::nak ? fromSeconds(10) : limit;
        }
        record.clear();
        frmWait().prbComm.value = 0;
        int result = 0;
        EXPECT_EQ(world.host.run([&] { result = xModem::xModemS(); }), RunEnd::idle);
        EXPECT_FALSE(frmWait().timerWait.enabled() || frmWait().timerWait.interval() != 0);
        std::ostringstream seen;
        const std::string sent = repeated(record);
        seen << (sent.size() < 80 ? sent : "..." + sent.substr(sent.size() - 50)) << " = " << std::hex << result
             << std::dec << " after " << (world.clock.now() - begin) / 1000 << " ms, " << frmWait().prbComm.value;
        return seen.str();
    }

    Session session;
    World& world = session.world;
    std::string record;
};

// "C NAK*3 00": a byte by its name or in hexadecimal.
Answers answersOf(const std::string& text) {
    const std::map<std::string, int> names{
        {"ACK", 0x06}, {"NAK", 0x15}, {"CAN", 0x18}, {"C", 'C'}, {"silence", silence}};
    Answers answers;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t star = word.find('*');
        const auto named = names.find(word.substr(0, star));
        answers.insert(answers.end(), star == std::string::npos ? 1 : std::stoul(word.substr(star + 1)),
                       named == names.end() ? std::stoi(word, nullptr, 16) : named->second);
    }
    return answers;
}

TEST_F(Sender, FollowsTheProtocol) {
    const std::string path = std::string(STORIES) + "sender.txt";
    std::ifstream rules(path);
    std::string all;
    for (std::string line; std::getline(rules, line);) {
        const std::size_t colon = line.find(':');
        if (!line.starts_with('#')) {
            const std::string played = line.substr(0, colon + 1) + transfer(answersOf(line.substr(0, colon)));
            EXPECT_EQ(played, line);
            line = played;
        }
        all += line + '\n';
    }
    if (std::getenv("RECORD_STORIES") != nullptr) {
        std::ofstream(path) << all;
    }
}

TEST_F(Sender, HandlesAllUnknownBytesAlike) {
    const std::string atStart = transfer({0x00});
    const std::string later = transfer({'C', 0x00});
    for (int byte = 0; byte <= 0xFF; ++byte) {
        const bool control = byte == simulator::nak || byte == simulator::can;
        EXPECT_TRUE(control || byte == 'C' || transfer({byte}) == atStart) << byte;
        EXPECT_TRUE(control || byte == simulator::ack || transfer({'C', byte}) == later) << byte;
    }
}

TEST_F(Sender, ReadsPendingBytesOneByOneAndAtTheTimeout) {
    put(simulator::can, world.clock.now());
    put(simulator::can, world.clock.now());
    EXPECT_TRUE(transfer({}).starts_with(" = 1003"));
    put('C', world.clock.now() + fromSeconds(60));
    put(simulator::ack, world.clock.now() + fromSeconds(70));
    EXPECT_TRUE(transfer({}).starts_with(" -1 -2*"));
}

TEST_F(Sender, RunsWindowEventsWhileBytesArePending) {
    std::string seen;
    for (const std::uint8_t answer : Bytes{'C', 'x', 'x', 'x'}) {
        put(answer, world.clock.now());
    }
    world.clock.advanceTo(world.clock.now() + 1);
    for (const int event : {1, 2}) {
        world.host.schedule(world.clock.now(), [&, event] { seen += record + '!' + std::to_string(event); });
    }
    transfer({});
    EXPECT_EQ(seen, "!1 -1!2");
}

} // namespace
