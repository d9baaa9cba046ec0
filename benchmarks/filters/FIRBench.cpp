#include <tessaro/filters/FIR.h>

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/filters/FIRFilter.h>
#include <tessaro/filters/IZFIRFilter.h>

#include "PlainFIR.h"

// Running: arguments are taps and block size; items are samples. The plain filter keeps its past in front of
// the block, as a filter of one's own would. Designs: the argument is the transform size.

namespace tessaro {

namespace {

template <typename Function>
void MeasureBlocks(benchmark::State& ioState, Function inProcess)
{
    const auto size = static_cast<std::size_t>(ioState.range(1));
    std::vector<float> input(size, 0.25f);
    std::vector<float> output(size);
    for (auto _ : ioState) {
        inProcess(size, input.data(), output.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * ioState.range(1));
}

std::vector<float> MakeTaps(const benchmark::State& inState)
{
    const auto count = static_cast<std::size_t>(inState.range(0));
    return std::vector<float>(count, 1.0f / static_cast<float>(count));
}

void GivenTaps(benchmark::State& ioState)
{
    const auto taps = MakeTaps(ioState);
    IZFIRFilter filter(taps.data(), static_cast<unsigned>(taps.size()), static_cast<int>(ioState.range(1)));
    MeasureBlocks(ioState, [&](std::size_t inSize, const float* inInput, float* outOutput) {
        filter.Process(static_cast<unsigned>(inSize), inInput, outOutput);
    });
}

void SincBand(benchmark::State& ioState)
{
    FIRFilter filter;
    filter.GenerateFIRCoeffs(0.05, 0.2, static_cast<int>(ioState.range(0)) - 1);
    MeasureBlocks(ioState, [&](std::size_t inSize, const float* inInput, float* outOutput) {
        std::copy_n(inInput, inSize, outOutput);
        filter.Process(outOutput, static_cast<int>(inSize));
    });
}

void GivenTapsPlain(benchmark::State& ioState)
{
    const auto taps = MakeTaps(ioState);
    const std::size_t past = taps.size() - 1;
    std::vector<float> line(past + static_cast<std::size_t>(ioState.range(1)));
    MeasureBlocks(ioState, [&](std::size_t inSize, const float* inInput, float* outOutput) {
        std::copy_n(inInput, inSize, line.data() + past);
        plain::RunFIR(line.data() + past, inSize, taps.data(), taps.size(), outOutput);
        std::copy_n(line.data() + inSize, past, line.data());
    });
}

void AddRuns(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->ArgNames({"taps", "block"})->ArgsProduct({{31, 128, 511}, {64, 512}});
}

BENCHMARK(GivenTaps)->Apply(AddRuns);
BENCHMARK(SincBand)->Apply(AddRuns);
BENCHMARK(GivenTapsPlain)->Apply(AddRuns);

/// One node as a linear, minimum or mixed phase filter, the tables prepared
template <typename Design>
void MeasureDesign(benchmark::State& ioState, Design inDesign)
{
    const auto size = static_cast<unsigned>(ioState.range(0));
    std::vector<unsigned> sizes{size};
    std::vector<unsigned> minPhaseSizes{4 * size};
    FIR fir(sizes, minPhaseSizes);
    const NodeFR node{2000.0f, 6.0f, 1.0f, 1.0f, 0.5f, NodeFR::kBell};
    std::vector<float> magnitude(size / 2 + 1);
    fir.BuildFreqResp(&node, 1, magnitude.data(), size, 48000.0f, false);
    std::vector<float> taps(size);
    for (auto _ : ioState) {
        inDesign(fir, node, magnitude.data(), size, taps.data());
        benchmark::ClobberMemory();
    }
}

void LinearPhaseDesign(benchmark::State& ioState)
{
    MeasureDesign(ioState, [](FIR& ioFIR, const NodeFR&, float* inMagnitude, unsigned inN, float* outTaps) {
        ioFIR.DesignFIR(inMagnitude, inN, 6.0f, outTaps, nullptr, 0);
    });
}

void MinimumPhaseDesign(benchmark::State& ioState)
{
    MeasureDesign(ioState, [](FIR& ioFIR, const NodeFR&, float* inMagnitude, unsigned inN, float* outTaps) {
        ioFIR.DesignFIRMinPhase(inMagnitude, inN, 6.0f, outTaps, 4 * inN);
    });
}

void MixedPhaseDesign(benchmark::State& ioState)
{
    MeasureDesign(ioState, [](FIR& ioFIR, const NodeFR& inNode, float*, unsigned inN, float* outTaps) {
        ioFIR.DesignFIRMixedPhase(&inNode, 1, inN, 48000.0f, 6.0f, outTaps);
    });
}

BENCHMARK(LinearPhaseDesign)->Arg(1024)->Arg(8192)->Unit(benchmark::kMicrosecond);
BENCHMARK(MinimumPhaseDesign)->Arg(1024)->Arg(8192)->Unit(benchmark::kMicrosecond);
BENCHMARK(MixedPhaseDesign)->Arg(1024)->Arg(8192)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace tessaro
