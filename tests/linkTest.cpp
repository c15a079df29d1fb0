// Command frames as the unit sees them, and replies of every kind as the program takes them.
#include "link/commPort.h"
#include "link/exchange.h"
#include "link/resultCodes.h"
#include "link/unitCommands.h"
#include "simulator/frame.h"
#include "tests/session.h"

using namespace CommonComm;
using namespace Common;

namespace {

using simulator::CommandAnswer;
using simulator::frameOf;

// A program that has started and handed over; the tests send their commands from there.
class Link : public testing::Test {
  protected:
    Link() {
        EXPECT_EQ(session.start(), RunEnd::idle);
        world.line.record().keep(100);
        world.line.record().clear();
    }

    std::string sent() {
        const Bytes bytes = world.line.record().sent(Direction::toUnit);
        return std::string(bytes.begin(), bytes.end());
    }
    Micros timeOf(const std::function<void()>& action) {
        const Micros before = world.clock.now();
        action();
        return world.clock.now() - before;
    }
    // Sends "0501" with an answer of that kind.
    std::string resultOf(CommandAnswer answer, bool rawData = true, std::int32_t timeoutMs = 5000) {
        world.unit.options().answers = {{"0501", 0, std::move(answer)}};
        Bytes reply;
        return fncSendCommand("0501", rawData, reply, timeoutMs, false);
    }
    std::string log() {
        const SimulatedFile* file = world.files.find("/tarnbeacon/KelpLog.txt");
        return file == nullptr ? "" : file->content;
    }

