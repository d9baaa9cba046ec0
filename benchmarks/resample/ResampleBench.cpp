#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/resample/LinearResample.h>
#include <tessaro/resample/Resample.h>

#ifdef TESSARO_HAVE_SOXR
#include <soxr.h>
#endif

namespace tessaro {
namespace {

/// Arguments: source rate, destination rate, samples a call. Rates are in output samples a second.
class Stream
{
public:
    explicit Stream(const benchmark::State& inState)
        : mSource(static_cast<int>(inState.range(0))),
          mDestination(static_cast<int>(inState.range(1))),
          mBlock(static_cast<int>(inState.range(2))),
          mInput(static_cast<std::size_t>(mBlock) * kBlocks),
          mOutput(static_cast<std::size_t>(static_cast<double>(mBlock) * mDestination / mSource) + 4096)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> value(-0.5f, 0.5f);
        for (auto& sample : mInput) {
            sample = value(random);
        }
    }

    const float* GetNextBlock()
    {
        mNext = (mNext + 1) % kBlocks;
        return mInput.data() + static_cast<std::size_t>(mBlock) * mNext;
    }

    int mSource;
    int mDestination;
    int mBlock;
    std::vector<float> mInput;
    std::vector<float> mOutput;

private:
    static constexpr std::size_t kBlocks = 8;
    std::size_t mNext = 0;
};

void WindowedSinc(benchmark::State& ioState)
{
    Stream stream(ioState);
    Resample resample;
    resample.SetSampleRates(stream.mSource, stream.mDestination);
    resample.Initialize();
    std::int64_t produced = 0;
    for (auto _ : ioState) {
        produced += resample.Process(stream.GetNextBlock(), stream.mOutput.data(), stream.mBlock);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(produced);
}

void Linear(benchmark::State& ioState)
{
    Stream stream(ioState);
    LinearResample resample(static_cast<float>(stream.mSource), static_cast<float>(stream.mDestination));
    std::int64_t produced = 0;
    for (auto _ : ioState) {
        produced += resample.Process(stream.GetNextBlock(), stream.mOutput.data(), stream.mBlock);
        resample.Reset();
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(produced);
}

#ifdef TESSARO_HAVE_SOXR

/// Very high quality, on one thread
void Peer(benchmark::State& ioState)
{
    Stream stream(ioState);
    const auto quality = soxr_quality_spec(SOXR_VHQ, 0);
    const auto types = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const auto threads = soxr_runtime_spec(1);
    soxr_t peer = soxr_create(stream.mSource, stream.mDestination, 1, nullptr, &types, &quality, &threads);
    std::size_t produced = 0;
    for (auto _ : ioState) {
        std::size_t count = 0;
        soxr_process(peer, stream.GetNextBlock(), static_cast<std::size_t>(stream.mBlock), nullptr,
                     stream.mOutput.data(), stream.mOutput.size(), &count);
        produced += count;
        benchmark::ClobberMemory();
    }
    soxr_delete(peer);
    ioState.SetItemsProcessed(static_cast<std::int64_t>(produced));
}

#endif

void Conversions(benchmark::internal::Benchmark* ioBenchmark)
{
    for (const int block : {64, 512, 8192}) {
        ioBenchmark->Args({44100, 48000, block});
    }
    for (const auto& [source, destination] : {std::pair{48000, 44100},
                                              {44100, 96000},
                                              {96000, 44100},
                                              {48000, 96000},
                                              {96000, 48000},
                                              {44100, 44143}}) {
        ioBenchmark->Args({source, destination, 512});
    }
}

BENCHMARK(WindowedSinc)->Apply(Conversions);
#ifdef TESSARO_HAVE_SOXR
BENCHMARK(Peer)->Apply(Conversions);
#endif
BENCHMARK(Linear)->Apply(Conversions);

/// A new object, whose table is made or taken from the cache
void SetUp(benchmark::State& ioState, bool inIsCached)
{
    double shift = 0.1;
    for (auto _ : ioState) {
        Resample resample;
        resample.SetSampleRates(44100, 48000);
        resample.SetNyquistShift(inIsCached ? 0.1 : shift += 1e-3);
        resample.Initialize();
        benchmark::DoNotOptimize(resample);
    }
}

void SetUpFromCache(benchmark::State& ioState)
{
    SetUp(ioState, true);
}

void SetUpNewTable(benchmark::State& ioState)
{
    SetUp(ioState, false);
}

BENCHMARK(SetUpFromCache);
BENCHMARK(SetUpNewTable);

} // namespace
} // namespace tessaro
