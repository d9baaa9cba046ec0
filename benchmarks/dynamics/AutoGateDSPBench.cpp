#include <tessaro/dynamics/AutoGateDSP.h>

#include "StereoStream.h"

namespace {

using Signal = StereoStream::Signal;

void AutoGateStereo(benchmark::State& ioState, Signal inSignal, bool inHasRMS, bool inIsBlockMode)
{
    tessaro::dynamics::AutoGateDSP gate(StereoStream::kRate,
                                        kestrin::AudioChannelDescription::CreateStereoChannelLayout(),
                                        static_cast<int>(ioState.range(0)), inIsBlockMode);
    gate.SetThreshold(-15.0f);
    gate.SetRatio(4.0f);
    gate.SetRMSDetection(inHasRMS);
    StereoStream(inSignal).Measure(
        ioState, [&] { gate.Reset(); },
        [&](const float* const* inInput, float* const* outOutput, unsigned inCount) {
            gate.Process(inCount, inInput, outOutput, {});
        });
}

BENCHMARK_CAPTURE(AutoGateStereo, music_rms, Signal::kMusic, true, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(AutoGateStereo, music_peak, Signal::kMusic, false, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(AutoGateStereo, music_block_mode, Signal::kMusic, true, true)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(AutoGateStereo, soft_rms, Signal::kSoft, true, false)->Arg(512);
BENCHMARK_CAPTURE(AutoGateStereo, fading_rms, Signal::kFading, true, false)->Arg(512);
BENCHMARK_CAPTURE(AutoGateStereo, fading_peak, Signal::kFading, false, false)->Arg(512);

} // namespace
