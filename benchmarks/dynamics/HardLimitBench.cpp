#include <tessaro/dynamics/HardLimit.h>

#include "StereoStream.h"

namespace {

enum class Signal
{
    kMusic,   ///< decaying strokes over noise and low tones
    kFalling, ///< each sample lower than the one before, from the start of each second
    kRising,  ///< a concave rise: each sample is a new corner of the climb
    kNoise
};

float MakeSample(Signal inSignal, float inTime, float inNoise)
{
    const float second = inTime - std::floor(inTime);
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
    const float stroke = std::exp(-30.0f * std::fmod(inTime, 0.25f));
    return 2.0f * stroke * inNoise + 1.2f * std::sin(380.0f * inTime) + 0.4f * std::sin(2900.0f * inTime);
}

void HardLimitStereo(benchmark::State& ioState, Signal inSignal, float inLookAhead, bool inTruePeak)
{
    tessaro::HardLimit limiter(inTruePeak);
    limiter.SetSampleRate(StereoStream::kRate);
    limiter.SetParameter(0, -6.0f);
    limiter.SetParameter(2, inLookAhead);
    limiter.SetParameter(6, inTruePeak ? 1.0f : 0.0f);
    const StereoStream stream(
        [inSignal](float inTime, float inNoise) { return MakeSample(inSignal, inTime, inNoise); });
    stream.Measure(
        ioState, [&limiter] { limiter.Resume(); },
        [&limiter](const float* const* inInput, float* const* outOutput, unsigned inCount) {
            limiter.Process(inInput, outOutput, static_cast<int>(inCount));
        });
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
