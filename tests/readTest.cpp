// Blocks of a read that arrive whole, split, late or damaged, and what is stored of them.
#include "tests/session.h"
#include "transfer/blockReader.h"
#include "transfer/readProcedure.h"

namespace {

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes block(std::uint8_t number, std::uint8_t fill) {
    return Bytes{simulator::soh, number, static_cast<std::uint8_t>(~number)} + Bytes(129, fill);
}

Bytes part(const Bytes& bytes, std::ptrdiff_t from, std::ptrdiff_t to) {
    return {bytes.begin() + from, bytes.begin() + to};
}

struct Sent {
    int after; // milliseconds after the start of the part before
    Bytes bytes;
};

// A save from a unit that sends the first part, usually block 1 filled with "a", then these parts, then EOT. Returns the first byte of each block
// in the file, or "lost" or "stopped" after a box. Before it the program is blocked for `blocked` milliseconds.
std::string save(const Bytes& first, const std::vector<Sent>& sent, int blocked) {
    Session session;
    World& world = session.world;
    session.start();
    frmMain().cmdPresent.visible = true;
    world.line.faults(Direction::toUnit) = {{.kind = LineFault::Kind::drop, .writes = Writes::transfer}};
    Micros at = world.clock.now() + fromSeconds(2);
    for (int pause = 0; pause < 150; ++pause) {
        world.host.schedule(at + fromMilliseconds(pause),
                            [] { EXPECT_FALSE(shared.stepBusy); }); // no step runs window events
    }
    world.host.schedule(at + fromMilliseconds(300), [&] { world.host.sleep(blocked); });
    std::vector<Sent> all{{0, first}};
    all.insert(all.end(), sent.begin(), sent.end());
    all.insert(all.end(), {{2000 + blocked, {simulator::eot}}, {500, {simulator::eot}}});
    for (const auto& [after, bytes] : all) {
        at += fromMilliseconds(after);
        world.line.at(at, [&world, at, part = bytes] { world.line.put(Direction::fromUnit, part, at); });
    }
    session.press("cmdPresent");
    EXPECT_TRUE(session.atRest());
    if (const SimulatedFile* file = world.files.find(World::savedPath); file != nullptr) {
        std::string stored;
        for (std::size_t place = 0; file->content[place] != 0; place += blockSize) {
            stored += file->content[place];
        }
        return stored;
    }
    return session.boxes().find("was lost") != std::string::npos ? "lost" : "stopped";
}

TEST(Read, HandlesSplitBlocks) {
    const Bytes b2 = block(2, 'b');
    const Bytes b3 = block(3, 'c');
    const Bytes head = part(b2, 0, 50);
    const Bytes rest = part(b2, 50, 132);
    const Bytes most = part(b2, 0, 131);
    const Bytes check = part(b2, 131, 132);
    const Bytes ends = block(2, simulator::eot); // its rest looks like EOT
    const Bytes eot{simulator::eot};
    struct Row {
        const char* what;
        std::vector<Sent> sent; // 130 ms apart: one poll for each
        std::string stored;
        int blocked = 0; // milliseconds
        Bytes first = block(1, 'a');
    };
    const Row rows[] = {
        {"whole", {{100, b2}, {100, b3}}, "abc"},
        {"with two check bytes", {{100, b2 + Bytes{'q'}}, {100, b3}}, "abc"},
        {"other control bytes", {{100, {simulator::ack}}, {100, {simulator::nak}}, {100, {'C'}}, {100, b2}}, "ab"},
        {"noise", {{100, {'x', 'y'}}, {130, b2}}, "ab"},
        {"nothing for nearly three seconds", {{2900, b2}}, "ab"},
        {"nothing for three seconds", {{3200, b2}}, "stopped"},
        {"a poll that comes late", {{1000, b2}}, "ab", 60'000},
        {"sent again", {{100, head}, {130, rest}, {2000, b2}}, "ab"},
        {"sent again at once", {{100, head}, {2000, b2}}, "ab"},
        {"never sent again", {{100, head}, {130, rest}, {2000, b3}}, "lost"},
        {"the rest looks like EOT", {{100, part(ends, 0, 50)}, {130, part(ends, 50, 132)}, {2000, ends}}, "a\x04"},
        {"the rest is as long as a block", {{100, part(b2, 0, 3)}, {130, part(b2, 3, 132)}, {2000, b2}}, "ab"},
        {"a piece, noise, no block", {{100, head}, {2000, {'n'}}, {2000, {simulator::ack}}}, "lost"},
        {"a piece, then EOT", {{100, head}}, "lost"},
        {"cut at 128, the rest before the next", {{100, part(b2, 0, 128)}, {130, part(b2, 128, 132) + b3}}, "lost"},
        {"cut at 128, the rest lost", {{100, part(b2, 0, 128)}, {2000, b3}}, "lost"},
        {"the checksum before the next", {{100, most}, {130, check + b3}}, "abc"},
        {"a checksum like SOH before the next", {{100, most}, {130, Bytes{simulator::soh} + b3}}, "abc"},
        {"the first sent again", {{2000, block(1, 'a')}, {100, b2}}, "ab", 0, part(block(1, 'a'), 0, 50)},
        {"the checksum alone", {{100, most}, {130, check}, {130, b3}}, "abc"},
        {"the checksum lost, then EOT", {{100, most}, {130, eot}}, "ab"},
        {"two check bytes before the next", {{100, most}, {130, check + Bytes{'q'} + b3}}, "abc"},
        {"the next in pieces, never sent again",
         {{100, most}, {130, check + part(b3, 0, 2)}, {130, part(b3, 2, 132)}},
         "lost"},
        {"then the next in pieces",
         {{100, most}, {130, check + part(b3, 0, 2)}, {130, part(b3, 2, 132)}, {2000, b3}},
         "abc"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(save(row.first, row.sent, row.blocked), row.stored) << row.what;
    }
}

TEST(Read, AcceptsBlocksAtAnyTime) {
    const std::tuple<int, simulator::Pieces, bool> rows[] = {
        // milliseconds before each block, its pieces, whether it is read completely
        {65, {}, true},
        {80, {}, true},
        {98, {}, true},
        {190, {}, true},
        {30, {60, fromMilliseconds(31)}, true},
        {60, {60, fromMilliseconds(31)}, true},
        {65, {20, fromMilliseconds(15)}, true},
        {0, {40, fromMilliseconds(130)}, false},
        {0, {129, fromMilliseconds(130)}, false},
        {0, {3, fromMilliseconds(130)}, false},
        {0, {1, fromMilliseconds(1100)}, false},
    };
    for (const auto& [delay, pieces, whole] : rows) {
        Session session;
        auto& unit = session.world.unit.options();
        unit = {.amplifierImage = simulator::makeSampleImage({}),
                .sendDelay = fromMilliseconds(delay),
                .sendPieces = pieces};
        session.start();
        frmMain().cmdPresent.visible = true;
        session.press("cmdPresent");
        const SimulatedFile* file = session.world.files.find(World::savedPath);
        EXPECT_EQ(file != nullptr, whole) << delay << ' ' << pieces.size;
        EXPECT_TRUE(!whole || Bytes(file->content.begin(), file->content.end()) == unit.amplifierImage);
        EXPECT_EQ(session.boxes() == "Tarn Beacon|Succeed|64>1\n", whole) << session.boxes();
        EXPECT_TRUE(session.atRest());
    }
}

TEST(Read, StopsAtTheEndOfTheArray) {
    Session session;
    session.start();
    FirmComm::subResetReader();
    FirmComm::reader.blockLength = 132;
    FirmComm::reader.blockBuffer.assign(FirmComm::reader.blockBuffer.size(), 'x');
    for (int count = 0; count < blockCount + 2; ++count) {
        EXPECT_EQ(shared.readBackImage.back(), count <= blockCount ? 0 : 'x');
        FirmComm::subStoreBlock();
    }
    EXPECT_EQ(FirmComm::reader.readBackCount, imageSize + 1);
    EXPECT_EQ(frmWait().prbComm.value, imageSize);
    shared.firmwareImage = shared.readBackImage;
    shared.firmwareImage.back() = 0;
    EXPECT_EQ(FirmComm::fncCompareImage(), 1); // the byte of the block too many
}

} // namespace
