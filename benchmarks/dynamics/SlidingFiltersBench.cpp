#include "dynamics/RaisedCosineSmoother.h"
#include "dynamics/SlidingMaximum.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <random>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

// For windows from short to long. The maximum is measured on noise, on ramps, and on the level curve of a
// limiter, which is mostly 0. What it is measured against is a queue of descending values, whose cost does
// not grow with the window but hangs on the curve.

namespace {

using tessaro::dynamics::RaisedCosineSmoother;
using tessaro::dynamics::SlidingMaximum;

constexpr unsigned kBlock = 512;
constexpr std::size_t kLength = 64 * kBlock;

enum class Curve
{
    kNoise,
    kFalling,
    kRising,
    kLevels
};

std::vector<float> MakeCurve(Curve inCurve)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    std::vector<float> row(kLength);
    for (std::size_t i = 0; i < kLength; ++i) {
        const float place = static_cast<float>(i) / kLength;
        const float noise = value(random);
        row[i] = inCurve == Curve::kFalling  ? 1.0f - place
                 : inCurve == Curve::kRising ? place
                 : inCurve == Curve::kNoise  ? noise
                                             : std::max(noise - 0.9f, 0.0f);
    }
    return row;
}

template <typename Function>
void Measure(benchmark::State& ioState, Curve inCurve, Function inProcess)
{
    const auto input = MakeCurve(inCurve);
    std::vector<float> output(kBlock);
    for (auto _ : ioState) {
        for (std::size_t done = 0; done < kLength; done += kBlock) {
            inProcess(input.data() + done, output.data());
            benchmark::ClobberMemory();
        }
    }
    ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations() * kLength));
}

void Maximum(benchmark::State& ioState, Curve inCurve)
{
    SlidingMaximum filter;
    filter.SetWindow(static_cast<unsigned>(ioState.range(0)));
    Measure(ioState, inCurve,
            [&](const float* inRow, float* outRow) { filter.Process(kBlock, inRow, outRow); });
}

void MaximumByQueue(benchmark::State& ioState, Curve inCurve)
{
    const auto window = static_cast<std::uint64_t>(ioState.range(0));
    std::deque<std::pair<float, std::uint64_t>> queue;
    std::uint64_t place = 0;
    Measure(ioState, inCurve, [&](const float* inRow, float* outRow) {
        for (unsigned i = 0; i < kBlock; ++i, ++place) {
            while (!queue.empty() && queue.back().first <= inRow[i]) {
                queue.pop_back();
            }
            queue.emplace_back(inRow[i], place);
            if (queue.front().second + window <= place) {
                queue.pop_front();
            }
            outRow[i] = queue.front().first;
        }
    });
}

void Smooth(benchmark::State& ioState)
{
    RaisedCosineSmoother filter;
    filter.SetHalfWidth(static_cast<unsigned>(ioState.range(0)));
    Measure(ioState, Curve::kNoise,
            [&](const float* inRow, float* outRow) { filter.Process(kBlock, inRow, outRow); });
}

void Windows(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Arg(15)->Arg(69)->Arg(577)->Arg(4801);
}

BENCHMARK_CAPTURE(Maximum, noise, Curve::kNoise)->Apply(Windows);
BENCHMARK_CAPTURE(Maximum, falling, Curve::kFalling)->Apply(Windows);
BENCHMARK_CAPTURE(Maximum, rising, Curve::kRising)->Apply(Windows);
BENCHMARK_CAPTURE(Maximum, levels, Curve::kLevels)->Apply(Windows);
BENCHMARK_CAPTURE(MaximumByQueue, noise, Curve::kNoise)->Apply(Windows);
BENCHMARK_CAPTURE(MaximumByQueue, levels, Curve::kLevels)->Apply(Windows);
BENCHMARK(Smooth)->Arg(7)->Arg(34)->Arg(288)->Arg(2400);

} // namespace
