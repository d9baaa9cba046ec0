#include <tessaro/dynamics/IRCLimiter.h>

#include <benchmark/benchmark.h>

#include "StereoStream.h"

namespace {

using Signal = StereoStream::Signal;

struct Setting
{
    float mThreshold; ///< dB
    bool mIsDouble;
    bool mIsAnalog;
    float mLink = 100.0f;
};

void IRCLimiterStereo(benchmark::State& ioState, Signal inSignal, const Setting& inSetting)
{
    tessaro::IRCLimiter limiter;
    limiter.SetThreshold(inSetting.mThreshold);
    limiter.SetStereoLinking(inSetting.mLink);
    limiter.EnableDoubleEnvelope(inSetting.mIsDouble);
    limiter.EnableAnalogDetection(inSetting.mIsAnalog);
    limiter.SetMode(2, StereoStream::kRate, static_cast<int>(ioState.range(0)));
    StereoStream(inSignal).Measure(
        ioState, [&] { limiter.Reset(); },
        [&](const float* const* inRows, float* const* outRows, unsigned inCount) {
            limiter.Process(inRows, static_cast<int>(inCount), outRows, {});
        });
}

void Blocks(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Arg(64)->Arg(512);
}

constexpr Setting kSingle{-10.0f, false, false};
constexpr Setting kSingleAnalog{-10.0f, false, true};
constexpr Setting kDouble{-10.0f, true, false};
constexpr Setting kDoubleUnlinked{-10.0f, true, false, 50.0f};
constexpr Setting kDoubleAnalog{-10.0f, true, true};

BENCHMARK_CAPTURE(IRCLimiterStereo, single, Signal::kMusic, kSingle)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, single_soft, Signal::kSoft, kSingle)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, single_analog, Signal::kMusic, kSingleAnalog)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, double, Signal::kMusic, kDouble)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, double_unlinked, Signal::kMusic, kDoubleUnlinked)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, double_analog, Signal::kMusic, kDoubleAnalog)->Apply(Blocks);
BENCHMARK_CAPTURE(IRCLimiterStereo, double_fading, Signal::kFading, kDouble)->Apply(Blocks);

} // namespace
