#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/filters/EqualizerSections.h>

#include "PlainSection.h"

// Items are samples of one channel. Blocks of 512 samples; the argument of the FIR pair is the number of
// taps.

namespace tessaro {
namespace {

constexpr int kBlock = 512;

std::vector<float> MakeNoise(std::size_t inCount)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-0.5f, 0.5f);
    std::vector<float> row(inCount);
    for (auto& sample : row) {
        sample = value(random);
    }
    return row;
}

template <typename Function>
void Measure(benchmark::State& ioState, Function inFunction)
{
    const auto noise = MakeNoise(kBlock);
    auto row = noise;
    for (auto _ : ioState) {
        row = noise; // a gain of the filter must not pile up
        inFunction(row.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kBlock);
}

void DoubleSection(benchmark::State& ioState)
{
    dPARA section;
    section.Setup(48000, 1000, 6, 1, 0, 0);
    section.TerminateRamp();
    Measure(ioState, [&](float* ioRow) { section.processInplace(ioRow, kBlock); });
}

void DoubleSectionPlain(benchmark::State& ioState)
{
    plain::Section section{1.0625, -1.8630, 0.8162, -1.8630, 0.8787};
    Measure(ioState, [&](float* ioRow) { plain::RunSection(section, ioRow, kBlock); });
}

BENCHMARK(DoubleSection);
BENCHMARK(DoubleSectionPlain);

} // namespace
} // namespace tessaro