    Session session;
    World& world = session.world;
};

const std::string stx = "\x02";

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Bytes wrongCheck(const std::string& text) {
    Bytes bytes = frameOf(text);
    bytes.back() ^= 1;
    return bytes;
}

TEST_F(Link, SendsEachCommandInItsFrame) {
    struct Row {
        std::function<std::string()> send;
        std::string frame; // after STX
    };
    Bytes reply;
    const Row rows[] = {
        {[&] { return fncCommand("0501", reply); }, "000000501\x03\x37"},
        {[&] { return fncCommand("01ab", reply); }, "0000001AB\x03\x31"},
        {[&] { return fncReadUnitState("0601", reply); }, "000000601\x03\x34"},
        {[&] { return fncReadArea("D4", 1, 1, reply, 5000, false); }, "000000101D40001000001\x03\x43"},
        {[&] { return fncReadArea("D5", 1, 1, reply, 5000, false); }, "000000101D50001000001\x03\x42"},
        {[] { return fncOperation("50", 1); }, "00000300550010000\x03\x31"},
        {[] { return fncOperation("51", 1); }, "00000300551010C00\x03\x43"},
        {[] { return fncOperation("52", 1); }, "00000300552010C00\x03\x40"},
        {[] { return fncOperation("53", 1); }, "00000300553010000\x03\x32"},
        {[] { return fncOperation("54", 1); }, "00000300554010000\x03\x35"},
        {[] { return fncOperation("50", 0); }, "00000300550000000\x03\x30"},
        {[] { return fncOperation("51", 0); }, "00000300551000C00\x03\x42"},
    };
    world.unit.options().answers = {{"01AB", 0, {.reply = frameOf("00000001AB0000")}}};
    for (const Row& row : rows) {
        world.line.record().clear();
        EXPECT_EQ(row.send(), "0000") << row.frame;
        EXPECT_EQ(sent(), stx + row.frame);
    }
    EXPECT_EQ(session.boxes(), "");
}

TEST_F(Link, GivesTheResultOfEachReply) {
    const std::string data447(447, 'x');
    struct Row {
        const char* what;
        Bytes reply;
        std::string result;
        bool late = false;       // the exchange lasts its whole limit
        std::string logged = {}; // from "S:" on
        std::string box = {};    // then commBusy stays
        bool rawData = true;
    };
    const Row rows[] = {
        {"good", frameOf("00000005010000KP42"), "0000"},
        {"other response code", frameOf("00000F05011001"), "1001"},
        {"lower-case digits", frameOf("000000050122ab"), "22AB"},
        {"end code 0f", frameOf("00000f05010000"), "900f"},
        {"end code 13, nothing stored", frameOf("000013"), "9999", false, "", box::timeout},
        {"end code 13 with a command code", frameOf("0000130501"), "9013"},
        {"end code 11, any check", wrongCheck("000011"), "9011"},
        {"bad check", wrongCheck("000000050100001"), "", false, "S:True E:True B:True P:True U:4 A:05 01 00 00 31"},
        {"bad check, 0F", wrongCheck("00000F05010000"), ""},
        {"bad check, other end code", wrongCheck("0000220501"), "9022"},
        {"silence", {}, "9999", true},
        {"cut short", bytesOf(stx + "00000005"), "", true, "S:True E:False B:False P:False U:450 A:05"},
        {"one character of the end code", bytesOf(stx + "00000"), "900", true},
        {"no check byte", bytesOf(stx + "00000005010000\x03"), "", true,
         "S:True E:True B:False P:False U:450 A:05 01 00 00"},
        {"no STX", bytesOf("00000005010000\x03\x07"), "", true,
         "S:False E:True B:False P:False U:450 A:05 01 00 00 07"},
        {"noise ahead of STX moves the positions", bytesOf("x" + stx + "0000000501000\x03"), "", true,
         "S:True E:True B:False P:False U:450 A:00 50 10 00"},
        {"ETX ahead of STX ends at the next byte", {0x03, 0x02, '0'}, "9999", false, "", box::timeout},
        {"no hexadecimal digits", frameOf("0000000g01"), "9999", false, "", box::timeout},
        {"no response code", frameOf("0000000501"), "9999", false, "", box::timeout},
        {"451 stored bytes", frameOf("00000005010000" + data447), "0000"},
        {"452 stored bytes", frameOf("00000005010000x" + data447), "9999", false, "", box::timeout},
        {"STX and ETX within raw data", bytesOf(stx + "00000005010000a" + stx + "b\x03\x03"), "", false,
         "S:True E:True B:True P:True U:5 A:05 01 00 00 61 62"},
        {"hexadecimal data", frameOf("000000010100000000041A"), "0000", false, "", "", false},
    };
    for (const Row& row : rows) {
        for (const std::size_t piece : {0, 1, 7}) {
            SCOPED_TRACE(row.what);
            world.files.remove("/tarnbeacon/KelpLog.txt");
            const std::string boxesBefore = session.boxes();
            shared.commBusy = false;
            world.unit.options().answers = {
                {"0501", 0, {.reply = row.reply, .silent = row.reply.empty(), .pieces = {piece, fromMilliseconds(3)}}}};
            Bytes reply;
            std::string result;
            const Micros lasted = timeOf([&] {
                result = row.rawData ? fncCommand("0501", reply) : fncSendCommand("0501", false, reply, 5000, false);
            });
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(lasted >= fromSeconds(5), row.late) << lasted;
            EXPECT_EQ(log().empty() ? "" : log().substr(log().find('[')),
                      row.logged.empty() ? "" : "[NG2] " + row.logged + " \n");
            EXPECT_EQ(shared.commBusy, !row.box.empty());
            EXPECT_EQ(session.boxes(), boxesBefore + row.box);
            world.port.clearReceived();
        }
    }
}

TEST_F(Link, StoresTheDataOfAReplyInBothForms) {
    EXPECT_EQ(resultOf({.reply = frameOf("000000010100000000041A")}, false), "0000");
    EXPECT_EQ(shared.replyBytes, (Bytes{1, 1, 0, 0, 0, 0, 4, 0x1A}));
    EXPECT_EQ(resultOf({.reply = frameOf("000000010100000000041A")}, true), "0000");
    EXPECT_EQ(shared.replyBytes, (Bytes{1, 1, 0, 0, '0', '0', '0', '0', '0', '4', '1', 'A'}));
    EXPECT_EQ(resultOf({.reply = wrongCheck("000011ab")}), "9011");
    EXPECT_EQ(shared.replyBytes.size(), 451u);
    EXPECT_EQ(resultOf({.reply = frameOf("00000005010000"), .delay = fromSeconds(1)}, true, 0), "9999");
    EXPECT_EQ(sent().size(), 4 * 12u); // sent all the same
}

TEST_F(Link, WaitsForTheLinkThatAFailureHasLeftBusy) {
    shared.commBusy = true;
    EXPECT_EQ(fncExchange("0501", true, 5000), "9998");
    EXPECT_EQ(sent(), "");
    Bytes reply;
    EXPECT_GE(timeOf([&] { EXPECT_EQ(fncCommand("0501", reply), "0000"); }), fromSeconds(5));
    EXPECT_FALSE(shared.commBusy);
}

TEST_F(Link, AsksFromTheThirdTryOnWhetherToGoOn) {
    shared.commRetry = 2;
    EXPECT_EQ(resultOf({.resultCode = "1234"}), "1234");
    EXPECT_EQ(session.boxes(), "");
    shared.commRetry = 3;
    EXPECT_EQ(resultOf({.resultCode = "1234"}), "1234");
    EXPECT_EQ(session.boxes(), box::goOn + "1\n");
    Bytes reply;
    EXPECT_EQ(fncSendCommand("0501", true, reply, 5000, true), "1234");
    EXPECT_EQ(session.boxes(), box::goOn + "1\n");
    world.desktop.answerBox = [](const Box&) { return boxAnswer::cancel; };
    EXPECT_THROW(fncSendCommand("0501", true, reply, 5000, false), ProgramEnd);
}

TEST_F(Link, ReadsTheUnitState) {
    struct Row {
        const char* reply; // response code and data
        const char* result;
        const char* state;
        int sensors;
    };
    const Row rows[] = {
        {"00000012", "0000", "00", 12}, {"00000000", "0000", "00", 0}, {"0000010x", "9999", "01", 0},
        {"000000", "9999", "00", 0},    {"10040001", "1004", "", 0},
    };
    for (const Row& row : rows) {
        world.unit.options().answers = {{"0601", 0, {.reply = frameOf(std::string("0000000601") + row.reply)}}};
        Bytes reply;
        EXPECT_EQ(fncReadUnitState("0601", reply), row.result) << row.reply;
        EXPECT_EQ(shared.unitStateText, row.state) << row.reply;
        EXPECT_EQ(shared.sensorCount, row.sensors) << row.reply;
    }
    const std::string box = "Tarn Beacon|Application error.\r\nRES : 0000|16>1\n";
    EXPECT_EQ(session.boxes(), box + box);
}

TEST_F(Link, ChecksTheTargetByNumber) {
    const std::pair<const char*, int> rows[] = {{"0000", 0}, {"2204", 2204}, {"0E00", 8}, {"12AB", 8}};
    for (const auto& [code, number] : rows) {
        world.unit.options().answers = {{"0101", 0, {.resultCode = code}}};
        EXPECT_EQ(FirmComm::fncCheckTarget(), number) << code;
    }
    world.unit.options().answers = {{"0101", 0, {.silent = true}}};
    EXPECT_EQ(FirmComm::fncCheckTarget(), 9999);
    for (const auto& [code, number] : {std::pair{"0000", 7}, {"", 8}, {"9013", 8}, {"1004", 15}, {"5555", 27}}) {
        EXPECT_EQ(FirmComm::fncResultNumber(code), number) << code;
    }
}

TEST_F(Link, KeepsTheLogOfAFullDiskFromHoldingTheLink) {
    world.files.setRoom(0);
    Bytes reply;
    world.unit.options().answers = {{"0501", 0, {.reply = wrongCheck("00000005010000")}}};
    EXPECT_EQ(fncCommand("0501", reply), "9999");
    EXPECT_FALSE(shared.commBusy);
}

TEST(Port, OpensWithAMessageForEachFailure) {
    const std::string missing = "Tarn Beacon|現在の通信ポート(COM9)は有効ではありません|16>1\n";
    struct Row {
        const char* what;
        std::function<void(World&)> prepare;
        std::string boxes;
        bool open;
    };
    const auto socket = [](Socket::State state) {
        return [state](World& world) { world.port.socket(9).state = state; };
    };
    const auto failure = [](Operation operation) {
        const Failure gone(failureNumber::portLost, "gone");
        return [=](World& world) { world.port.operations().add(failNth(operation, 1, Lasting::once, gone)); };
    };
    const Row rows[] = {
        {"free", [](World&) {}, "", true},
        {"missing", [](World& world) { world.port.removeSocket(9); }, missing, false},
        {"held", socket(Socket::State::held), box::portHeld, false},
        {"forbidden", socket(Socket::State::forbidden), box::portHeld, false},
        {"settings", socket(Socket::State::refusesSettings), box::portHeld, false},
        {"first read fails", failure(Operation::readPort), box::portHeld, false},
        {"buffer sizes refused", failure(Operation::setBufferSizes), "", true},
        {"open already", [](World&) { EXPECT_TRUE(fncOpenPort(9, "38400,n,8,1")); }, box::portHeld, true},
    };
    for (const Row& row : rows) {
        Session session({.comPort = 9});
        shared = SharedVariables();
        row.prepare(session.world);
        EXPECT_EQ(fncOpenPort(9, "38400,n,8,1"), row.open && row.boxes.empty()) << row.what;
        EXPECT_EQ(session.boxes(), row.boxes) << row.what;
        EXPECT_EQ(session.world.port.isOpen(), row.open) << row.what;
        subClosePort();
        subClosePort();
        EXPECT_FALSE(session.world.port.isOpen()) << row.what;
    }
}

} // namespace
