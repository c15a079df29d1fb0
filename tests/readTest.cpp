// Saving the unit's firmware, verifying a write, Cancel: what stands behind the controls of the service screen.
#include "tests/story.h"
#include "transfer/blockReader.h"

namespace {

const std::string saved = World::savedPath;

// The service screen, with a unit that holds an image of its own.
class ServiceSession : public Session {
  public:
    ServiceSession() {
        world.unit.options().amplifierImage = simulator::makeSampleImage({.seed = 7});
        start();
        world.clock.advanceTo(fromSeconds(60));
        for (Control* control : {&frmMain().cmdPresent, &frmMain().chkVerify, &frmMain().fraLanguage}) {
            control->visible = true;
        }
    }
    // The saved file as bytes, empty when there is none.
    Bytes savedFile() {
        const SimulatedFile* file = world.files.find(saved);
        Bytes bytes;
        if (file != nullptr) {
            bytes.assign(file->content.begin(), file->content.end());
        }
        return bytes;
    }
};

// A file of the name that the save takes.
Preparation thereIs(const std::string& content, bool readOnly = false) {
    return [=](World& world) {
        world.files.put(saved, content);
        world.files.find(saved)->readOnly = readOnly;
    };
}

// The unit sends these as its n-th packets, and again what stays unanswered for so long.
Preparation sentInstead(const std::map<int, Bytes>& packets, int patience = 10) {
    return unit([=](auto& options) {
        options.sentInstead = packets;
        options.answerLimit = fromSeconds(patience);
    });
}

// One byte that the unit reads back is another than that of the file.
Preparation differsAt(std::ptrdiff_t place) {
    return [=](World& world) {
        Bytes image = world.image;
        image[static_cast<std::size_t>(place)] ^= 1;
        const auto number = place / blockSize + 1;
        Bytes packet{0x01, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(~number)};
        const auto data = image.begin() + place / blockSize * blockSize;
        packet.insert(packet.end(), data, data + blockSize);
        packet.push_back(0);
        world.unit.options().sentInstead = {{static_cast<int>(number), packet}};
    };
}

// Cancel as the service screen shows it.
Preparation cancelledAfter(Micros time) {
    return [=](World& world) {
        world.desktop.schedule(world.clock.now() + time, [&] {
            frmWait().cmdCancel.visible = true;
            EXPECT_TRUE(world.person.perform(click("frmWait", "cmdCancel")));
        });
    };
}

// The unit's supply fails so many seconds from now, and comes back.
Preparation silentAfter(int delay) {
    return [delay](World& world) {
        const Micros off = world.clock.now() + fromSeconds(delay);
        world.restartUnit(off, off + fromSeconds(2));
    };
}

TEST(Save, IsAStoryInEachOfItsWays) {
    enum class File { whole, none, partly };
    struct Row {
        const char* what;
        Preparation prepare;
        File file;
        bool again = true; // a second save succeeds
    };
    const Row rows[] = {
        {"as it should be", nothing, File::whole},
        {"a slow unit", unit([](auto& options) { options.sendDelay = fromMilliseconds(430); }), File::whole},
        {"52 on its third try, 54 asks", answers({{"300552", 1, "2204"}, {"300552", 2, "2204"}, {"300554", 0, "1234"}}),
         File::whole},
        {"52 refused", answers({{"300552", 0, "2204"}}), File::none},
        {"the dialog is cancelled", [](World& world) { world.desktop.chooseFile = {}; }, File::none},
        {"the unit falls silent", silentAfter(30), File::none},
        {"one EOT only", unit([](auto& options) { options.repeatsEnd = false; }), File::none},
        {"an early end", sentInstead({{1001, {0x04}}, {1002, {0x04}}}), File::partly},
        {"EOT ahead of noise, then blocks", sentInstead({{1001, {0x04, 'x'}}}), File::none},
        {"cancelled", cancelledAfter(fromSeconds(60)), File::none},
        {"cancelled between the two EOTs",
         [](World& world) {
             world.unit.options().repeatsEnd = false;
             cancelledAfter(fromMilliseconds(194'500))(world);
         },
         File::none},
        {"it ends while the box of a failed CAN stands",
         [](World& world) {
             silentAfter(59)(world);
             world.desktop.schedule(world.clock.now() + fromSeconds(60), [&world] {
                 world.desktop.reactionTime = fromSeconds(20);
                 fails(Operation::writePort, 1)(world);
             });
             cancelledAfter(fromSeconds(60))(world);
             world.desktop.schedule(world.clock.now() + fromSeconds(61),
                                    [&] { world.desktop.reactionTime = fromSeconds(1); });
         },
         File::none},
        {"the adapter is pulled", pulledAfter(fromSeconds(30)), File::none, false},
        {"pulled before the start", pulledAfter(1), File::none, false},
        {"a full disk", [](World& world) { world.files.setRoom(1000); }, File::partly},
        {"the last bytes do not reach the disk", fails(Operation::closeFile, 1), File::whole},
        {"a read-only file", thereIs("old", true), File::partly},
        {"over a longer file", thereIs(std::string(imageSize + 5, 'z')), File::partly},
        {"in Japanese, silent", inJapanese(silentAfter(30)), File::none},
        {"in Japanese, 52 refused", inJapanese(answers({{"300552", 0, "0101"}})), File::none},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        World& world = session.world;
        SCOPED_TRACE(row.what);
        row.prepare(world);
        Story story(session);
        session.press("cmdPresent");
        story.expect("save.txt", row.what);
        const Bytes held = world.unit.options().amplifierImage;
        EXPECT_EQ(session.savedFile() == held, row.file == File::whole);
        EXPECT_EQ(session.savedFile().empty(), row.file == File::none);
        EXPECT_TRUE(session.atRest());
        EXPECT_EQ(shared.programState, 0);
        if (row.again) {
            world.files.remove(saved);
            world.files.setRoom(std::nullopt);
            world.desktop.chooseFile = [](const AskedFile&) { return saved; };
            world.unit.options() = {.amplifierImage = held};
            session.press("cmdPresent");
            EXPECT_TRUE(session.savedFile() == held);
        }
    }
}

TEST(Save, AsksForAFileAsTheOperatorExpects) {
    ServiceSession session;
    World& world = session.world;
    world.files.put(saved, "old");
    session.press("cmdLoading"); // its path is no matter of the save dialog
    world.desktop.chooseFile = [](const AskedFile&) { return ' ' + saved + ' '; };
    session.press("cmdPresent");
    EXPECT_TRUE(world.desktop.askedFiles().back().askedToOverwrite); // the name without its blanks
    world.desktop.chooseFile = [](const AskedFile&) { return saved; };
    session.press("cmdPresent");
    EXPECT_TRUE(session.savedFile() == world.unit.options().amplifierImage);
    std::string names;
    for (const AskedFile& asked : world.desktop.askedFiles()) {
        names += (asked.save ? "save:" : "open:") + asked.dialog.fileName + '|';
        EXPECT_EQ(asked.dialog.initialDirectory, "/tarnbeacon/");
        EXPECT_EQ(asked.dialog.filter, "Bin File (*.bin)|*.bin||");
    }
    EXPECT_EQ(names, "open:|save:|save:" + saved + "|");
    EXPECT_TRUE(world.desktop.askedFiles().back().askedToOverwrite);
}

TEST(Verification, IsAStoryInEachOfItsWays) {
    struct Row {
        const char* what;
        Preparation prepare;
        int programState = 14;
    };
    const Row rows[] = {
        {"equal", nothing},
        {"54 answered late", answersWith("300554", {.delay = fromMilliseconds(350)})},
        {"the first byte differs", differsAt(0)},
        {"the last byte differs", differsAt(imageSize - 1)},
        {"52 refused", answers({{"300552", 0, "2204"}})},
        {"cancelled", cancelledAfter(fromSeconds(120))},
        {"50 refused", answers({{"300550", 0, "2204"}}), 6},
        {"the transfer breaks off",
         unit([](auto& options) { options.packetAnswers[4] = {simulator::PacketAnswer::Fate::cancels}; }), 6},
        {"the unit falls silent while it sends", silentAfter(120)},
        {"a piece of a block, and then the end", sentInstead({{9, Bytes(50, 0x01)}, {10, {0x04}}, {11, {0x04}}}, 2)},
        {"pulled while it reads back", pulledAfter(fromSeconds(120))},
        {"in Japanese", inJapanese(nothing)},
        {"in Japanese, silent", inJapanese(silentAfter(120))},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        session.press("cmdLoading");
        session.press("chkVerify");
        SCOPED_TRACE(row.what);
        row.prepare(session.world);
        Story story(session);
        session.press("cmdUpgrade");
        story.expect("verification.txt", row.what, ">300554");
        EXPECT_TRUE(session.atRest());
        EXPECT_EQ(shared.programState, row.programState);
        EXPECT_EQ(session.savedFile(), Bytes());
        if (row.programState == 14) { // no port: a further command ends with a usable window
            for (const char* control : {"cmdPresent", "cmdUpgrade"}) {
                session.press(control);
                EXPECT_TRUE(session.atRest());
            }
        }
    }
}

// What an earlier read has left does not make up for what this one lacks.
TEST(Verification, ComparesWhatItHasReadItself) {
    ServiceSession session;
    World& world = session.world;
    session.press("cmdLoading");
    world.unit.options().amplifierImage = world.image;
    session.press("cmdPresent");
    session.press("chkVerify");
    world.unit.options().sentInstead = {{1921 + 1 + 1001, {0x04}}, {1921 + 1 + 1002, {0x04}}};
    session.press("cmdUpgrade");
    EXPECT_TRUE(session.boxes().ends_with("|Failed|16>1\n")) << session.boxes();
}

TEST(Verification, LetsAReadAloneStoreNothing) {
    ServiceSession session;
    session.press("chkVerify");
    Story story(session);
    session.press("cmdPresent");
    story.expect("verification.txt", "a read alone");
    EXPECT_TRUE(session.savedFile().empty() && session.atRest());
}

TEST(Cancel, DoesNothingToTheUnitUnlessAReadReceives) {
    ServiceSession session;
    Story story(session);
    for (const int state : {0, 1, 5, 6, 7, 12, 13, 14}) {
        shared.programState = state;
        desktop().show(frmWait());
        frmWait().cmdCancel.click();
        EXPECT_EQ(shared.programState, state);
        EXPECT_TRUE(frmWaitLoaded() && !frmWait().visible);
    }
    EXPECT_EQ(story.text(), "[progress hidden]\n");
}

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// Looks at the port after whatever the unit has sent.
class Poll : public testing::Test {
  protected:
    Poll() {
        FirmComm::subResetReader();
        shared.signOfLifeAt = world.desktop.timeGetTime();
    }
    int poll(const Bytes& bytes, Micros wait = fromMilliseconds(100)) {
        world.clock.advanceTo(world.clock.now() + wait);
        world.line.put(Direction::fromUnit, bytes, world.clock.now());
        world.clock.advanceTo(world.clock.now() + fromMilliseconds(600));
        return FirmComm::fncReadBlock();
    }
    static Bytes block(std::uint8_t number, std::uint8_t fill) {
        Bytes bytes(132, fill);
        bytes[0] = 0x01;
        bytes[1] = number;
        bytes[2] = static_cast<std::uint8_t>(~number);
        return bytes;
    }
    static Bytes part(const Bytes& bytes, std::ptrdiff_t from, std::ptrdiff_t to) {
        return Bytes(bytes.begin() + from, bytes.begin() + to);
    }

    ServiceSession session;
    World& world = session.world;
};

TEST_F(Poll, FindsWhatHasCome) {
    EXPECT_EQ(poll({}), 0);
    struct Row {
        Bytes bytes;
        int result, length; // shared.blockLength afterwards
    };
    const Row rows[] = {
        {{0x06, 1, 2}, 2, 0},
        {{0x15}, 3, 0},
        {{0x04}, 4, 0},
        {{'C'}, 5, 0},
        {Bytes(127, 'x'), 6, 127},
        {{}, 6, 127},
        {Bytes(128, 'x'), 1, 128},
        {Bytes(133, 'x'), 1, 133},
        {Bytes(2000, 'x'), 1, 1024},
        {{0x06}, 2, 1024},
        {{'x'}, 6, 1},
        {{}, 6, 1},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(poll(row.bytes), row.result) << row.bytes.size();
        EXPECT_EQ(shared.blockLength, row.length) << row.bytes.size();
    }
    EXPECT_EQ(shared.blockBuffer[1], 0);
}

TEST_F(Poll, StoresOneElementMoreThanAnImageAndNoFurther) {
    poll(block(1, 'x'));
    for (int count = 0; count < 1922; ++count) {
        shared.blockLength = 132;
        FirmComm::subStoreBlock();
        if (count == 1919) {
            EXPECT_EQ(shared.readBackCount, imageSize);
            EXPECT_EQ(shared.readBackImage.back(), 0);
        }
    }
    EXPECT_EQ(shared.readBackCount, imageSize + 1);
    EXPECT_EQ(shared.readBackImage.back(), 'x');
    EXPECT_EQ(frmWait().prbComm.value, imageSize);
}

// Blocks that polls catch in the middle: what is stored, and whether the image counts as whole.
TEST_F(Poll, StoresNoPieceAtAWrongPlace) {
    const Bytes b2 = block(2, 'b');
    const Bytes b3 = block(3, 'c');
    const Bytes head = part(b2, 0, 50);
    const Bytes rest = part(b2, 50, 132);
    const Bytes most = part(b2, 0, 131);
    const Bytes check = part(b2, 131, 132);
    const Bytes ends = block(2, 0x04); // its rest looks like EOT
    const Bytes quiet;                 // for two seconds
    struct Row {
        const char* what;
        std::vector<Bytes> polls; // after block 1
        std::string found;        // the first data byte of each block that is stored, a point for EOT
        bool incomplete;
    };
    const Row rows[] = {
        {"sent again", {head, rest, quiet, b2}, "ab", false},
        {"sent again at once", {head, quiet, b2}, "ab", false},
        {"never sent again", {head, rest, quiet, b3}, "ac", true},
        {"the rest looks like EOT", {part(ends, 0, 50), part(ends, 50, 132), quiet, ends}, "a\x04", false},
        {"the rest is as long as a block", {part(b2, 0, 3), part(b2, 3, 132), quiet, b2}, "ab", false},
        {"a piece, noise, no block", {head, quiet, {'n'}, quiet, {0x06}}, "a", true},
        {"a piece, then EOT", {head, quiet, {0x04}}, "a.", true},
        {"cut at 128, the rest ahead of the next", {part(b2, 0, 128), part(b2, 128, 132) + b3}, "abc", true},
        {"cut at 128, the rest lost", {part(b2, 0, 128), quiet, b3}, "abc", true},
        {"the checksum ahead of the next", {most, check + b3}, "abc", false},
        {"the checksum alone", {most, check, b3}, "abc", false},
        {"the checksum lost, then EOT", {most, {0x04}}, "ab.", false},
        {"two check bytes ahead of the next", {most, check + Bytes{'q'} + b3}, "abc", false},
        {"then the next in pieces", {most, check + part(b3, 0, 2), part(b3, 2, 132), quiet, b3}, "abc", false},
    };
    for (const Row& row : rows) {
        FirmComm::subResetReader();
        std::string ended;
        std::vector<Bytes> polls = row.polls;
        polls.insert(polls.begin(), {quiet, block(1, 'a')});
        for (const Bytes& bytes : polls) {
            const int result = poll(bytes, fromSeconds(bytes.empty() ? 2 : 0));
            if (result == 1) {
                FirmComm::subStoreBlock();
            }
            ended = result == 4 ? "." : ended;
        }
        std::string found;
        for (std::int32_t offset = 0; offset < shared.readBackCount; offset += blockSize) {
            found += static_cast<char>(shared.readBackImage[static_cast<std::size_t>(offset)]);
        }
        EXPECT_EQ(found + ended, row.found) << row.what;
        EXPECT_EQ(FirmComm::imageIncomplete(), row.incomplete) << row.what;
    }
}

TEST_F(Poll, IsHeldBackWithoutWindowEvents) {
    bool eventRan = false;
    world.line.put(Direction::fromUnit, block(1, 'a'), world.clock.now());
    world.clock.advanceTo(world.clock.now() + fromMilliseconds(10));
    world.desktop.schedule(world.clock.now(), [&] { eventRan = true; });
    FirmComm::waitForWholeBlock();
    EXPECT_EQ(world.port.countReceived(), 132);
    EXPECT_FALSE(eventRan);
}

TEST_F(Poll, TellsSilenceFromAProgramHeldUp) {
    EXPECT_EQ(poll({}, fromMilliseconds(2300)), 0); // with the 600 ms that a poll here lasts
    EXPECT_EQ(poll(block(1, 'a'), fromSeconds(60)), 1);
    EXPECT_EQ(poll({}, fromMilliseconds(2300)), 6);
    EXPECT_EQ(poll({}, fromMilliseconds(0)), 12);
    EXPECT_EQ(session.boxes(), box::error + "The unit stopped sending. Nothing was saved.|16>1\n");
}

TEST(Save, TakesBlocksThatComeAtAnyMoment) {
    struct Row {
        Micros delay;
        simulator::Pieces pieces;
        bool whole;
    };
    const Row rows[] = {
        {fromMilliseconds(65), {}, true},
        {fromMilliseconds(80), {}, true},
        {fromMilliseconds(98), {}, true},
        {fromMilliseconds(190), {}, true},
        {fromMilliseconds(30), {60, fromMilliseconds(31)}, true},
        {fromMilliseconds(60), {60, fromMilliseconds(31)}, true},
        {0, {40, fromMilliseconds(130)}, false},
        {0, {129, fromMilliseconds(130)}, false},
        {0, {3, fromMilliseconds(130)}, false},
        {0, {1, fromMilliseconds(1100)}, false},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        session.world.unit.options().sendDelay = row.delay;
        session.world.unit.options().sendPieces = row.pieces;
        session.press("cmdPresent");
        const bool whole = session.savedFile() == session.world.unit.options().amplifierImage;
        EXPECT_EQ(whole, row.whole) << row.delay << ' ' << row.pieces.size;
        EXPECT_TRUE(whole || session.savedFile().empty());
        EXPECT_EQ(session.boxes() == "Tarn Beacon|Succeed|64>1\n", whole) << session.boxes();
        EXPECT_TRUE(session.atRest());
    }
}

} // namespace
