// The simulated unit stands in for the real one in every other test, so its own words are held against fixed bytes.
#include "simulator/blockCheck.h"
#include "simulator/sampleImage.h"
#include "simulator/unit.h"

#include <algorithm>
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

    // Block `number` of the image as a packet with CRC.
    Bytes packet(std::size_t number) const {
        const auto data = std::span(image).subspan((number - 1) * blockSize, blockSize);
        const std::uint16_t check = crcOf(data);
        Bytes bytes(crcPacketSize);
        bytes[0] = soh;
        bytes[1] = static_cast<std::uint8_t>(number);
        bytes[2] = static_cast<std::uint8_t>(~number);
        std::ranges::copy(data, bytes.begin() + headerSize);
        bytes[crcPacketSize - 2] = static_cast<std::uint8_t>(check >> 8);
        bytes[crcPacketSize - 1] = static_cast<std::uint8_t>(check);
        return bytes;
    }

    void startWrite(const std::string& unitField = "01") {
        command("300550" + unitField + "0000");
        command("300551" + unitField + "0C00");
        ASSERT_EQ(exchange({}, fromMilliseconds(100)), Bytes{crcStart});
    }

    Unit unit{UnitOptions{}};
    Micros now = fromSeconds(1);
    Bytes image = makeSampleImage({});
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

TEST_F(SimulatedUnit, MisbehavesAsTold) {
    unit.options().answers = {{"06", 2, {.resultCode = "1234"}},
                              {"06", 3, {.silent = true}},
                              {"06", 4, {.wrongCheck = true}},
                              {"", 5, {.endCode = "0F", .data = "", .noiseBefore = {0xAA}}}};
    EXPECT_EQ(command("0601"), "000000060100000001");
    EXPECT_EQ(command("0601"), "00000006011234");
    EXPECT_EQ(command("0601"), "");
    EXPECT_NE(exchange(frameOf("000000601")).back(), 0x05);
    EXPECT_EQ(exchange(frameOf("000000501")).front(), 0xAA);
    unit.options().silentFrom = now;
    EXPECT_EQ(command("0601"), "");
}

TEST_F(SimulatedUnit, TakesAnImageThroughDamageAndKeepsIt) {
    unit.options().packetAnswers = {{4, {.bytes = Bytes{}}}}; // the ACK of block 2 is lost
    startWrite();
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    Bytes damaged = packet(2);
    damaged[70] ^= 0x10;
    EXPECT_EQ(exchange(damaged), Bytes{nak});
    damaged.pop_back();
    EXPECT_EQ(exchange(damaged, fromMilliseconds(900)), Bytes{});
    EXPECT_EQ(exchange({}, fromMilliseconds(200)), Bytes{nak}); // a byte was lost
    EXPECT_EQ(exchange(packet(2)), Bytes{});
    EXPECT_EQ(exchange(packet(2)), Bytes{ack});
    for (std::size_t number = 3; number <= imageSize / blockSize; ++number) {
        ASSERT_EQ(exchange(packet(number)), Bytes{ack}) << number;
    }
    EXPECT_EQ(exchange({eot}), Bytes{ack});
    EXPECT_EQ(unit.receivedImage(), image);
    EXPECT_EQ(command("300554010000"), "00000030050000");
    EXPECT_EQ(command("0101D40001000001"), "0000000101000000002B26"); // the version of the sample
    EXPECT_EQ(journalText(unit.journal()), "frames: 300550010000 300551010C00 300554010000 0101D40001000001\n"
                                           "operations: 50 51 54\n"
                                           "blocks: 1920 accepted, 2 refused, 1 repeated\n"
                                           "ends: 1, cancels: 0\n"
                                           "image: complete in 20320 ms\n"
                                           "sent: 0 blocks in 0 packets\n");
}

TEST_F(SimulatedUnit, GivesUpABrokenWrite) {
    startWrite("00");
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    EXPECT_EQ(exchange(packet(3)), (Bytes{can, can}));
    startWrite("00");
    EXPECT_EQ(exchange({}, fromSeconds(3)), Bytes{crcStart});
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    EXPECT_EQ(exchange({can, can}), Bytes{});
    EXPECT_EQ(command("0601"), "000000060100000001"); // no longer in transfer mode
    startWrite("00");
    EXPECT_EQ(exchange(packet(1)), Bytes{ack});
    EXPECT_EQ(command("300554000000"), "00000030050000"); // heard between two packets
    EXPECT_EQ(exchange(packet(2), fromSeconds(20)), Bytes{});
    EXPECT_FALSE(unit.journal().imageComplete);
}

TEST_F(SimulatedUnit, SendsItsImageAndEndsInTwoSteps) {
    unit.options().amplifierImage = image;
    command("300552010C00");
    Bytes received;
    Bytes block = exchange({nak});
    for (std::size_t number = 1; block.size() == checksumPacketSize; ++number) {
        ASSERT_EQ(block[1] + block[2], 255);
        ASSERT_EQ(block[1], number % 256);
        ASSERT_EQ(block.back(), checksumOf(std::span(block).subspan(headerSize, blockSize)));
        if (number == 300) {
            ASSERT_EQ(exchange({nak}), block); // asked again
        }
        received.insert(received.end(), block.begin() + headerSize, block.end() - 1);
        block = exchange({ack});
    }
    EXPECT_EQ(received, image);
    EXPECT_EQ(block, Bytes{eot});
    EXPECT_EQ(exchange({nak}), Bytes{eot});
    EXPECT_EQ(exchange({ack}, fromSeconds(20)), Bytes{});

    unit.options().sendPieces = {100, fromMilliseconds(50)};
    command("300552010C00");
    EXPECT_EQ(exchange({crcStart}).size(), 100u);
    EXPECT_EQ(exchange({can, can}, fromMilliseconds(100)).size(), crcPacketSize - 100); // looked at after the packet
    EXPECT_EQ(exchange({}, fromSeconds(20)), Bytes{});
}

} // namespace
