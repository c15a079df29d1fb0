// Measures the program without the line: the time for a block or a reply, and whole upgrades on the simulated host,
// which limit the number of sessions of a soak.
#include "app/program.h"
#include "link/replyReceiver.h"
#include "platform/simulated/world.h"
#include "simulator/frame.h"
#include "state/variables.h"
#include "transfer/xModem.h"

#include <benchmark/benchmark.h>

namespace {

void crcOfOneBlock(benchmark::State& state) {
    const Bytes block(blockSize, 0x5A);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(xModem::pCrcCalc(blockSize, block, 0));
    }
    state.SetBytesProcessed(state.iterations() * blockSize);
}
BENCHMARK(crcOfOneBlock);

// The longest possible reply, or a usual one; whole, or byte by byte as a busy loop reads it.
void reply(benchmark::State& state) {
    const bool longest = state.range(0) != 0;
    const bool byteByByte = state.range(1) != 0;
    const Bytes frame = simulator::frameOf("00000001010000" + std::string(longest ? 894 : 8, '1'));
    Bytes stored;
    for ([[maybe_unused]] auto _ : state) {
        CommonComm::ReplyReceiver receiver(stored, false);
        const std::span<const std::uint8_t> bytes(frame);
        for (std::size_t at = 0; at < bytes.size(); at += byteByByte ? 1 : bytes.size()) {
            receiver.take(bytes.subspan(at, byteByByte ? 1 : bytes.size()));
        }
        if (!receiver.frameGood()) {
            state.SkipWithError("the reply was not understood");
            break;
        }
        benchmark::DoNotOptimize(receiver.result());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.size()));
}
BENCHMARK(reply)->ArgNames({"longest", "byteByByte"})->ArgsProduct({{0, 1}, {0, 1}});

// From the start of the program to its last box: identification, load, 1,920 blocks, and the same on the unit's side.
void upgrade(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        platform::World world;
        world.host.run(program::start);
        for (const char* button : {"cmdLoading", "cmdUpgrade"}) {
            world.host.run([&] { world.theOperator.perform(platform::click("frmMain", button)); });
        }
        if (world.unit.receivedImage() != world.image) {
            state.SkipWithError("the unit holds another image");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(upgrade)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
