// The simulated unit stands in for the real one in every other test, so its own words are held against fixed bytes.
#include "simulator/blockCheck.h"
#include "simulator/unit.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

using namespace simulator;

namespace {

class SimulatedUnit : public testing::Test {
  protected:
    // Gives the bytes to the unit and what it has said `wait` later.
    Bytes exchange(const Bytes& bytes, Micros wait = fromMilliseconds(10)) {
        unit.receive(bytes, now);
        now += wait;
        unit.advance(now);
        Bytes said;
        for (const Output& output : unit.takeOutput()) {
            said.insert(said.end(), output.bytes.begin(), output.bytes.end());
        }
        return said;
    }

    // Sends a command and gives the text of the reply between STX and ETX.
    std::string command(const std::string& text) {
        const Bytes reply = exchange(frameOf("00000" + text));
        return reply.size() < 3 ? "" : std::string(reply.begin() + 1, reply.end() - 2);
    }

    // A packet of 128 bytes 0xFF with its CRC.
    static Bytes packet(int number) {
        Bytes bytes(133, 0xFF);
        bytes[0] = 0x01;
        bytes[1] = static_cast<std::uint8_t>(number);
        bytes[2] = static_cast<std::uint8_t>(~number);
        bytes[131] = 0xED;
        bytes[132] = 0xA9;
        return bytes;
    }

    void startWrite(const std::string& unitField = "01") {
        command("300550" + unitField + "0000");
        command("300551" + unitField + "0C00");
        ASSERT_EQ(exchange({}, fromMilliseconds(100)), Bytes{crcStart});
    }

    Unit unit{UnitOptions{}};
    Micros now = fromSeconds(1);
};

TEST_F(SimulatedUnit, RepliesToEachCommand) {
    const Bytes stateReply = exchange({0x02, '0', '0', '0', '0', '0', '0', '6', '0', '1', 0x03, 0x34});
    EXPECT_EQ(stateReply, (Bytes{0x02, '0', '0', '0', '0', '0', '0', '0', '6',  '0', '1',
                                 '0',  '0', '0', '0', '0', '0', '0', '1', 0x03, 0x05}));
    const std::vector<std::array<const char*, 2>> rows{
        {"0501", "00000005010000KP42 UNIT       V2.301"},
        {"0101D40001000001", "0000000101000000002B0E"},
        {"0101D50001000001", "0000000101000000000010"},
        {"0101D40002000001", "00000001011101"},
        {"0502", "00000005021001"},
        {"305050010000", "00000030501001"}, // the operation in the wrong place
        {"300551010C00", "00000030052204"}, // no "50" before
        {"300550010000", "00000030050000"},
        {"300551010000", "00000030051004"}, // the option of the others
        {"300551000C00", "00000030052204"}, // the other unit was prepared
        {"300551010C00", "00000030050000"},
        {"0501", "00000005012204"}, // in transfer mode
        {"300554010000", "00000030050000"},
        {"300553010000", "00000030050000"},
        {"300552010C00", "00000030050000"},
        {"300554020000", "00000030051004"},
    };
    for (const auto& [text, reply] : rows) {
        EXPECT_EQ(command(text), reply) << text;
    }
}

TEST_F(SimulatedUnit, AnswersFramesOutOfOrderAsARealOneWould) {
    Bytes damaged = frameOf("000000601");
    damaged.back() ^= 1;
    EXPECT_EQ(exchange(damaged), frameOf("000013"));
    EXPECT_EQ(exchange(frameOf("0000")), frameOf("000014"));
    EXPECT_EQ(exchange(frameOf("010000601")), Bytes{});
    EXPECT_EQ(exchange({0xFF, stx, 'x', 0x80}), Bytes{});
    EXPECT_EQ(exchange(frameOf("000000601")).size(), 21u);
}

TEST(BlockCheck, IsThatOfXmodem) {
    const std::string digits = "123456789";
    EXPECT_EQ(crcOf(Bytes(digits.begin(), digits.end())), 0x31C3);
    EXPECT_EQ(checksumOf(Bytes(128, 0xFF)), 0x80);
}

TEST_F(SimulatedUnit, RefusesWhatIsNoGoodBlockAndGivesUpABrokenWrite) {
    startWrite("00");
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    Bytes damaged = packet(2);
    damaged[70] ^= 0x10;
    EXPECT_EQ(exchange(damaged), Bytes{nak});
    damaged.pop_back();
    EXPECT_EQ(exchange(damaged, fromMilliseconds(900)), Bytes{});
    EXPECT_EQ(exchange({}, fromMilliseconds(200)), Bytes{nak}); // a byte was lost
    EXPECT_EQ(exchange(packet(3)), (Bytes{can, can}));
    startWrite("00");
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    EXPECT_EQ(exchange({can, can}), Bytes{});
    EXPECT_EQ(command("0601"), "000000060100000001"); // no longer in transfer mode
    startWrite("00");
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    EXPECT_EQ(command("300554000000"), "00000030050000"); // heard between two packets
    EXPECT_EQ(exchange(packet(2), fromSeconds(20)), Bytes{});
    EXPECT_EQ(
        journalText(unit.journal()),
        "frames: 300550000000 300551000C00 300550000000 300551000C00 0601 300550000000 300551000C00 300554000000\n"
        "operations: 50 51 50 51 50 51 54\n"
        "blocks: 3 accepted, 2 refused, 0 repeated\n"
        "ends: 0, cancels: 2\n"
        "image: incomplete\n"
        "sent: 0 blocks in 0 packets\n");
}

TEST_F(SimulatedUnit, SendsABlockByteForByte) {
    command("300552010C00");
    Bytes sent = packet(1);
    EXPECT_EQ(exchange({crcStart}), sent);
    EXPECT_EQ(exchange({nak}), sent);
    EXPECT_EQ(exchange({can, can}, fromSeconds(20)), Bytes{});
    command("300552010C00");
    sent.pop_back();
    sent.back() = 0x80; // the checksum
    EXPECT_EQ(exchange({nak}), sent);
}

} // namespace
