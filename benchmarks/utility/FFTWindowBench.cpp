#include <tessaro/utility/FFTWindow.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/utility/FFTPool.h>

// What a processor pays when it is configured (windows, argument: type), and what it pays for each transform
// on top of the transform itself (the look-up).

namespace tessaro {

namespace {

void Window(benchmark::State& ioState)
{
    constexpr int kLength = 4096;
    const auto flags = static_cast<unsigned>(ioState.range(0)) | fftwindow::kFull;
    std::vector<float> window(kLength);
    for (auto _ : ioState) {
        GetFFTWindow(window.data(), kLength, 1.0, flags, 140.0);
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kLength);
}

void LookUp(benchmark::State& ioState)
{
    FFTPool pool("benchmark");
    pool.AddOrder(10);
    unsigned order = 10;
    for (auto _ : ioState) {
        benchmark::DoNotOptimize(order);
        benchmark::DoNotOptimize(pool.GetFFT(order));
    }
}

BENCHMARK(Window)->DenseRange(fftwindow::kTriangular, fftwindow::kKaiser);
BENCHMARK(LookUp);

} // namespace

} // namespace tessaro
