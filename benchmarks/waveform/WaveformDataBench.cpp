#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/waveform/WaveformChannelScaleFactor.h>
#include <tessaro/waveform/WaveformData.h>

// Drawing code rescales one screen of peaks. Argument: data slots; items are slots. "Plain" is the loop that
// a caller would write over the same floats.

namespace tessaro::waveform {
namespace {

constexpr float kGain = 0.9999999f; // stays clear of denormals for as long as a run takes

WaveformData MakePeaks(const benchmark::State& inState)
{
    const auto slots = static_cast<std::uint64_t>(inState.range(0));
    WaveformData data(WaveformDataProperties(WaveformDataType::kPeaks, slots, 1));
    for (std::size_t slot = 0; slot < slots; ++slot) {
        data.SetWaveformPeakValue(0, slot, {-1.0f, 1.0f});
    }
    return data;
}

void Scale(benchmark::State& ioState, const WaveformChannelScaleFactor& inFactor)
{
    WaveformData data = MakePeaks(ioState);
    const auto slots = static_cast<std::size_t>(ioState.range(0));
    for (auto _ : ioState) {
        data.ApplyScaling(inFactor, 0, 0, slots);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * ioState.range(0));
}

void ScaleByOneGain(benchmark::State& ioState)
{
    Scale(ioState, WaveformChannelScaleFactor(kGain));
}

void ScaleByGainOfEachSlot(benchmark::State& ioState)
{
    Scale(ioState, WaveformChannelScaleFactor(WaveformChannelScaleFactor::ScaleVector(
                       static_cast<std::size_t>(ioState.range(0)), kGain)));
}

void ScaleByOneGainPlain(benchmark::State& ioState)
{
    std::vector<float> peaks(static_cast<std::size_t>(2 * ioState.range(0)), 1.0f);
    for (auto _ : ioState) {
        for (auto& value : peaks) {
            value *= kGain;
        }
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * ioState.range(0));
}

void ScaleByGainOfEachSlotPlain(benchmark::State& ioState)
{
    const auto slots = static_cast<std::size_t>(ioState.range(0));
    std::vector<float> peaks(2 * slots, 1.0f);
    std::vector<float> gains(slots, kGain);
    benchmark::DoNotOptimize(gains.data());
    for (auto _ : ioState) {
        for (std::size_t slot = 0; slot < slots; ++slot) {
            peaks[2 * slot] *= gains[slot];
            peaks[2 * slot + 1] *= gains[slot];
        }
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * ioState.range(0));
}

BENCHMARK(ScaleByOneGain)->Arg(2000)->Arg(100000);
BENCHMARK(ScaleByOneGainPlain)->Arg(2000)->Arg(100000);
BENCHMARK(ScaleByGainOfEachSlot)->Arg(2000)->Arg(100000);
BENCHMARK(ScaleByGainOfEachSlotPlain)->Arg(2000)->Arg(100000);

} // namespace
} // namespace tessaro::waveform
