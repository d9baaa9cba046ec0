#include <ombrel/allocator/MemoryRecycler.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include <benchmark/benchmark.h>

// Blocks of the pool against blocks of the C library: the plain `malloc`, and `aligned_alloc` at the same 64
// bytes, which is what the pool stands in for. Each round takes eight blocks, touches their first bytes, and
// gives them back, as an effect does that makes its buffers anew. Run with 1, 2 and 4 threads.
namespace {

using ombrel::allocator::MemoryRecycler;

constexpr std::size_t kBlocks = 8;

struct Pool
{
    static void* Take(std::size_t inBytes)
    {
        std::size_t granted = 0;
        return MemoryRecycler::Allocate(inBytes, granted);
    }
    static void Give(void* inBlock, std::size_t inBytes) { MemoryRecycler::Recycle(inBlock, inBytes); }
};

struct Malloc
{
    static void* Take(std::size_t inBytes) { return std::malloc(inBytes); }
    static void Give(void* inBlock, std::size_t) { std::free(inBlock); }
};

struct AlignedAlloc
{
    static void* Take(std::size_t inBytes) { return std::aligned_alloc(64, (inBytes + 63) / 64 * 64); }
    static void Give(void* inBlock, std::size_t) { std::free(inBlock); }
};

template <typename Source>
void TakeAndGive(benchmark::State& ioState)
{
    const auto bytes = static_cast<std::size_t>(ioState.range(0));
    const bool touchesAll = ioState.range(1) != 0;
    std::array<void*, kBlocks> blocks{};
    for (auto _ : ioState) {
        for (auto& block : blocks) {
            block = Source::Take(bytes);
            std::memset(block, 1, touchesAll ? bytes : 1);
        }
        benchmark::DoNotOptimize(blocks.data());
        benchmark::ClobberMemory();
        for (auto* block : blocks) {
            Source::Give(block, bytes);
        }
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(kBlocks));
}

void Sizes(benchmark::internal::Benchmark* ioBenchmark)
{
    for (const std::int64_t bytes : {64, 256, 2048, 16384, 65536, 262144, 1 << 20}) {
        ioBenchmark->Args({bytes, 0});
    }
    ioBenchmark->Args({1 << 20, 1});
    ioBenchmark->ArgNames({"bytes", "fill"})->Threads(1)->Threads(2)->Threads(4)->UseRealTime();
}

BENCHMARK_TEMPLATE(TakeAndGive, Pool)->Apply(Sizes);
BENCHMARK_TEMPLATE(TakeAndGive, Malloc)->Apply(Sizes);
BENCHMARK_TEMPLATE(TakeAndGive, AlignedAlloc)->Apply(Sizes);

} // namespace
