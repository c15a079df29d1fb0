// The command frames that the unit receives, and the results of every kind of reply.
#include "base/text.h"
#include "link/commPort.h"
#include "link/exchange.h"
#include "link/resultCodes.h"
#include "link/unitCommands.h"
#include "simulator/frame.h"
#include "tests/session.h"

#include <array>

using namespace CommonComm;
using namespace Common;

namespace {

using simulator::frameOf;

const std::string logPath = "/tarnbeacon/KelpLog.txt";
const std::string timeoutBox = "Tarn Beacon|It is a receiving timeout error.|16>1\n";
const std::string stx = "\x02";

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

// The program after its start; the tests send commands.
class Link : public testing::Test {
  protected:
    Link() {
        EXPECT_EQ(session.start(), RunEnd::idle);
        session.sent.clear();
        world.clock.advanceTo(fromSeconds(10));
    }

    Micros timeOf(const std::function<void()>& action) {
        const Micros before = world.clock.now();
        action();
        return world.clock.now() - before;
    }
    // The result of a "0501" with this reply of the unit.
    std::string resultOf(simulator::CommandReply special, bool suppressMessage = false) {
        world.unit.options().replies = {{"0501", 0, std::move(special)}};
        Bytes reply;
        return fncSendCommand("0501", true, reply, 5000, suppressMessage);
    }

