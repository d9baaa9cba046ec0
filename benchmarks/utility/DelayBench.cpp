#include <tessaro/utility/AudioDelayBuffer.h>
#include <tessaro/utility/DelayBuffer.h>
#include <tessaro/utility/DelayLine.h>

#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "utility/RingBuffer.h"

// One channel in blocks of 512, written to a ring and read from it. The measure is `memcpy` of the block into
// a ring of the same length and out of it again. Argument: length of the ring, in samples.

namespace tessaro {

namespace {

constexpr unsigned kBlock = 512;

template <typename Function>
void Measure(benchmark::State& ioState, Function inFunction)
{
    std::vector<float> block(kBlock, 0.5f);
    for (auto _ : ioState) {
        inFunction(block.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kBlock);
}

unsigned LengthOf(const benchmark::State& inState)
{
    return static_cast<unsigned>(inState.range(0));
}

void MemcpyThereAndBack(benchmark::State& ioState)
{
    const std::size_t blocks = LengthOf(ioState) / kBlock;
    std::vector<float> ring(blocks * kBlock);
    std::size_t write = 0;
    Measure(ioState, [&](float* ioBlock) {
        std::memcpy(ring.data() + write * kBlock, ioBlock, kBlock * sizeof(float));
        write = write + 1 == blocks ? 0 : write + 1;
        std::memcpy(ioBlock, ring.data() + write * kBlock, kBlock * sizeof(float));
    });
}

/// The delay is the longest that the line has, or a part of that.
template <unsigned kPart>
void Line(benchmark::State& ioState)
{
    utility::DelayLine line(1000.0f, static_cast<float>(LengthOf(ioState)));
    line.SetDelaySamples(LengthOf(ioState) / kPart);
    Measure(ioState, [&](float* ioBlock) { line.ProcessInPlace(kBlock, ioBlock); });
}

void Ring(benchmark::State& ioState)
{
    RingBuffer<float> ring(1, static_cast<int>(LengthOf(ioState)));
    const std::vector<float> zeros(LengthOf(ioState) - kBlock - 1);
    const float* rows[] = {zeros.data()};
    ring.Write(rows, static_cast<int>(zeros.size()));
    Measure(ioState, [&](float* ioBlock) {
        ring.Write(&ioBlock, kBlock);
        ring.Read(&ioBlock, kBlock);
    });
}

void BufferDelay(benchmark::State& ioState)
{
    AudioDelayBuffer delay;
    delay.Init(1, kBlock, LengthOf(ioState) - kBlock);
    AudioBuffer block(1, kBlock);
    block.Zero();
    block.ClearZeroFlags();
    Measure(ioState, [&](float*) {
        delay.Write(block);
        delay.Read(block);
    });
}

void LookBack(benchmark::State& ioState)
{
    DelayBuffer buffer;
    buffer.Init(static_cast<int>(LengthOf(ioState)));
    Measure(ioState, [&](float* ioBlock) {
        buffer.Write(ioBlock, kBlock);
        buffer.Read(ioBlock, kBlock, 0);
    });
}

void Lengths(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Arg(600)->Arg(1000)->Arg(4800)->Arg(48000);
}

BENCHMARK(MemcpyThereAndBack)->Apply(Lengths);
BENCHMARK(Line<1>)->Apply(Lengths);
BENCHMARK(Line<2>)->Apply(Lengths);
BENCHMARK(Line<10>)->Apply(Lengths);
BENCHMARK(Ring)->Apply(Lengths);
BENCHMARK(BufferDelay)->Apply(Lengths);
BENCHMARK(LookBack)->Apply(Lengths);

} // namespace

} // namespace tessaro
