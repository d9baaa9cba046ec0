#include <tessaro/eq/Parametric.h>

#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr int kFrames = 512;
constexpr int kRate = 48000;

enum class Case
{
    kSteady,   ///< shelves and bands
    kWithCuts, ///< and high-pass and low-pass of order 4
    kGliding   ///< a band's frequency moves before each block
};

void ParametricMono(benchmark::State& ioState, Case inCase)
{
    parametric::Parametric equalizer;
    equalizer.SetSampleRate(kRate);
    for (const int gain : {1, 3, 6, 10, 14, 18, 22}) {
        equalizer.SetParameter(gain, 3.0f);
    }
    equalizer.SetParameter(37, inCase == Case::kWithCuts ? 1.0f : 0.0f);
    equalizer.SetParameter(40, inCase == Case::kWithCuts ? 1.0f : 0.0f);
    equalizer.Resume();

    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-0.5f, 0.5f);
    std::vector<float> input(kFrames), output(kFrames);
    for (auto& sample : input) {
        sample = value(random);
    }
    float frequency = 1000.0f;
    for (auto _ : ioState) {
        if (inCase == Case::kGliding) {
            frequency = 3000.0f - frequency;
            equalizer.SetParameter(12, frequency);
        }
        equalizer.Process(input.data(), output.data(), kFrames);
        benchmark::ClobberMemory();
    }
    const auto frames = static_cast<std::int64_t>(ioState.iterations()) * kFrames;
    ioState.SetItemsProcessed(frames);
    ioState.counters["times_real_time"] =
        benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(ParametricMono, steady, Case::kSteady);
BENCHMARK_CAPTURE(ParametricMono, with_cuts, Case::kWithCuts);
BENCHMARK_CAPTURE(ParametricMono, one_band_gliding, Case::kGliding);

} // namespace
