// Saving the unit's firmware, verifying a write, Cancel: what stands behind the controls of the service screen.
#include "tests/session.h"
#include "transfer/blockReader.h"

#include <algorithm>

namespace {

using Fate = simulator::PacketAnswer::Fate;

const std::string succeed = "Tarn Beacon|Succeed|64>1\n";
const std::string differs = "Tarn Beacon|Failed|16>1\n";
const std::string stopped = box::error + "The unit stopped sending. Nothing was saved.|16>1\n";
const std::string saved = World::savedPath;

// The service screen, with a unit that holds an image of its own.
class ServiceSession : public Session {
  public:
    ServiceSession() {
        world.unit.options().amplifierImage = simulator::makeSampleImage({.seed = 7});
        start();
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
Preparation silentAt(int delay) {
    return [delay](World& world) {
        const Micros off = world.clock.now() + fromSeconds(delay);
        world.restartUnit(off, off + fromSeconds(2));
    };
}

TEST(Save, EndsInOneOfItsWays) {
    enum class File { whole, none, partly };
    struct Row {
        const char* what;
        Preparation prepare;
        std::string boxes, operations;
        File file;
        bool again = true; // a second save succeeds
    };
    const std::string all = "52 54 53 ";
    const Row rows[] = {
        {"as it should be", nothing, succeed, all, File::whole},
        {"a slow unit", unit([](auto& options) { options.sendDelay = fromMilliseconds(430); }), succeed, all,
         File::whole},
        {"52 on its third try", answers({{"300552", 1, "2204"}, {"300552", 2, "2204"}}), succeed, all, File::whole},
        {"52 refused three times", answers({{"300552", 0, "2204"}}), box::error + "|16>1\n" + box::failed, "54 53 ",
         File::none},
        {"the dialog is cancelled", [](World& world) { world.desktop.chooseFile = {}; }, "", "", File::none},
        {"the unit falls silent", [](World& world) { world.restartUnit(fromSeconds(30), fromSeconds(32)); },
         stopped + succeed, all, File::none},
        {"one EOT only", unit([](auto& options) { options.repeatsEnd = false; }), stopped + succeed, all, File::none},
        {"an early end", sentInstead({{1001, {0x04}}, {1002, {0x04}}}), succeed, all, File::partly},
        {"EOT ahead of noise, then blocks", sentInstead({{1001, {0x04, 'x'}}}), stopped + succeed, all, File::none},
        {"cancelled", cancelledAfter(fromSeconds(60)), succeed, all, File::none},
        {"the adapter is pulled", pulledAfter(fromSeconds(30)), box::unsent + box::lost + box::failed, "52 ",
         File::none, false},
        {"pulled before the start", pulledAfter(1), box::lost + box::failed, "", File::none, false},
        {"a full disk", [](World& world) { world.files.setRoom(1000); },
         box::error + "/firmware/saved.bin: no room left on the disk|16>1\n" + succeed, all, File::partly},
        {"a read-only file", thereIs("old", true),
         box::error + "/firmware/saved.bin: the file may not be written|16>1\n" + succeed, all, File::partly},
        {"over a longer file", thereIs(std::string(imageSize + 5, 'z')), succeed, all, File::partly},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        SCOPED_TRACE(row.what);
        row.prepare(session.world);
        session.press("cmdPresent");
        EXPECT_EQ(session.boxes(), row.boxes);
        EXPECT_EQ(session.operations(), row.operations);
        const Bytes& held = session.world.unit.options().amplifierImage;
        EXPECT_EQ(session.savedFile() == held, row.file == File::whole);
        EXPECT_EQ(session.savedFile().empty(), row.file == File::none);
        EXPECT_TRUE(session.atRest());
        EXPECT_EQ(shared.programState, 0);
        EXPECT_EQ(frmMain().mousePointer, MousePointer::standard); // never an hourglass
        if (row.again) {
            session.world.files.remove(saved);
            session.world.files.setRoom(std::nullopt);
            session.world.desktop.chooseFile = [](const AskedFile&) { return saved; };
            session.world.unit.options() = {.amplifierImage = held};
            session.press("cmdPresent");
            EXPECT_TRUE(session.boxes().ends_with(succeed));
            EXPECT_EQ(session.savedFile(), held);
        }
    }
}

TEST(Save, ShowsTheBarAndTakesTheNameAsGiven) {
    ServiceSession session;
    World& world = session.world;
    world.files.put(saved, "old");
    double highest = 0;
    world.line.addHook([&](Passage&) {
        if (frmWaitLoaded()) {
            EXPECT_FALSE(frmMain().enabled);
            EXPECT_LE(frmWait().prbComm.value, frmWait().prbComm.max);
            highest = std::max(highest, frmWait().prbComm.value);
        }
    });
    session.press("cmdPresent");
    EXPECT_EQ(highest, imageSize);
    const AskedFile& asked = world.desktop.askedFiles().back();
    EXPECT_TRUE(asked.save && asked.askedToOverwrite);
    EXPECT_EQ(asked.dialog.fileName, "");
    EXPECT_EQ(asked.dialog.initialDirectory, "/tarnbeacon/");
    session.press("cmdPresent");
    EXPECT_EQ(world.desktop.askedFiles().back().dialog.fileName, saved);
}

TEST(Verification, EndsInOneOfItsWays) {
    struct Row {
        const char* what;
        Preparation prepare;
        std::string boxes, operations;
        int programState = 14;
    };
    const std::string all = "50 51 54 52 54 54 53 ";
    const Row rows[] = {
        {"equal", nothing, succeed, all},
        {"a block differs", sentInstead({{9, Bytes(132, 0x01)}}), differs, all},
        {"a block too many, as its ACK was lost",
         [](World& world) {
             world.unit.options().answerLimit = fromSeconds(1);
             world.line.addHook([acks = 0](Passage& passage) mutable {
                 if (shared.programState == 2 && passage.bytes == Bytes{0x06} && ++acks == 1000) {
                     passage.bytes.clear();
                 }
             });
         },
         differs, all},
        {"52 refused", answers({{"300552", 0, "2204"}}), box::error + "|16>1\n" + differs, "50 51 54 54 54 53 "},
        {"cancelled", cancelledAfter(fromSeconds(120)), differs, all},
        {"50 refused", answers({{"300550", 0, "2204"}}), box::failed, "54 ", 6},
        {"the transfer breaks off", unit([](auto& options) { options.packetAnswers[4] = {Fate::cancels}; }),
         box::error + "|16>1\n" + box::failed, "50 51 54 ", 6},
        {"the unit falls silent while it sends", silentAt(120),
         box::error + "The unit stopped sending. Its firmware could not be read back.|16>1\n" + differs, all},
        {"a piece of a block, and then the end", sentInstead({{9, Bytes(50, 0x01)}, {10, {0x04}}, {11, {0x04}}}, 2),
         box::error + "A part of the firmware was lost on the way back.|16>1\n" + differs, all},
        {"pulled while it reads back", pulledAfter(fromSeconds(120)), box::lost + differs, "50 51 54 52 "},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        session.press("cmdLoading");
        session.press("chkVerify");
        SCOPED_TRACE(row.what);
        row.prepare(session.world);
        session.world.desktop.boxStands = [&](const Box& box) {
            EXPECT_TRUE(!frmMain().enabled || row.programState == 6) << box.text;
        };
        session.press("cmdUpgrade");
        EXPECT_EQ(session.boxes(), row.boxes);
        EXPECT_EQ(session.operations(), row.operations);
        EXPECT_TRUE(session.atRest());
        EXPECT_EQ(shared.programState, row.programState);
        EXPECT_EQ(session.world.port.isOpen(), row.programState == 6);
        EXPECT_EQ(frmMain().lblVersion[0].caption, "1.022");
        EXPECT_EQ(session.savedFile(), Bytes());
        session.world.desktop.boxStands = {};
        if (row.programState == 14) { // no port: a further command ends with a usable window
            session.press("cmdUpgrade");
            EXPECT_TRUE(session.atRest());
            session.press("cmdPresent");
            EXPECT_TRUE(session.atRest());
        }
    }
}

TEST(Verification, SpeaksJapaneseUnderItsOwnTitle) {
    ServiceSession session;
    session.press("cmdLoading");
    session.press("chkVerify");
    session.press("optLanguage", 0);
    std::string lines; // of the progress dialog
    session.world.line.addHook([&](Passage&) {
        if (frmWaitLoaded() && frmWait().visible && !lines.ends_with(frmWait().lblMsg.caption)) {
            lines += '|' + frmWait().lblMsg.caption;
        }
    });
    session.press("cmdUpgrade");
    EXPECT_EQ(lines, "|QT-MVR のソフトウェアを ver1.046 にアップデート中です。|ベリファイ中...");
    EXPECT_EQ(session.boxes(), "ターンビーコン|正常終了|64>1\n");
    EXPECT_EQ(session.world.unit.receivedImage(), session.world.image);
}

TEST(Verification, LetsAReadAloneStoreNothing) {
    ServiceSession session;
    session.press("chkVerify");
    session.press("cmdPresent");
    EXPECT_EQ(session.boxes() + session.operations(), "52 54 ");
    EXPECT_TRUE(session.savedFile().empty() && session.atRest());
}

TEST(Cancel, SendsTenCansOnlyWhileAReadReceives) {
    ServiceSession session;
    World& world = session.world;
    world.line.record().keep(100);
    cancelledAfter(fromSeconds(60))(world);
    session.press("cmdPresent");
    const Bytes sent = world.line.record().sent(Direction::toUnit);
    EXPECT_EQ(std::ranges::count(sent, 0x18), 10);
    EXPECT_EQ(world.unit.journal().cancels, 1);

    for (const int state : {0, 1, 5, 6, 7, 12, 13, 14}) {
        world.line.record().clear();
        shared.programState = state;
        frmWait().cmdCancel.click();
        EXPECT_TRUE(world.line.record().entries().empty()) << state;
        EXPECT_EQ(shared.programState, state);
        EXPECT_TRUE(frmWaitLoaded() && !frmWait().visible);
    }
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
    struct Step {
        Bytes bytes;
        int result;
        Micros wait = 0;
    };
    struct Row {
        const char* what;
        std::vector<Step> steps; // after block 1
        std::string stored;      // the first data byte of each block
        bool incomplete;
    };
    const Bytes b2 = block(2, 'b');
    const Bytes b3 = block(3, 'c');
    const Bytes head = part(b2, 0, 50);
    const Bytes rest = part(b2, 50, 132);
    const Bytes cut128 = part(b2, 0, 128);
    const Bytes rest128 = part(b2, 128, 132);
    const Bytes most = part(b2, 0, 131); // all but the checksum
    const Bytes check = part(b2, 131, 132);
    const Bytes begun = check + part(b3, 0, 2);
    const Bytes ends = block(2, 0x04); // its rest looks like EOT
    const Micros late = fromSeconds(2);
    const Row rows[] = {
        {"sent again", {{head, 6}, {rest, 6}, {{}, 6}, {b2, 1}}, "ab", false},
        {"never sent again", {{head, 6}, {rest, 6}, {b3, 1, late}}, "ac", true},
        {"sent again late", {{head, 6}, {b2, 1, late}}, "ab", false},
        {"the rest looks like EOT", {{part(ends, 0, 50), 6}, {part(ends, 50, 132), 6}, {ends, 1}}, "a\x04", false},
        {"the rest alone is as long as a block", {{part(b2, 0, 3), 6}, {part(b2, 3, 132), 6}, {b2, 1}}, "ab", false},
        {"in three pieces", {{part(b2, 0, 1), 6}, {part(b2, 1, 50), 6}, {rest, 6}, {b2, 1}}, "ab", false},
        {"a piece, noise late, no block", {{head, 6}, {{'n'}, 6, late}, {{0x06}, 2, late}}, "a", true},
        {"a piece, then EOT late", {{head, 6}, {{0x04}, 4, late}}, "a", true},
        {"cut at 128, the rest ahead of the next", {{cut128, 1}, {rest128 + b3, 1}}, "abc", true},
        {"cut at 128, the longest rest", {{cut128, 1}, {rest128 + Bytes{'q'} + b3, 1}}, "abc", true},
        {"cut at 128, the rest lost, the next late", {{cut128, 1}, {b3, 1, late}}, "abc", true},
        {"the checksum ahead of the next", {{most, 1}, {check + b3, 1}}, "abc", false},
        {"the checksum alone", {{most, 1}, {check, 6}, {b3, 1}}, "abc", false},
        {"the checksum lost, then EOT", {{most, 1}, {{0x04}, 4}}, "ab", false},
        {"the checksum late, ahead of the next", {{most, 1}, {check + b3, 1, late}}, "abc", false},
        {"the rest alone late", {{part(b2, 0, 3), 6}, {part(b2, 3, 132), 6, late}, {b2, 1}}, "ab", false},
        {"two check bytes ahead of the next", {{most, 1}, {check + Bytes{'q'} + b3, 1}}, "abc", false},
        {"then the next in pieces", {{most, 1}, {begun, 6}, {part(b3, 2, 132), 6}, {b3, 1, late}}, "abc", false},
    };
    for (const Row& row : rows) {
        FirmComm::subResetReader();
        EXPECT_EQ(poll(block(1, 'a'), fromSeconds(2)), 1);
        FirmComm::subStoreBlock();
        for (const Step& step : row.steps) {
            const int result = poll(step.bytes, step.wait);
            EXPECT_EQ(result, step.result) << row.what;
            if (result == 1) {
                FirmComm::subStoreBlock();
            }
        }
        std::string stored;
        for (std::int32_t offset = 0; offset < shared.readBackCount; offset += blockSize) {
            stored += static_cast<char>(shared.readBackImage[static_cast<std::size_t>(offset)]);
        }
        EXPECT_EQ(stored, row.stored) << row.what;
        EXPECT_EQ(FirmComm::imageIncomplete(), row.incomplete) << row.what;
    }
}

TEST_F(Poll, TellsSilenceFromAProgramHeldUp) {
    EXPECT_EQ(poll({}, fromMilliseconds(2300)), 0); // with the 600 ms that a poll here lasts
    EXPECT_EQ(poll(block(1, 'a'), fromSeconds(60)), 1);
    EXPECT_EQ(poll({}, fromMilliseconds(2300)), 6);
    EXPECT_EQ(poll({}, fromMilliseconds(0)), 12);
    EXPECT_EQ(session.boxes(), stopped);
}

TEST(Save, TakesBlocksThatComeAtAnyMoment) {
    struct Row {
        Micros delay;
        simulator::Pieces pieces;
        bool whole;
    };
    const Row rows[] = {
        {fromMilliseconds(65), {}, true},        {fromMilliseconds(80), {}, true},
        {fromMilliseconds(98), {}, true},        {fromMilliseconds(190), {}, true},
        {0, {60, fromMilliseconds(15)}, true},   {fromMilliseconds(60), {60, fromMilliseconds(15)}, true},
        {0, {40, fromMilliseconds(130)}, false}, {0, {129, fromMilliseconds(130)}, false},
        {0, {3, fromMilliseconds(130)}, false},  {0, {1, fromMilliseconds(1100)}, false},
    };
    for (const Row& row : rows) {
        ServiceSession session;
        session.world.unit.options().sendDelay = row.delay;
        session.world.unit.options().sendPieces = row.pieces;
        session.press("cmdPresent");
        const bool whole = session.savedFile() == session.world.unit.options().amplifierImage;
        EXPECT_EQ(whole, row.whole) << row.delay << ' ' << row.pieces.size;
        EXPECT_TRUE(whole || session.savedFile().empty());
        EXPECT_EQ(session.boxes() == succeed, whole) << session.boxes();
        EXPECT_TRUE(session.atRest());
    }
}

} // namespace
