// All other tests use the simulated unit, so its answers are compared with fixed bytes.
#include "simulator/blockCheck.h"
#include "simulator/unit.h"

#include <gtest/gtest.h>
#include <string>

using namespace simulator;

namespace {

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// A packet of 128 bytes 0xFF with its check bytes: the CRC, or 0x80, the checksum.
Bytes packet(std::uint8_t number, const Bytes& check = {0xED, 0xA9}) {
    return Bytes{0x01, number, static_cast<std::uint8_t>(~number)} + Bytes(128, 0xFF) + check;
}

Bytes damaged(Bytes bytes, std::size_t place) {
    bytes[place] ^= 0x10;
    return bytes;
}

Bytes command(const std::string& text) {
    return frameOf("00000" + text);
}

TEST(SimulatedUnit, AnswersCommandsAndPackets) {
    const Bytes begin = command("300550000000") + command("300551000C00");
    const Bytes begun = frameOf("00000030050000") + frameOf("00000030050000") + Bytes{crcStart};
    Bytes cutShort = packet(2);
    cutShort.pop_back();
    struct Row {
        Bytes received, sent;
        int wait = 10; // milliseconds
    };
    const Row rows[] = {
        {{0x02, '0', '0', '0', '0', '0', '0', '6', '0', '1', 0x03, 0x34},
         {0x02, '0', '0', '0', '0', '0', '0', '0', '6', '0', '1', '0', '0', '0', '0', '0', '0', '0', '1', 0x03, 0x05}},
        {command("0501"), frameOf("00000005010000KP42 UNIT       V2.301")},
        {command("0101D40001000001"), frameOf("0000000101000000002B0E")},
        {command("0101D50001000001"), frameOf("0000000101000000000010")},
        {command("0101D40002000001"), frameOf("00000001011101")},
        {command("0502"), frameOf("00000005021001")},
        {command("305050010000"), frameOf("00000030501001")}, // the operation in the wrong place
        {command("300551010C00"), frameOf("00000030052204")}, // no "50" before
        {command("300550010000"), frameOf("00000030050000")},
        {command("300551010000"), frameOf("00000030051004")}, // the option of the others
        {command("300551000C00"), frameOf("00000030052204")}, // the other unit was prepared
        {command("300551010C00"), frameOf("00000030050000")},
        {command("0501"), frameOf("00000005012204")}, // in transfer mode
        {command("300554010000"), frameOf("00000030050000")},
        {command("300553010000"), frameOf("00000030050000")},
        {command("300554020000"), frameOf("00000030051004")},
        // frames out of order
        {damaged(command("0601"), 11), frameOf("000013")},
        {frameOf("0000"), frameOf("000014")},
        {frameOf("010000601"), {}},
        {{0xFF, stx, 'x', 0x80}, {}},
        {command("0601"), frameOf("000000060100000001")},
        // bad blocks, and writes that break off
        {begin, begun, 200},
        {packet(1), {ack}},
        {damaged(packet(2), 70), {nak}},
        {cutShort, {}, 900},
        {{}, {nak}, 200},
        {packet(3), {can, can}},
        {begin, begun, 200},
        {packet(1), {ack}},
        {{can, can}, {}},
        {command("0601"), frameOf("000000060100000001")}, // no longer in transfer mode
        {begin, begun, 200},
        {packet(1), {ack}},
        {command("300554000000"), frameOf("00000030050000")}, // between two packets
        {packet(2), {}, 20'000},
        // a read
        {command("300552010C00"), frameOf("00000030050000")},
        {{crcStart}, packet(1)},
        {{nak}, packet(1)},
        {{can, can}, {}, 20'000},
        {command("300552010C00"), frameOf("00000030050000")},
        {{nak}, packet(1, {0x80})},
    };
    Unit unit{UnitOptions{}};
    Micros now = fromSeconds(1);
    for (const Row& row : rows) {
        unit.receive(row.received, now);
        now += fromMilliseconds(row.wait);
        unit.advance(now);
        Bytes sent;
        for (const Output& output : unit.takeOutput()) {
            sent.insert(sent.end(), output.bytes.begin(), output.bytes.end());
        }
        EXPECT_EQ(sent, row.sent) << "row " << &row - rows;
    }
    EXPECT_TRUE(journalText(unit.journal())
                    .ends_with("operations: 51 50 51 51 54 53 50 51 50 51 50 51 54 52 52\n"
                               "blocks: 3 accepted, 2 refused, 0 repeated\n"
                               "ends: 0, cancels: 3\n"
                               "image: incomplete\n"
                               "sent: 2 blocks in 3 packets\n"))
        << journalText(unit.journal());
}

TEST(BlockCheck, MatchesXmodem) {
    const std::string digits = "123456789";
    EXPECT_EQ(crcOf(Bytes(digits.begin(), digits.end())), 0x31C3);
}

} // namespace
