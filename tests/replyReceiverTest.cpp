// The reply receiver against an oracle: every short sequence of the bytes that matter, after beginnings of replies that
// bring it to each of its places, and in every split into reads.
#include "fuzz/replyOracle.h"
#include "tests/thinned.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using replyOracle::Reads;

constexpr int rightCheck = -1; // stands for the block check that would be right at its place
constexpr std::array alphabet{0x02, 0x03, int{'0'}, int{'F'}, int{'1'}, int{'g'}, 0x00, rightCheck};

struct EachReply {
    std::string bytes; // the beginning, and what follows it at present
    bool rawData;
    std::size_t fixed = bytes.size();

    void tryAll(int depth) {
        trySplits();
        for (std::size_t next = 0; depth > 0 && next < alphabet.size(); ++next) {
            bytes.push_back(alphabet[next] == rightCheck ? check() : static_cast<char>(alphabet[next]));
            tryAll(depth - 1);
            bytes.pop_back();
        }
    }

    char check() const {
        char check = 0;
        for (const char byte : bytes) {
            check = static_cast<char>(check ^ (byte == 2 ? 0 : byte));
        }
        return check;
    }

    // Each bit of the mask splits ahead of one of the free bytes.
    void trySplits() const {
        for (unsigned mask = 0; mask < 1u << (bytes.size() - fixed) && !testing::Test::HasFailure(); ++mask) {
            Reads reads{Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(fixed))};
            for (std::size_t at = fixed; at < bytes.size(); ++at) {
                if ((mask >> (at - fixed) & 1) != 0) {
                    reads.emplace_back();
                }
                reads.back().push_back(static_cast<std::uint8_t>(bytes[at]));
            }
            EXPECT_EQ(replyOracle::received(reads, rawData), replyOracle::expected(reads, rawData))
                << testing::PrintToString(reads) << (rawData ? " raw" : "");
        }
    }
};

class EachBeginning : public testing::TestWithParam<std::string_view> {};

TEST_P(EachBeginning, AgreesWithTheOracle) {
    for (const bool rawData : {false, true}) {
        EachReply{std::string(GetParam()), rawData}.tryAll(thinned ? 3 : 4);
    }
}

// Data up to the last places of the reply array.
TEST(ReplyArray, AgreesWithTheOracleWhereItsArrayEnds) {
    for (const bool rawData : {false, true}) {
        const std::size_t full = rawData ? 447 : 894; // characters after the response code
        for (const std::size_t length : {full - 2, full - 1, full}) {
            EachReply{"\00200000001010000" + std::string(length, '1'), rawData}.tryAll(thinned ? 2 : 3);
        }
    }
}

// Written as \002, STX may stand ahead of digits.
INSTANTIATE_TEST_SUITE_P(ReplyReceiver, EachBeginning,
                         testing::Values("", "0000", "\0020000", "\00200000", "\002000000", "\0020000001",
                                         "\0020000110101", "\00200001201010000", "\0020000000101000",
                                         "\0020000000101000041", "\00200000F010100001\x03",
                                         "\00200000001010000AF\x03"));

} // namespace
