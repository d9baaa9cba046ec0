#include <tessaro/resample/ResampleInt.h>

#include <vector>

#include <benchmark/benchmark.h>

// Arguments are the factor up, the factor down, taps and inputs a block; items are inputs of one channel.

namespace tessaro {

namespace {

void Integer(benchmark::State& ioState)
{
    const auto up = static_cast<int>(ioState.range(0));
    const auto down = static_cast<int>(ioState.range(1));
    const auto inputs = static_cast<int>(ioState.range(3));
    ResampleInt resampler;
    resampler.SetOptions(up, down, static_cast<int>(ioState.range(2)), 5.0f);
    resampler.SetMode(2, 48000, inputs);
    std::vector<float> input(static_cast<std::size_t>(inputs), 0.25f);
    std::vector<float> output(static_cast<std::size_t>(inputs * up), 0.0f);
    const float* inputRows[] = {input.data(), input.data()};
    std::vector<float> second(output);
    float* outputRows[] = {output.data(), second.data()};
    const int frames = up < 2 ? inputs : inputs / down;
    for (auto _ : ioState) {
        resampler.Process(inputRows, frames, outputRows, {});
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * 2 * inputs);
}

BENCHMARK(Integer)
    ->Args({9, 1, 144, 64})
    ->Args({9, 1, 144, 512})
    ->Args({9, 1, 144, 8192})
    ->Args({5, 1, 64, 512})
    ->Args({1, 4, 128, 512})
    ->Args({3, 2, 96, 512});

} // namespace

} // namespace tessaro
