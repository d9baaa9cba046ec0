#include <tessaro/dynamics/MaximizerDSP.h>

#include <algorithm>

#include <benchmark/benchmark.h>

#include "StereoStream.h"

namespace {

using Mode = tessaro::MaximizerDSP::Mode;
using Signal = StereoStream::Signal;

/// In place behind a copy, which is measured too
void MaximizerStereo(benchmark::State& ioState, Mode inMode, Signal inSignal, bool inIsMeterVisible = false)
{
    tessaro::MaximizerDSP maximizer(static_cast<int>(ioState.range(0)), StereoStream::kRate, 2, true);
    maximizer.SetMode(inMode);
    maximizer.SetThreshold(-10.0f);
    maximizer.SetMeterVisible(inIsMeterVisible);
    StereoStream(inSignal).Measure(
        ioState, [&] { maximizer.Reset(); },
        [&](const float* const* inRows, float* const* outRows, unsigned inCount) {
            std::copy_n(inRows[0], inCount, outRows[0]);
            std::copy_n(inRows[1], inCount, outRows[1]);
            maximizer.Process(inCount, outRows, {});
        });
}

void Blocks(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Arg(64)->Arg(512);
}

BENCHMARK_CAPTURE(MaximizerStereo, soft, Mode::kSoft, Signal::kMusic)->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, brickwall, Mode::kBrickwall, Signal::kMusic)->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, brickwall_histogram, Mode::kBrickwall, Signal::kMusic, true)
    ->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, brickwall_fading, Mode::kBrickwall, Signal::kFading)->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, soft_fading, Mode::kSoft, Signal::kFading)->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, digital, Mode::kDigital, Signal::kMusic)->Apply(Blocks);
BENCHMARK_CAPTURE(MaximizerStereo, program, Mode::kProgram, Signal::kMusic)->Apply(Blocks);

} // namespace
