#include <tessaro/dynamics/HardLimit.h>

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

enum class Signal
{
    kMusic,   ///< decaying strokes over noise and low tones
    kFalling, ///< each sample lower than the one before, from the start of each second
    kRising,  ///< a concave rise: each sample is a new corner of the climb
    kNoise
};

float MakeSample(Signal inSignal, std::size_t inPlace, float inNoise)
{
    const auto time = static_cast<float>(inPlace) / kRate;
    const float second = time - std::floor(time);
    switch (inSignal) {
    case Signal::kFalling:
        return 8.0f - 7.0f * second;
    case Signal::kRising:
        return std::sqrt(std::fmod(second * 20.0f, 1.0f)) * 8.0f;
    case Signal::kNoise:
        return inNoise * 4.0f;
    case Signal::kMusic:
        break;
    }
    const float stroke = std::exp(-30.0f * std::fmod(time, 0.25f));
    return 2.0f * stroke * inNoise + 1.2f * std::sin(380.0f * time) + 0.4f * std::sin(2900.0f * time);
}

/// Stereo, in blocks. Beside the speed the time of the slowest block over that of the median one, each block
/// of the stream taken at its fastest of all passes.
void HardLimitStereo(benchmark::State& ioState, Signal inSignal, float inLookAhead, bool inTruePeak)
{
    const auto block = static_cast<std::size_t>(ioState.range(0));
    tessaro::HardLimit limiter(inTruePeak);
    limiter.SetSampleRate(kRate);
    limiter.SetParameter(0, -6.0f);
    limiter.SetParameter(2, inLookAhead);
    limiter.SetParameter(6, inTruePeak ? 1.0f : 0.0f);

    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    std::vector<float> left(kLength), right(kLength), outLeft(block), outRight(block);
    for (std::size_t i = 0; i < kLength; ++i) {
        left[i] = MakeSample(inSignal, i, value(random));
        right[i] = 0.7f * MakeSample(inSignal, i, value(random));
    }
    std::vector<double> fastest(kLength / block, 1e9);
    for (auto _ : ioState) {
        ioState.PauseTiming();
        limiter.Resume(); // so that each pass has its dear moments in the same blocks
        ioState.ResumeTiming();
        for (std::size_t i = 0; i < fastest.size(); ++i) {
            const float* const input[] = {left.data() + i * block, right.data() + i * block};
            float* const output[] = {outLeft.data(), outRight.data()};
            const auto start = std::chrono::steady_clock::now();
            limiter.Process(input, output, static_cast<int>(block));
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            fastest[i] = std::min(fastest[i], time.count());
        }
    }
    const auto frames = static_cast<std::int64_t>(ioState.iterations() * fastest.size() * block);
    ioState.SetItemsProcessed(frames);
    ioState.counters["times_real_time"] =
        benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
    std::sort(fastest.begin(), fastest.end());
    ioState.counters["worst_over_median"] = fastest.back() / fastest[fastest.size() / 2];
}
BENCHMARK_CAPTURE(HardLimitStereo, music, Signal::kMusic, 7.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, music_long_look_ahead, Signal::kMusic, 20.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, music_true_peak, Signal::kMusic, 7.0f, true)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, falling, Signal::kFalling, 7.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, falling_long_look_ahead, Signal::kFalling, 20.0f, false)
    ->Arg(64)
    ->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, rising, Signal::kRising, 7.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(HardLimitStereo, noise, Signal::kNoise, 7.0f, false)->Arg(64)->Arg(512);

} // namespace
