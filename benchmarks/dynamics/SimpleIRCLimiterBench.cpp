#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr int kRate = 48000;
constexpr std::size_t kLength = 4 * kRate;

/// Stereo strokes of noise over low tones, in blocks. Beside the speed the time of the slowest block over
/// that of the median one, each block of the stream taken at its fastest of all passes.
void SimpleIRCLimiterStereo(benchmark::State& ioState, float inBehavior, float inThreshold, bool inAnalog)
{
    const auto block = static_cast<std::size_t>(ioState.range(0));
    tessaro::SimpleIRCLimiter limiter;
    limiter.SetMode(2, kRate, static_cast<int>(block));
    limiter.SetThreshold(inThreshold);
    limiter.SetBehavior(inBehavior);
    limiter.EnableAnalogDetection(inAnalog);

    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    const auto padded = kLength + static_cast<std::size_t>(limiter.GetLookAhead());
    std::vector<float> left(padded), right(padded), outLeft(block), outRight(block);
    for (std::size_t i = 0; i < padded; ++i) {
        const auto time = static_cast<float>(i) / kRate;
        const float stroke = std::exp(-30.0f * std::fmod(time, 0.25f));
        const float tones = 0.6f * std::sin(380.0f * time) + 0.2f * std::sin(2900.0f * time);
        left[i] = stroke * value(random) + tones;
        right[i] = 0.7f * stroke * value(random) + tones;
    }
    std::vector<double> fastest(kLength / block - 1, 1e9);
    for (auto _ : ioState) {
        limiter.Reset();
        for (std::size_t i = 0; i <= fastest.size(); ++i) {
            const float* const input[] = {left.data() + i * block, right.data() + i * block};
            float* const output[] = {outLeft.data(), outRight.data()};
            const auto start = std::chrono::steady_clock::now();
            limiter.Process(input, static_cast<int>(block), output, {});
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            if (i != 0) { // the first takes in the look-ahead
                fastest[i - 1] = std::min(fastest[i - 1], time.count());
            }
        }
    }
    const auto frames = static_cast<std::int64_t>(ioState.iterations() * (fastest.size() + 1) * block);
    ioState.SetItemsProcessed(frames);
    ioState.counters["times_real_time"] =
        benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
    std::sort(fastest.begin(), fastest.end());
    ioState.counters["worst_over_median"] = fastest.back() / fastest[fastest.size() / 2];
}
BENCHMARK_CAPTURE(SimpleIRCLimiterStereo, smooth, 0.6f, -6.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(SimpleIRCLimiterStereo, smooth_analog, 0.6f, -6.0f, true)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(SimpleIRCLimiterStereo, narrow, 0.15f, -6.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(SimpleIRCLimiterStereo, clipping, 0.0f, -6.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(SimpleIRCLimiterStereo, never_over, 0.6f, 12.0f, false)->Arg(64)->Arg(512);

} // namespace
