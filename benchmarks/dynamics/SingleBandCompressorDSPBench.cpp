#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include "StereoStream.h"

namespace {

using Signal = StereoStream::Signal;

void CompressorStereo(benchmark::State& ioState, Signal inSignal, bool inHasMakeup)
{
    tessaro::dynamics::SingleBandCompressorDSP compressor(
        StereoStream::kRate, kestrin::AudioChannelDescription::CreateStereoChannelLayout());
    compressor.SetThreshold(-30.0f);
    compressor.SetRatio(4.0f);
    compressor.SetAutoMakeupGain(inHasMakeup);
    StereoStream(inSignal).Measure(
        ioState, [&] { compressor.Reset(); },
        [&](const float* const* inInput, float* const* outOutput, unsigned inCount) {
            compressor.Process(inInput, outOutput, inCount, {});
        });
}

BENCHMARK_CAPTURE(CompressorStereo, music, Signal::kMusic, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(CompressorStereo, music_makeup, Signal::kMusic, true)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(CompressorStereo, soft, Signal::kSoft, false)->Arg(512);
BENCHMARK_CAPTURE(CompressorStereo, fading, Signal::kFading, false)->Arg(512);

} // namespace
