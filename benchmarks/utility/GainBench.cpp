#include <tessaro/utility/Gain.h>

#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/utility/GainRamp.h>
#include <tessaro/utility/GainTransition.h>

#include "PlainGain.h"

// Arguments: block size, channels. Items are samples of all channels. Gains lie so near to 1 that rows of
// ones neither fade nor grow within a measurement.

namespace tessaro {

namespace {

constexpr float kStart = 0.9999999f;
constexpr float kEnd = 1.0000001f;

template <typename Function>
void Measure(benchmark::State& ioState, Function inFunction)
{
    const auto size = static_cast<std::size_t>(ioState.range(0));
    const auto channels = static_cast<std::size_t>(ioState.range(1));
    std::vector<std::vector<float>> samples(channels, std::vector<float>(size, 1.0f));
    std::vector<float*> rows;
    for (auto& row : samples) {
        rows.push_back(row.data());
    }
    for (auto _ : ioState) {
        inFunction(rows.data(), channels, size);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(size * channels));
}

void Unity(benchmark::State& ioState)
{
    GainRamp ramp;
    Measure(ioState, [&](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        ramp.Process(ioRows, inChannels, static_cast<int>(inSize));
    });
}
void Constant(benchmark::State& ioState)
{
    GainRamp ramp(48000.0f, 1.00001f);
    Measure(ioState, [&](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        ramp.Process(ioRows, inChannels, static_cast<int>(inSize));
    });
}
void ConstantPlain(benchmark::State& ioState)
{
    Measure(ioState, [](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        plain::Gain(ioRows, inChannels, inSize, kStart);
    });
}
void RampTowardsTarget(benchmark::State& ioState)
{
    Measure(ioState, [](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        GainRamp ramp(48000.0f, 0.99f, 100.0f);
        ramp.SetTargetGain(1.01f);
        ramp.Process(ioRows, inChannels, static_cast<int>(inSize));
    });
}
void RampTowardsTargetPlain(benchmark::State& ioState)
{
    Measure(ioState, [](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        plain::GainTowards(ioRows, inChannels, inSize, 0.99f, 1.0f / 4800000.0f, 1.01f);
    });
}
void RampBetweenGains(benchmark::State& ioState)
{
    Measure(ioState, [](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        ApplyGainWithRamping(ioRows, inChannels, static_cast<std::int64_t>(inSize), kStart, kEnd);
    });
}
void RampBetweenGainsPlain(benchmark::State& ioState)
{
    Measure(ioState, [](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        plain::RampedGain(ioRows, inChannels, inSize, kStart, kEnd);
    });
}
void TransitionWithoutEvents(benchmark::State& ioState)
{
    GainTransition transition(8);
    Measure(ioState, [&](float* const* ioRows, std::size_t inChannels, std::size_t inSize) {
        transition.Process(ioRows, inChannels, static_cast<std::int64_t>(inSize));
    });
}

void Sizes(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->ArgsProduct({{64, 512, 4096}, {1, 2, 8}});
}

BENCHMARK(Unity)->Args({512, 2});
BENCHMARK(TransitionWithoutEvents)->Args({512, 2});
BENCHMARK(Constant)->Apply(Sizes);
BENCHMARK(ConstantPlain)->Apply(Sizes);
BENCHMARK(RampTowardsTarget)->Apply(Sizes);
BENCHMARK(RampTowardsTargetPlain)->Apply(Sizes);
BENCHMARK(RampBetweenGains)->Apply(Sizes);
BENCHMARK(RampBetweenGainsPlain)->Apply(Sizes);

} // namespace

} // namespace tessaro
