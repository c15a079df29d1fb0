// The load of a firmware file: what the operator sees of it, and what is kept.
#include "firmware/identificationBlock.h"
#include "tests/session.h"

namespace {

constexpr std::size_t versionAt = 0x3BF05;
constexpr std::size_t typeAt = 0x3BF10;
const std::string path = World::firmwarePath;
const std::string typeIni = "/tarnbeacon/TYPE.INI";

class Load : public testing::Test {
  protected:
    Load() { session.start(); }

    void putFile(const std::string& type, unsigned version, std::size_t size = imageSize) {
        std::string content(size, '\xA5');
        if (size >= imageSize) {
            content[versionAt] = static_cast<char>(version & 0xFF);
            content[versionAt + 1] = static_cast<char>(version >> 8);
            content.replace(typeAt, 16, type + std::string(16 - type.size(), '\0'));
        }
        world.files.put(path, content);
    }
    std::string fileRow() { return frmMain().lblTitle[2].caption + "|" + frmMain().lblVersion[2].caption; }
    // Presses the button and gives the boxes that came.
    std::string load() {
        const std::size_t before = session.boxes().size();
        session.press("cmdLoading");
        EXPECT_TRUE(session.atRest());
        return session.boxes().substr(before);
    }

    Session session;
    World& world = session.world;
};

TEST_F(Load, ShowsWhatTheFileIs) {
    struct Row {
        std::string type;
        unsigned version;
        std::string row;
        std::string box = {};
        std::string typeIni = {}; // in place of the usual one
    };
    const std::string both = "[IFU_BIN_TYPE]\nAMPFIRM=K42\n[IFU_DEFINE]\nK42=QT-KP42\n[AMP_BIN_TYPE]\nAMPFIRM=1\n"
                             "[AMP_TYPE]\n1=10000,QT-MVR\n";
    const Row rows[] = {
        {"AMPFIRM", 11046, "QT-MVR|1.046"},
        {"AMPFIRM", 10000, "QT-MVR|0.000"},
        {"AMPFIRM", 19999, "QT-MVR|9.999"},
        {"AMPFIRM", 20000, "|"},
        {" AMPFIRM ", 11046, "QT-MVR|1.046"},
        {"KP42FIRM", 1030, "QT-KP42|1.030"},
        {"", 11046, "QT-MVR|1.046"}, // the key NULL
        {"KP42FIRM", 0x8000, "QT-KP42|0.000", box::error + "Overflow|16>1\n"},
        {std::string(" \0 \0", 4), 11046, "QT-MVR|1.046"},
        {"KP42FIRM", 0, "QT-KP42|0.000"},
        {"AMPFIRM", 0xFFFF, "|", box::error + "Overflow|16>1\n"},
        {"AMPFIRM", 1030, "QT-KP42|1.030", "", both}, // interface-unit entries come first
        {"UNKNOWN", 11046, "|"},
        {std::string("AM\0FIRM", 7), 11046, "M|0.046", "", "[AMP_BIN_TYPE]\nAM FIRM=1\n[AMP_TYPE]\n1=11000,M\n"},
        {std::string("AM\0FIRM", 7), 11046, "|"},
        {"\xE9T\xC9", 11046, "M|0.046", "", "[AMP_BIN_TYPE]\néTÉ=1\n[AMP_TYPE]\n1=11000,M\n"},
        {"AMPFIRM", 11046, "|", box::error + "Subscript out of range|16>1\n",
         "[AMP_BIN_TYPE]\nAMPFIRM=1\n[AMP_TYPE]\n1=5\n"},
    };
    const std::string usual = world.files.find(typeIni)->content;
    for (const Row& row : rows) {
        world.files.put(typeIni, row.typeIni.empty() ? usual : row.typeIni);
        putFile(row.type, row.version);
        EXPECT_EQ(load(), row.box) << row.type;
        EXPECT_EQ(fileRow(), row.row) << row.type << row.version;
        EXPECT_TRUE(shared.fileLoaded && frmMain().cmdUpgrade.enabled) << row.type;
        EXPECT_EQ(frmMain().mousePointer, MousePointer::arrow);
    }
}

TEST_F(Load, ShowsThatItIsAtWorkAndTakesNoPresses) {
    session.press("cmdLoading");
    std::string seen;
    const auto look = [&](const char* when) {
        seen += when + std::to_string(static_cast<int>(frmMain().mousePointer)) + fileRow();
        for (const char* button : {"cmdEnd", "cmdUpgrade"}) {
            seen += world.person.perform(click("frmMain", button)) ? button : "";
        }
    };
    world.desktop.chooseFile = [&](const AskedFile&) {
        world.desktop.schedule(world.clock.now(), [&] { look(" blank "); });
        return path;
    };
    world.files.operations().add([&](const OperationCall& call) {
        if (call.operation == Operation::readFile) {
            world.desktop.schedule(call.at, [&] { look(" end "); });
        }
    });
    EXPECT_EQ(load(), "");
    EXPECT_EQ(seen, " blank 11| end 11QT-MVR|1.046");
}

TEST_F(Load, OffersThePathChosenLast) {
    for (const char* chosen : {"/somewhere/else.bin", ""}) {
        world.desktop.chooseFile = [=](const AskedFile&) {
            return *chosen == 0 ? std::nullopt : std::optional(chosen);
        };
        const std::int64_t operations = world.files.operations().passed();
        session.press("cmdLoading");
        EXPECT_EQ(world.files.operations().passed() > operations, *chosen != 0); // nothing is done after "Cancel"
    }
    session.press("cmdLoading");
    const AskedFile& asked = world.desktop.askedFiles().back();
    EXPECT_EQ(asked.dialog.fileName, "/somewhere/else.bin");
    EXPECT_EQ(asked.dialog.initialDirectory, "/tarnbeacon/");
    EXPECT_EQ(asked.dialog.filter, "Bin File (*.bin)|*.bin||");
    EXPECT_EQ(asked.dialog.flags, 2);
    EXPECT_FALSE(asked.save);
}

TEST_F(Load, TakesNoOtherFileThanTheOneItMeasures) {
    const std::string blank = path + ' '; // blanks at the ends of a name do not count
    world.desktop.chooseFile = [&](const AskedFile&) { return blank; };
    for (const std::size_t size : {imageSize, imageSize - 1}) {
        putFile("KP42FIRM", 1030, size);
        world.files.put(blank, std::string(imageSize * 2 - 1 - size, '\0'));
        EXPECT_EQ(load(), "");
        EXPECT_EQ(fileRow(), "QT-KP42|1.030"); // the second is of another size: the first one stays
        EXPECT_EQ(shared.loadFilePath, path);
    }
}

TEST_F(Load, KeepsOrDropsTheFileLoadedBefore) {
    struct Row {
        const char* what;
        std::function<void()> prepare;
        std::string box;
        bool kept;
    };
    const Row rows[] = {
        {"cancelled", [&] { world.desktop.chooseFile = {}; }, "", true},
        {"one byte short", [&] { putFile("AMPFIRM", 11046, imageSize - 1); }, "", true},
        {"one byte long", [&] { putFile("AMPFIRM", 11046, imageSize + 1); }, "", true},
        {"missing", [&] { world.files.remove(path); }, box::error, true},
        {"unreadable", [&] { world.files.find(path)->unreadable = true; }, box::error, false},
        {"breaks off", [&] { world.files.find(path)->readable = 1000; }, box::error, false},
        {"closing fails",
         [&] {
             world.files.operations().add(
                 failNth(Operation::closeFile, 0, Lasting::forGood, Failure(failureNumber::fileBroken, "")));
         },
         box::error, false},
    };
    for (const Row& row : rows) {
        world.desktop.chooseFile = [](const AskedFile&) { return path; };
        putFile("AMPFIRM", 11046);
        EXPECT_EQ(load(), "") << row.what;
        const Bytes before = shared.firmwareImage;
        row.prepare();
        EXPECT_EQ(load().starts_with(row.box), true) << row.what;
        EXPECT_EQ(fileRow(), row.kept ? "QT-MVR|1.046" : "|") << row.what;
        EXPECT_EQ(shared.fileLoaded, row.kept) << row.what;
        EXPECT_EQ(frmMain().cmdUpgrade.enabled, row.kept) << row.what;
        EXPECT_EQ(shared.firmwareImage == before, row.kept || row.what == std::string("closing fails")) << row.what;
    }
}

TEST_F(Load, TakesTheVersionOfTheUnitBackOnTheScreen) {
    session.press("cmdLoading");
    EXPECT_EQ(FirmComm::fncGetFileField(FirmComm::FileField::leadText), "TARN0");
    session.press("cmdUpgrade");
    EXPECT_EQ(frmMain().lblVersion[0].caption, "1.046");
    session.press("cmdLoading");
    EXPECT_EQ(frmMain().lblVersion[0].caption, "1.022");
}

} // namespace
