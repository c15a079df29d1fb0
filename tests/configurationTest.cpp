// The two INI files and the texts in them.
#include "base/text.h"
#include "configuration/iniFiles.h"
#include "firmware/identificationBlock.h"
#include "platform/profile.h"
#include "tests/failureOf.h"
#include "tests/session.h"

namespace {

TEST(Ini, ReadsValues) {
    const std::string text = "\xEF\xBB\xBF; a comment\r\nCOM=9\r\n"
                             "[ifu]\r\nno equals sign\r\n  com\t= 3 ' the service's notebook\r\nCOM=4\r\n"
                             "Empty=\n=K42\nComment=' only\nTabs=\ta\tb\t\nQuoted=\"x y\"\nKey = with = signs\n"
                             "[ Other ]\nCOM=5\n"
                             "[IFU]\nAgain=6\n"
                             "[Broken\nLost=7\n";
    Session session;
    session.world.files.put("/x.ini", text);
    const std::array<const char*, 3> rows[] = {
        {"IFU", "COM", "3"},    {"IFU", "Empty", ""},         {"IFU", "Comment", ""},
        {"IFU", "Tabs", "a b"}, {"IFU", "Quoted", "\"x y\""}, {"IFU", "Key", "with = signs"},
        {"other", "com", "5"},  {"IFU", "Again", "6"},        {"IFU", "Lost", ""},
        {"IFU", "Missing", ""}, {"None", "COM", ""},          {"", "COM", ""},
        {"IFU", "", ""},
    };
    for (const auto& [section, key, value] : rows) {
        EXPECT_EQ(Common::fncGetIniString(section, key, "/x.ini"), value) << section << ' ' << key;
    }
    EXPECT_EQ(Common::fncGetIniString("IFU", "COM", "/missing.ini"), "");
    EXPECT_EQ(profileValue("[a]\nLong=" + std::string(125, 'a') + "あ", "a", "long"), std::string(125, 'a'));
    EXPECT_EQ(profileValue("[a]\nLong=" + std::string(200, 'a'), "a", "long").size(), 126u);
    for (const bool bigEndian : {false, true}) { // as an editor may save it
        std::string bytes;
        for (const char16_t unit : std::u16string(u"\uFEFF[IFU]\r\nName=aé鍵😀b\r\n")) {
            const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit);
            bytes += {bigEndian ? high : low, bigEndian ? low : high};
        }
        session.world.files.put("/wide.ini", bytes + '\0'); // ends within a character
        EXPECT_EQ(Common::fncGetIniString("ifu", "name", "/wide.ini"), "aé鍵😀b") << bigEndian;
    }
    session.world.files.find("/x.ini")->unreadable = true;
    EXPECT_EQ(Common::fncGetIniString("IFU", "COM", "/x.ini"), "");
}

TEST(Ini, SplitsListsAtCommas) {
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"", {""}},
        {" a ,\tb\t, c d ", {"a", "b", "c d"}},
        {"a,,b", {"a", "", "b"}},
        {"a,b,", {"a", "b", ""}},
        {std::string(200, ','), std::vector<std::string>(101)},
    };
    for (const auto& [text, items] : rows) {
        std::string given = text;
        EXPECT_EQ(Common::fncSplitList(given), std::ssize(items)) << text;
        EXPECT_EQ(Common::ini.iniList, items) << text;
        EXPECT_EQ(given.find('\t'), std::string::npos);
    }
}

TEST(Ini, LooksUpAmplifiers) {
    Session session;
    session.world.files.put("/tarnbeacon/TYPE.INI", "[AMP_TYPE]\n1=10000,A\n2=20000,B,,30000,C\n3=100,D,,0\n"
                                                    "4=1e300,E\n5=100\n6=0x10,F\n7= 1.5e1 V,G\n");
    const std::tuple<const char*, std::int32_t, std::string> rows[] = {
        {"1", 10000, "yes A 0"},   {"1", 19999, "yes A 9999"}, {"1", 20000, "no  0"},      {"1", 9999, "no  0"},
        {"2", 20500, "yes B 500"}, {"2", 31000, "yes C 1000"}, {"2", 29999, "yes B 9999"}, {"2", 40000, "no  0"},
        {"3", 5, "no  0"},         {"9", 5, "no kept 77"},     {"4", 5, "6 kept 77"},      {"5", 105, "9 kept 5"},
        {"6", 16, "yes F 16"},     {"7", 20, "yes G 5"},
    };
    for (const auto& [key, raw, expected] : rows) {
        std::string model = "kept";
        std::int32_t version = 77;
        std::string outcome;
        const int failure = failureOf([&, type = key, number = raw] {
            outcome = Common::fncGetAmpType(type, number, model, version) ? "yes" : "no";
        });
        EXPECT_EQ((failure == 0 ? outcome : std::to_string(failure)) + ' ' + model + ' ' + std::to_string(version),
                  expected)
            << key << ' ' << raw;
    }
}

TEST(Text, ParsesNumbers) {
    constexpr std::nullopt_t none = std::nullopt;
    const std::tuple<const char*, std::optional<double>, double> rows[] = {
        {"12", 12, 12},      {" 12 ", 12, 12}, {"+3.5", 3.5, 3.5}, {"-.5", -.5, -.5},
        {"1e3", 1000, 1000}, {"5.", 5, 5},     {"12a", none, 12},  {"1e", none, 1},
        {"", none, 0},       {"-", none, 0},   {"0x10", none, 0},  {"1,5", none, 1},
        {"nan", none, 0},    {"1 2", none, 1}, {".", none, 0},     {"1.5.2", none, 1.5},
    };
    for (const auto& [text, whole, beginning] : rows) {
        EXPECT_EQ(parseNumber(text), whole) << text;
        EXPECT_EQ(leadingNumber(text), beginning) << text;
    }
    const std::pair<double, std::int32_t> rounded[] = {{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {2.4, 2}, {-1.6, -2}};
    for (const auto& [number, whole] : rounded) {
        EXPECT_EQ(roundToWhole(number), whole) << number;
    }
    EXPECT_THROW(roundToWhole(2147483648.0), Failure);
    EXPECT_THROW(leadingNumber("1e999"), Failure);
    EXPECT_EQ(thousandthsText(1046) + thousandthsText(7), "1.0460.007");
    EXPECT_EQ(latin1ToUtf8("A\xE9"), "A\xC3\xA9");
}

TEST(Image, ReadsTheLeadText) {
    shared.firmwareImage = simulator::makeSampleImage({.leadText = "ABCDE"});
    EXPECT_EQ(FirmComm::fncGetFileField(FirmComm::FileField::leadText), "ABCDE");
}

} // namespace