    Session session;
    World& world = session.world;
};

// The bytes that the receiver has stored, in hexadecimal; ".." if the array still has its full size.
std::string storedText() {
    std::string text;
    const bool fullSize = shared.replyBytes.size() == 451;
    for (const std::uint8_t byte : std::span(shared.replyBytes).first(fullSize ? 6 : shared.replyBytes.size())) {
        text += hexText(byte, 2);
    }
    return text + (fullSize ? ".." : "");
}

Bytes wrongCheck(const std::string& text) {
    Bytes bytes = frameOf(text);
    bytes.back() ^= 1;
    return bytes;
}

TEST_F(Link, SendsCommandFrames) {
    Bytes reply;
    world.unit.options().replies = {{"", 0, {.silent = true}}};
    fncCommand("01az", reply);
    EXPECT_EQ(timeOf([&] { fncReadArea("D5", 0x1AB, 0xCD1, reply, 2000, false); }), fromMilliseconds(2001));
    EXPECT_EQ(session.sent, bytesOf(stx + "0000001AZ\x03\x29" + stx + "000000101D501AB000CD1\x03\x46"));
}

// Each reply arrives whole and in pieces.
TEST_F(Link, ParsesReplies) {
    const std::string data447(447, 'x');
    const std::string none = "000000000000..";
    enum End { replied, timedOut, failed };
    struct Row {
        const char* what;
        Bytes reply;
        std::string result;
        std::string stored; // see storedText()
        End end = replied;
        std::string logged = {}; // from "S:" on
        bool rawData = true;
    };
    const Row rows[] = {
        {"good", frameOf("00000005010000KP42"), "0000", "050100004B503432"},
        {"good, hexadecimal", frameOf("000000010100000000041a"), "0000", "010100000000041A", replied, "", false},
        {"hexadecimal, half a byte", frameOf("00000001010000004"), "0000", "0101000000", replied, "", false},
        {"other response code", frameOf("00000F05011001"), "1001", "05011001"},
        {"lower-case digits", frameOf("000000050122ab"), "22AB", "050122AB"},
        {"another command", frameOf("99999900FFFF0000"), "9099", "00FFFF0000", replied, "", false},
        {"end code 0f", frameOf("00000f05010000"), "900f", "05010000"},
        {"end code 13, nothing stored", frameOf("000013"), "9999", none, failed},
        {"end code 13 with a command code", frameOf("0000130501"), "9013", "0501"},
        {"end code 11, any check", wrongCheck("000011ABcd"), "9011", "ABCD00000000.."},
        {"bad check", wrongCheck("000000050100001"), "", "0501000031", replied,
         "S:True E:True B:True P:True U:4 A:05 01 00 00 31"},
        {"bad check, 0F", wrongCheck("00000F05010000"), "", "05010000"},
        {"bad check, other end code", wrongCheck("0000220501"), "9022", "0501"},
        {"a right check after a wrong one", bytesOf(stx + "00000005010000\x03\x06\x07\x07"), "", "05010000", replied,
         "S:True E:True B:True P:True U:3 A:05 01 00 00"},
        {"silence", {}, "9999", none, timedOut},
        {"cut short", bytesOf(stx + "00000005"), "", "050000000000..", timedOut,
         "S:True E:False B:False P:False U:450 A:05"},
        {"half a byte", bytesOf(stx + "000000050"), "", "050000000000..", timedOut,
         "S:True E:False B:False P:False U:450 A:05"},
        {"cut short, 0F", bytesOf(stx + "00000F"), "", none, timedOut},
        {"one character of the end code", bytesOf(stx + "00000"), "900", none, timedOut},
        {"no check byte", bytesOf(stx + "00000005010000\x03"), "", "050100000000..", timedOut,
         "S:True E:True B:False P:False U:450 A:05 01 00 00"},
        {"no STX", bytesOf("00000005010000\x03\x07"), "", "050100000700..", timedOut,
         "S:False E:True B:False P:False U:450 A:05 01 00 00 07"},
        {"noise before STX moves the positions", bytesOf("x" + stx + "0000000501000\x03"), "", "005010000000..",
         timedOut, "S:True E:True B:False P:False U:450 A:00 50 10 00"},
        {"noise before STX counts for the check", bytesOf("0" + stx + "0000005010000\x03\x07"), "0000", "05010000"},
        {"STX and ETX within raw data", bytesOf(stx + "00000005010000a" + stx + "b\x03\x04"), "0000", "050100006162"},
        {"ETX before STX ends at the next byte", {0x03, 0x02, '0'}, "9999", none, failed},
        {"no high digit", frameOf("0000000g01"), "9999", none, failed},
        {"no low digit", frameOf("00000005010000:F0G"), "9999", "050100000000..", failed, "", false},
        {"no response code", frameOf("000000050100"), "9999", "050100", failed},
        {"451 stored bytes", frameOf("00000005010000" + data447), "0000", "050100007878.."}, // the array is full
        {"452 stored bytes", frameOf("00000005010000x" + data447), "9999", "050100007878..", failed},
    };
    for (const Row& row : rows) {
        for (const std::size_t piece : {0, 1, 2, 7, 15}) {
            for (const int readLimit : {0, 1}) { // a transfer leaves the read limit at 1
                SCOPED_TRACE(row.what + (' ' + std::to_string(piece)) + ' ' + std::to_string(readLimit));
                world.files.remove(logPath);
                const std::string boxesBefore = session.boxes();
                shared.commBusy = false;
                shared.replyBytes.assign(451, 0xEE);
                world.port.setReadLimit(readLimit);
                world.unit.options().replies = {
                    {"", 0, {.bytes = row.reply, .silent = row.reply.empty(), .pieces = {piece, fromMilliseconds(3)}}}};
                Bytes reply;
                std::string result;
                const Micros lasted = timeOf([&] {
                    result = row.rawData ? fncCommand("0501", reply) : fncReadArea("D4", 1, 1, reply, 5000, false);
                });
                EXPECT_EQ(result, row.result);
                EXPECT_EQ(storedText(), row.stored);
                EXPECT_TRUE(row.end == failed || reply == shared.replyBytes);
                EXPECT_EQ(lasted >= fromSeconds(5), row.end == timedOut) << lasted;
                const SimulatedFile* log = world.files.find(logPath);
                EXPECT_EQ(log == nullptr ? "" : log->content,
                          row.logged.empty() ? "" : world.host.dateAndTime() + " [NG2] " + row.logged + " \n");
                EXPECT_EQ(shared.commBusy, row.end == failed);
                EXPECT_EQ(session.boxes(), boxesBefore + (row.end == failed ? timeoutBox : ""));
                world.clock.advanceTo(world.clock.now() + fromSeconds(1));
                world.port.clearReceived();
            }
        }
    }
}

// Reads of one byte show how many polls the exchange has made.
TEST_F(Link, ClearsInputAfterAGoodFrameAndPollsTwiceAfterABadOne) {
    for (const auto& [reply, left] : {std::pair{frameOf("00000005010000"), 0}, {wrongCheck("00000005010000"), 4}}) {
        Bytes bytes = reply;
        bytes.insert(bytes.end(), 6, 'z');
        world.port.setReadLimit(1);
        world.line.setPace(unpaced);
        resultOf({.bytes = bytes});
        EXPECT_EQ(world.port.countReceived(), left);
        resultOf({.bytes = frameOf("00000005010000")}); // the remaining bytes are not a part of the next reply
        EXPECT_EQ(storedText(), "05010000");
    }
}

TEST_F(Link, AcceptsAReplyAtTheTimeout) {
    world.line.setPace(unpaced);
    world.unit.options().replyDelay = 0;
    EXPECT_EQ(resultOf({.delay = fromSeconds(5)}), "0000");
    EXPECT_EQ(resultOf({.delay = fromSeconds(5) + fromMilliseconds(1)}), "9999");
    world.unit.options().replies.clear();
    Bytes reply;
    EXPECT_EQ(fncSendCommand("0501", true, reply, 0, false), "0000"); // sent in any case
}

TEST_F(Link, WaitsWhileTheLinkIsBusy) {
    shared.commBusy = true;
    EXPECT_EQ(fncExchange("0501", true, 5000), "9998");
    EXPECT_TRUE(session.sent.empty());
    EXPECT_EQ(timeOf([] { subWaitLinkFree(5000); }), fromMilliseconds(5001));
    EXPECT_FALSE(shared.commBusy);
    shared.commBusy = true;
    world.host.schedule(world.clock.now() + fromSeconds(2), [] { shared.commBusy = false; }); // a window event
    EXPECT_EQ(timeOf([] { subWaitLinkFree(5000); }), fromSeconds(2));
}

TEST_F(Link, ReadsTheUnitState) {
    const std::array<std::string, 3> rows[] = {
        // response code and data, result, state and sensor count
        {"00001203", "0000", "12 3"}, {"00000199", "0000", "01 99"}, {"0000010x", "9999", "01 0"},
        {"000001", "9999", "01 0"},   {"10040001", "1004", " 0"},
    };
    for (const auto& [reply, result, known] : rows) {
        shared.unitStateText = "before";
        shared.sensorCount = 77;
        world.unit.options().replies = {{"0601", 0, {.bytes = frameOf("0000000601" + reply)}}};
        Bytes bytes;
        EXPECT_EQ(fncReadUnitState("0601", bytes), result) << reply;
        EXPECT_EQ(shared.unitStateText + ' ' + std::to_string(shared.sensorCount), known) << reply;
    }
    const std::string box = "Tarn Beacon|Application error.\r\nRES : 0000|16>1\n";
    EXPECT_EQ(session.boxes(), box + box);
}

TEST_F(Link, ConvertsResultsToNumbers) {
    for (const auto& [code, number] : {std::pair{"0000", 0}, {"2204", 2204}, {"0E00", 8}, {"12AB", 8}}) {
        world.unit.options().replies = {{"0101", 0, {.resultCode = code}}};
        EXPECT_EQ(FirmComm::fncCheckTarget(), number) << code;
    }
    for (const auto& [code, number] : {std::pair{"0000", 7}, {"", 8}, {"0101", 9}, {"1004", 15}, {"5555", 27}}) {
        EXPECT_EQ(FirmComm::fncResultNumber(code), number) << code;
    }
    shared.commRetry = 3;
    EXPECT_EQ(resultOf({.resultCode = "1234"}, true), "1234");
    EXPECT_EQ(session.boxes(), ""); // suppressed
}

TEST_F(Link, DoesNotReopenAnOpenPort) {
    EXPECT_FALSE(fncOpenPort(5, "38400,n,8,1"));
    EXPECT_EQ(session.boxes(), "Tarn Beacon|通信ポートが開けません。通信ポートを使用するアプリケーションを終了して"
                               "再度起動して下さい。|16>1\n");
    EXPECT_TRUE(world.port.isOpen());
    subClosePort();
    subClosePort();
    subReopenPort();
    EXPECT_FALSE(world.port.isOpen());
}

} // namespace
