#include <tessaro/dynamics/DynamicsBand.h>

#include "PlainGains.h"
#include "StereoStream.h"

namespace {

using Signal = StereoStream::Signal;
using tessaro::dynamics::DynamicsBand;

enum class Stages
{
    kNone,
    kCompressor,
    kAll
};

struct Modes
{
    bool mRMS = true;
    bool mSmoothing = true;
    bool mMakeup = false;
};

void DynamicsBandStereo(benchmark::State& ioState, Signal inSignal, Stages inStages, Modes inModes)
{
    DynamicsBand band(StereoStream::kRate, kestrin::AudioChannelDescription::CreateStereoChannelLayout(),
                      static_cast<int>(ioState.range(0)));
    band.SetRMSDetection(inModes.mRMS);
    band.SetAutoSmoothing(inModes.mSmoothing);
    band.SetAutoMakeupGain(inModes.mMakeup);
    if (inStages != Stages::kNone) {
        band.SetCompThreshold(-30.0f);
        band.SetCompRatio(4.0f);
    }
    if (inStages == Stages::kAll) {
        band.SetLimThreshold(-12.0f);
        band.SetLimRatio(20.0f);
        band.SetGateThreshold(-25.0f);
        band.SetGateRatio(2.0f);
    }
    StereoStream(inSignal).Measure(
        ioState, [&] { band.Reset(); },
        [&](const float* const* inInput, float* const* outOutput, unsigned inCount) {
            band.Process(inCount, inInput, outOutput, {});
        });
}

constexpr Modes kPlainModes = {false, false, false};
constexpr Modes kAllModes = {true, true, true};

BENCHMARK_CAPTURE(DynamicsBandStereo, music_untouched, Signal::kMusic, Stages::kNone, Modes())
    ->Arg(64)
    ->Arg(512);
BENCHMARK_CAPTURE(DynamicsBandStereo, music_compressor, Signal::kMusic, Stages::kCompressor, Modes())
    ->Arg(64)
    ->Arg(512);
BENCHMARK_CAPTURE(DynamicsBandStereo, music_compressor_peak, Signal::kMusic, Stages::kCompressor, kPlainModes)
    ->Arg(64)
    ->Arg(512);
BENCHMARK_CAPTURE(DynamicsBandStereo, music_all, Signal::kMusic, Stages::kAll, kAllModes)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(DynamicsBandStereo, soft_all, Signal::kSoft, Stages::kAll, Modes())->Arg(512);
BENCHMARK_CAPTURE(DynamicsBandStereo, fading_all, Signal::kFading, Stages::kAll, Modes())->Arg(512);

/// The compressor alone, peak detection, sample by sample with the C library's power, compiled for this
/// machine
void PlainCompressorStereo(benchmark::State& ioState)
{
    plain::Compressor compressor;
    StereoStream(Signal::kMusic)
        .Measure(
            ioState, [&] { compressor = {}; },
            [&](const float* const* inInput, float* const* outOutput, unsigned inCount) {
                plain::Compress(inCount, inInput, outOutput, compressor);
            });
}
BENCHMARK(PlainCompressorStereo)->Arg(64)->Arg(512);

} // namespace
