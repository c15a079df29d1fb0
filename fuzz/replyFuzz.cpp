// The reply receiver against its oracle. An input is a reply, but for its first byte (1: raw data) and the escape byte
// 0xFD: 0xFD 0 ends a read, 0xFD 1 stands for the block check that is right at its place.
#include "fuzz/check.h"
#include "fuzz/replyOracle.h"

#include <iostream>
#include <span>

namespace {

constexpr std::uint8_t escape = 0xFD;

replyOracle::Reads readsOf(std::span<const std::uint8_t> input) {
    replyOracle::Reads reads(1);
    std::uint8_t check = 0;
    for (std::size_t at = 0; at < input.size(); ++at) {
        std::uint8_t byte = input[at];
        if (byte == escape && at + 1 < input.size()) {
            byte = input[++at];
            if (byte == 0) {
                reads.emplace_back();
                continue;
            }
            byte = byte == 1 ? check : byte;
        }
        check ^= byte == CommonComm::stx ? 0 : byte;
        reads.back().push_back(byte);
    }
    return reads;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool rawData = data[0] == 1;
    const replyOracle::Reads reads = readsOf({data + 1, size - 1});
    const replyOracle::Outcome received = replyOracle::received(reads, rawData);
    const replyOracle::Outcome expected = replyOracle::expected(reads, rawData);
    if (received != expected) {
        std::cerr << "received: " << received << "\nexpected: " << expected << '\n';
    }
    check(received == expected, "the receiver agrees with the oracle");
    return 0;
}
