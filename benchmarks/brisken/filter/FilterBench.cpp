#include <algorithm>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <brisken/filter/FIR.h>
#include <brisken/filter/IIR.h>
#include <brisken/filter/MRF.h>

#include "FilterNative.h"

/// Each filter beside the plain loop for the same work, on rows of 512 samples; compare items a second.
namespace brisken {
namespace {

constexpr std::size_t kCount = 512;

template <typename T>
std::vector<T> Noise(std::size_t inCount)
{
    std::mt19937 generator(1);
    std::uniform_real_distribution<T> distribution(-1, 1);
    std::vector<T> values(inCount);
    for (auto& value : values) {
        value = distribution(generator);
    }
    return values;
}

void BM_FIR(benchmark::State& ioState)
{
    const auto taps = Noise<float>(static_cast<std::size_t>(ioState.range(0)));
    const auto input = Noise<float>(kCount);
    std::vector<float> output(kCount);
    FIRState_Float* filter = nullptr;
    filter::FIRInit(&filter, taps.data(), static_cast<unsigned>(taps.size()), nullptr);
    for (auto _ : ioState) {
        filter::FIR(filter, kCount, input.data(), output.data());
        benchmark::ClobberMemory();
    }
    filter::FIRFree(filter);
    ioState.SetItemsProcessed(ioState.iterations() * kCount);
}
BENCHMARK(BM_FIR)->Arg(16)->Arg(36)->Arg(64)->Arg(71)->Arg(512);

void BM_FIR_Plain(benchmark::State& ioState)
{
    const auto taps = Noise<float>(static_cast<std::size_t>(ioState.range(0)));
    const auto input = Noise<float>(kCount + taps.size());
    std::vector<float> output(kCount);
    for (auto _ : ioState) {
        native::FIR(input.data() + taps.size() - 1, kCount, taps.data(), taps.size(), output.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kCount);
}
BENCHMARK(BM_FIR_Plain)->Arg(64)->Arg(71)->Arg(512);

/// Low-passes of different frequency, six taps each.
std::vector<double> BiquadTaps(std::size_t inNumSections)
{
    std::vector<double> taps;
    for (std::size_t i = 0; i < inNumSections; ++i) {
        const auto a1 = -1.9 + 0.05 * static_cast<double>(i);
        const auto a2 = 0.92;
        const auto gain = (1.0 + a1 + a2) / 4.0;
        taps.insert(taps.end(), {gain, 2.0 * gain, gain, 1.0, a1, a2});
    }
    return taps;
}

void BM_Biquads(benchmark::State& ioState)
{
    const auto sections = static_cast<std::size_t>(ioState.range(0));
    const auto taps = BiquadTaps(sections);
    const auto input = Noise<double>(kCount);
    std::vector<double> output(kCount);
    IIRState_Double* filter = nullptr;
    filter::IIRInit_BiQuad(&filter, taps.data(), static_cast<unsigned>(sections), nullptr);
    for (auto _ : ioState) {
        filter::IIR(kCount, input.data(), output.data(), filter);
        benchmark::ClobberMemory();
    }
    filter::IIRFree(filter);
    ioState.SetItemsProcessed(ioState.iterations() * kCount);
}
BENCHMARK(BM_Biquads)->Arg(1)->Arg(2)->Arg(6);

void BM_Biquads_Plain(benchmark::State& ioState)
{
    const auto sections = static_cast<std::size_t>(ioState.range(0));
    const auto taps = BiquadTaps(sections);
    const auto input = Noise<double>(kCount);
    std::vector<double> output(kCount);
    std::vector<double> past(2 * sections);
    for (auto _ : ioState) {
        std::copy(input.begin(), input.end(), output.begin());
        native::BiquadCascade(output.data(), kCount, taps.data(), sections, past.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kCount);
}
BENCHMARK(BM_Biquads_Plain)->Arg(1)->Arg(2)->Arg(6);

void RunMRF(benchmark::State& ioState, unsigned inUp, unsigned inDown, unsigned inNumTaps,
            unsigned inIterations)
{
    const auto taps = Noise<float>(inNumTaps);
    const auto input = Noise<float>(inIterations * inDown);
    std::vector<float> output(inIterations * inUp);
    MRFState_Float* filter = nullptr;
    filter::MRFInit(&filter, inUp, inDown, taps.data(), inNumTaps, nullptr, 0, 0, 0);
    for (auto _ : ioState) {
        filter::MRFProcess(input.data(), output.data(), inIterations, filter);
        benchmark::ClobberMemory();
    }
    filter::MRFFree(filter);
    ioState.SetItemsProcessed(ioState.iterations() * inIterations * std::max(inUp, inDown));
}

void BM_MRF_Up9(benchmark::State& ioState)
{
    RunMRF(ioState, 9, 1, 144, kCount);
}
void BM_MRF_Up4(benchmark::State& ioState)
{
    RunMRF(ioState, 4, 1, 144, kCount);
}
void BM_MRF_Down4(benchmark::State& ioState)
{
    RunMRF(ioState, 1, 4, 144, kCount);
}
void BM_MRF_160To147(benchmark::State& ioState)
{
    RunMRF(ioState, 160, 147, 160 * 32, 4);
}
BENCHMARK(BM_MRF_Up9);
BENCHMARK(BM_MRF_Up4);
BENCHMARK(BM_MRF_Down4);
BENCHMARK(BM_MRF_160To147);

void BM_MRF_Up_Plain(benchmark::State& ioState)
{
    const auto factor = static_cast<std::size_t>(ioState.range(0));
    const auto taps = Noise<float>(144);
    const auto input = Noise<float>(kCount + 144);
    std::vector<float> output(kCount * factor);
    for (auto _ : ioState) {
        native::Interpolate(input.data() + 144, kCount, factor, taps.data(), 144, output.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kCount * ioState.range(0));
}
BENCHMARK(BM_MRF_Up_Plain)->Arg(9)->Arg(4);

void BM_MRF_Down4_Plain(benchmark::State& ioState)
{
    const auto taps = Noise<float>(144);
    const auto input = Noise<float>(4 * kCount + 144);
    std::vector<float> output(kCount);
    for (auto _ : ioState) {
        native::Decimate(input.data() + 144, kCount, 4, taps.data(), 144, output.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kCount * 4);
}
BENCHMARK(BM_MRF_Down4_Plain);

} // namespace
} // namespace brisken
