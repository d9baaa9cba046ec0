#include <tessaro/resample/Resampler.h>

#include <vector>

#include <benchmark/benchmark.h>
#ifdef TESSARO_HAVE_SOXR
#include <soxr.h>
#endif

// Arguments are the source and the destination rate; items are samples of output. A minute of one channel at
// once, design included, and the design alone.

namespace tessaro {

namespace {

std::vector<float> MakeInput(const benchmark::State& inState)
{
    std::vector<float> input(static_cast<std::size_t>(inState.range(0)) * 60);
    std::uint32_t noise = 1;
    for (float& value : input) {
        noise = noise * 1664525u + 1013904223u;
        value = static_cast<float>(noise >> 8) / 33554432.0f - 0.25f;
    }
    return input;
}

void WholeBuffer(benchmark::State& ioState)
{
    const auto input = MakeInput(ioState);
    std::vector<float> output;
    for (auto _ : ioState) {
        utility::Resample(static_cast<unsigned>(ioState.range(0)), static_cast<unsigned>(ioState.range(1)),
                          static_cast<unsigned>(input.size()), input.data(), output,
                          static_cast<float>(ioState.range(2)) / 100.0f);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(output.size()));
}

void Kernel(benchmark::State& ioState)
{
    utility::Resampler resampler(8192);
    for (auto _ : ioState) {
        resampler.SetOptimalKernel(16.0f, static_cast<float>(ioState.range(0)),
                                   static_cast<float>(ioState.range(1)));
    }
}

void Single(benchmark::State& ioState)
{
    utility::Resampler resampler(1024);
    resampler.SetOptimalKernel(8.0f, 48000.0f, 48000.0f);
    const std::vector<float> input(4096, 0.25f);
    double position = 30.0;
    for (auto _ : ioState) {
        benchmark::DoNotOptimize(resampler.InterpolateSingle(input.data(), 4096, position));
        position = position < 4000.0 ? position + 0.7 : 30.0;
    }
    ioState.SetItemsProcessed(ioState.iterations());
}

BENCHMARK(WholeBuffer)
    ->Unit(benchmark::kMillisecond)
    ->Args({44100, 48000, 50})
    ->Args({48000, 44100, 50})
    ->Args({44100, 48013, 50})
    ->Args({96000, 44100, 50})
    ->Args({44100, 48000, 0})
    ->Args({44100, 48000, 100});
BENCHMARK(Kernel)->Unit(benchmark::kMillisecond)->Args({44100, 48000})->Args({96000, 44100});
BENCHMARK(Single);

#ifdef TESSARO_HAVE_SOXR

void WholeBufferSoxr(benchmark::State& ioState)
{
    const auto input = MakeInput(ioState);
    const auto length = static_cast<std::size_t>(ioState.range(1)) * 60;
    std::vector<float> output;
    const auto quality = soxr_quality_spec(SOXR_HQ, 0);
    for (auto _ : ioState) {
        output.assign(length, 0.0f);
        std::size_t done = 0;
        soxr_oneshot(static_cast<double>(ioState.range(0)), static_cast<double>(ioState.range(1)), 1,
                     input.data(), input.size(), nullptr, output.data(), output.size(), &done, nullptr,
                     &quality, nullptr);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(output.size()));
}

BENCHMARK(WholeBufferSoxr)
    ->Unit(benchmark::kMillisecond)
    ->Args({44100, 48000})
    ->Args({48000, 44100})
    ->Args({44100, 48013})
    ->Args({96000, 44100});

#endif

} // namespace

} // namespace tessaro
