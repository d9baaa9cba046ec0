#include <tessaro/buffering/AudioBuffer.h>

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/buffering/AudioSampleType.h>

#include "PlainLoops.h"

// The argument is the block size; each block has two channels. Items are samples of both.

namespace tessaro {

namespace {

constexpr std::size_t kChannels = 2;

/// Two buffers of a block each, of numbers that stay where they are.
struct Buffers
{
    explicit Buffers(const benchmark::State& inState)
        : mSize(static_cast<unsigned>(inState.range(0))), mSource(kChannels, mSize), mDest(kChannels, mSize)
    {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            std::fill_n(mSource[channel], mSize, 0.0f);
            std::fill_n(mDest[channel], mSize, 0.25f);
        }
    }
    unsigned mSize;
    AudioBuffer mSource;
    AudioBuffer mDest;
};

template <typename Function>
void Measure(benchmark::State& ioState, Function inFunction)
{
    Buffers buffers(ioState);
    for (auto _ : ioState) {
        inFunction(buffers);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(kChannels) * buffers.mSize);
}

void Copy(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) { io.mDest.CopyFrom(io.mSource); });
}
void CopyPlain(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) {
        plain::Copy(io.mSource.GetFloatBuffers(), io.mDest.GetFloatBuffers(), kChannels, io.mSize);
    });
}
void Mix(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) { io.mDest.Mix(io.mSource); });
}
void MixPlain(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) {
        plain::Mix(io.mSource.GetFloatBuffers(), io.mDest.GetFloatBuffers(), kChannels, io.mSize);
    });
}
void Scale(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) { io.mDest *= -1.0f; });
}
void ScalePlain(benchmark::State& ioState)
{
    Measure(ioState,
            [](Buffers& io) { plain::Scale(io.mDest.GetFloatBuffers(), kChannels, io.mSize, -1.0f); });
}
void CopySilence(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) {
        io.mSource.MarkChannelsZero(AudioBuffer::SilenceMask::All());
        io.mDest.CopyFrom(io.mSource);
    });
}
void MixSilence(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) {
        io.mSource.MarkChannelsZero(AudioBuffer::SilenceMask::All());
        io.mDest.Mix(io.mSource);
    });
}
void InitWithinTheBlock(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) { io.mDest.Init(kChannels, io.mSize); });
}
void InitOfANewBuffer(benchmark::State& ioState)
{
    Measure(ioState, [](Buffers& io) {
        AudioBuffer buffer(kChannels, io.mSize);
        benchmark::DoNotOptimize(buffer[0]);
    });
}
void To16Bit(benchmark::State& ioState)
{
    std::vector<short> stored(static_cast<std::size_t>(ioState.range(0)));
    Measure(ioState, [&](Buffers& io) {
        ConvertBufferFromFloats(io.mDest[0], stored.data(), static_cast<int>(io.mSize),
                                AudioSampleType::k16Bit);
    });
}
void To16BitPlain(benchmark::State& ioState)
{
    std::vector<short> stored(static_cast<std::size_t>(ioState.range(0)));
    Measure(ioState, [&](Buffers& io) { plain::To16Bit(io.mDest[0], stored.data(), io.mSize); });
}

BENCHMARK(Copy)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(CopyPlain)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(Mix)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(MixPlain)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(Scale)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(ScalePlain)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(CopySilence)->Arg(512)->Arg(4096);
BENCHMARK(MixSilence)->Arg(512)->Arg(4096);
BENCHMARK(InitWithinTheBlock)->Arg(512);
BENCHMARK(InitOfANewBuffer)->Arg(512);
BENCHMARK(To16Bit)->Arg(512);
BENCHMARK(To16BitPlain)->Arg(512);

} // namespace

} // namespace tessaro
