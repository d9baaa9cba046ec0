#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/restoration/prediction/Autocorr.h>
#include <tessaro/restoration/prediction/CFillIn.h>
#include <tessaro/restoration/prediction/Excitation.h>
#include <tessaro/restoration/prediction/LpcCoeffs.h>
#include <tessaro/restoration/prediction/RunningAutocorr.h>

#include "PlainCorrelation.h"

namespace tessaro {
namespace {

using Row = std::vector<float>;

Row MakeNoise(std::size_t inLength)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-0.3f, 0.3f);
    Row row(inLength);
    for (auto& sample : row) {
        sample = value(random);
    }
    return row;
}

/// Arguments: channels, block. Frames of 50 ms, order 15, hops of 20 ms at 48 kHz; "realtime" is how many
/// times faster than real time.
void ExcitationOfNoise(benchmark::State& ioState)
{
    constexpr unsigned kFrames = 48000;
    const auto channels = static_cast<std::size_t>(ioState.range(0));
    const auto block = static_cast<unsigned>(ioState.range(1));
    const Row noise = MakeNoise(kFrames);
    const std::vector<const float*> input(channels, noise.data());
    std::vector<Row> rows(channels, Row(block));
    std::vector<float*> output;
    for (auto& row : rows) {
        output.push_back(row.data());
    }
    Excitation excitation;
    excitation.StartNewStream(static_cast<unsigned>(channels), 48000.0f, 0);
    excitation.SetMode(0.05f, 15, 0.02f);
    for (auto _ : ioState) {
        for (unsigned done = 0; done + block <= kFrames; done += block) {
            excitation.Process(input.data(), block, output.data(), nullptr, nullptr, nullptr, done);
        }
        benchmark::ClobberMemory();
    }
    ioState.counters["realtime"] =
        benchmark::Counter(static_cast<double>(ioState.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(ExcitationOfNoise)->ArgsProduct({{1, 2, 6}, {64, 1024}})->Unit(benchmark::kMicrosecond);

// Arguments: length of the frame, number of lags. "Plain" is the sum over all products, compiled for this
// machine.

void Correlation(benchmark::State& ioState)
{
    const auto length = static_cast<unsigned>(ioState.range(0));
    const auto lags = static_cast<unsigned>(ioState.range(1));
    const Row frame = MakeNoise(length);
    Row result(lags);
    Autocorr autocorr;
    autocorr.SetMode(length, lags, false);
    for (auto _ : ioState) {
        autocorr.GetAutocorr(frame.data(), result.data(), lags, length, false);
        benchmark::ClobberMemory();
    }
}

void PlainCorrelation(benchmark::State& ioState)
{
    const auto length = static_cast<unsigned>(ioState.range(0));
    const auto lags = static_cast<unsigned>(ioState.range(1));
    const Row frame = MakeNoise(length);
    Row result(lags);
    for (auto _ : ioState) {
        plain::Correlate(frame.data(), length, result.data(), lags);
        benchmark::ClobberMemory();
    }
}

void Frames(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Args({2400, 16})->Args({2400, 1200})->Args({512, 16})->Args({512, 512})->Args({8192, 8191});
}

BENCHMARK(Correlation)->Apply(Frames);
BENCHMARK(PlainCorrelation)->Apply(Frames);

/// Arguments: order, length of the frame
void BurgFit(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    const Row frame = MakeNoise(static_cast<std::size_t>(ioState.range(1)));
    Row result(order + 1);
    LpcCoeffs lpc;
    for (auto _ : ioState) {
        lpc.BurgRecursion(frame.data(), static_cast<unsigned>(frame.size()), result.data(), order);
        benchmark::ClobberMemory();
    }
}

void CovarianceFit(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    const Row frame = MakeNoise(static_cast<std::size_t>(ioState.range(1)));
    Row result(order + 1);
    LpcCoeffs lpc;
    for (auto _ : ioState) {
        lpc.Covariance(frame.data(), static_cast<unsigned>(frame.size()), result.data(), order);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BurgFit)->Args({15, 2400})->Args({64, 2400});
BENCHMARK(CovarianceFit)->Args({15, 2400})->Args({64, 2400});

/// Argument: number of lags. Items are samples.
void RunningCorrelation(benchmark::State& ioState)
{
    const auto lags = static_cast<unsigned>(ioState.range(0));
    const Row noise = MakeNoise(4800);
    Row result(lags);
    RunningAutocorr correlation;
    correlation.SetMode(1, lags, 480);
    for (auto _ : ioState) {
        for (const float sample : noise) {
            correlation.RunAutocorr(sample, result.data());
            benchmark::ClobberMemory();
        }
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(noise.size()));
}

BENCHMARK(RunningCorrelation)->Arg(1)->Arg(16)->Arg(256);

/// Argument: size of the frame. Spans of 200 samples; items are samples filled.
void FillIn(benchmark::State& ioState)
{
    const auto frame = static_cast<int>(ioState.range(0));
    const Row noise = MakeNoise(4 * static_cast<std::size_t>(frame) + 1000);
    Row row = noise;
    CFillIn fillIn;
    fillIn.Init(frame, 64);
    const int start = 2 * frame + 100;
    for (auto _ : ioState) {
        row = noise;
        fillIn.FillInNow(start, start + 200, row.data(), nullptr, 0.0f, 1.0f, nullptr);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * (200 + frame - 1));
}

BENCHMARK(FillIn)->Arg(32)->Arg(128)->Arg(512)->Arg(2048)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace tessaro
