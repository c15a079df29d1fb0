// The reply receiver: its result does not depend on the sizes of the reads, and it stays within its array. The first byte
// of an input says whether the data is raw (1). The rest is the reply, in which the byte 0xFD stands for the right block
// check at that place.
#include "base/failure.h"
#include "fuzz/check.h"
#include "link/replyReceiver.h"

namespace {

using CommonComm::ReplyReceiver;

Bytes replyOf(std::span<const std::uint8_t> input) {
    Bytes reply;
    std::uint8_t check = 0;
    for (const std::uint8_t byte : input) {
        reply.push_back(byte == 0xFD ? check : byte);
        check = static_cast<std::uint8_t>(check ^ (reply.back() == CommonComm::stx ? 0 : reply.back()));
    }
    return reply;
}

// The receiver's results for a reply that arrives in reads of `size` bytes, up to the end of its frame.
std::string received(std::span<const std::uint8_t> reply, bool rawData, std::size_t size) {
    Bytes stored;
    ReplyReceiver receiver(stored, rawData);
    std::string text;
    try {
        while (!reply.empty() && !receiver.frameDone()) {
            const auto read = reply.first(std::min(size, reply.size()));
            text += receiver.take(read) ? "right " : "";
            reply = reply.subspan(read.size());
        }
        text += receiver.result() + (receiver.frameGood() ? " good " : " ") + receiver.logText();
        check(receiver.result().size() <= 4, "a result has four characters at the most");
        check(!receiver.frameGood() || stored.size() >= 4, "a good frame holds a response code");
    } catch (const Failure& failure) {
        text += failure.description();
    }
    check(stored.size() <= CommonComm::replyCapacity, "the array keeps its size");
    return text.append(stored.begin(), stored.end());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const Bytes reply = replyOf({data + 1, size - 1});
        const std::string whole = received(reply, data[0] == 1, reply.size());
        for (const std::size_t piece : {1, 2, 7}) {
            check(received(reply, data[0] == 1, piece) == whole, "the sizes of the reads do not matter");
        }
    }
    return 0;
}
