#include <tessaro/dynamics/TubeLimiter.h>

#include <algorithm>

#include <benchmark/benchmark.h>

#include "StereoStream.h"

namespace {

/// In place behind a copy, which is measured too
void TubeStereo(benchmark::State& ioState, float inCharacter, bool inIsTruePeak)
{
    tessaro::TubeLimiter limiter(static_cast<int>(ioState.range(0)), StereoStream::kRate, 2);
    limiter.SetThreshold(-10.0f);
    limiter.SetCharacter(inCharacter);
    limiter.SetPreventIntersampleClips(inIsTruePeak);
    StereoStream(StereoStream::Signal::kMusic)
        .Measure(
            ioState, [&] { limiter.Reset(); },
            [&](const float* const* inRows, float* const* outRows, unsigned inCount) {
                std::copy_n(inRows[0], inCount, outRows[0]);
                std::copy_n(inRows[1], inCount, outRows[1]);
                limiter.Process(inCount, outRows, outRows, {});
            });
}

BENCHMARK_CAPTURE(TubeStereo, character_4, 4.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(TubeStereo, character_8, 8.0f, false)->Arg(64)->Arg(512);
BENCHMARK_CAPTURE(TubeStereo, true_peak, 4.0f, true)->Arg(64)->Arg(512);

} // namespace
