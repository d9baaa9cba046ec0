#include <tessaro/dynamics/LimEnvelope.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kLength = 48000;

/// Levels over the threshold as dense music has them, in blocks of 256; the argument is the look-ahead in
/// samples.
void Envelope(benchmark::State& ioState, bool inDouble)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    std::vector<float> levels(kLength), weights(kLength), output(kLength);
    for (std::size_t i = 0; i < kLength; ++i) {
        levels[i] = std::max(10.0f * value(random) - 8.0f, 0.0f);
        weights[i] = i / 1000 % 4 == 0 ? value(random) : 0.0f;
    }
    tessaro::LimEnvelope envelope;
    envelope.StartNewStream(48000.0f, 256);
    envelope.EnableDoubleCurve(inDouble);
    envelope.SetMode(static_cast<float>(ioState.range(0)) / 48000.0f, 0.1f, 0.006f);
    for (auto _ : ioState) {
        envelope.Process(levels.data(), output.data(), static_cast<int>(kLength), weights.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations() * kLength));
}

BENCHMARK_CAPTURE(Envelope, single, false)->Arg(8)->Arg(34)->Arg(176);
BENCHMARK_CAPTURE(Envelope, double, true)->Arg(8)->Arg(34)->Arg(176);

} // namespace
