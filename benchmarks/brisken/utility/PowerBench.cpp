#include <brisken/utility/Power.h>

#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "PowerNative.h"

namespace {

constexpr unsigned kFrames = 512;

void Power(benchmark::State& ioState, void (*inPower)(unsigned, const float*, double, float*))
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(1.0f, 30.0f);
    std::vector<float> levels(kFrames), gains(kFrames);
    for (auto& level : levels) {
        level = value(random);
    }
    for (auto _ : ioState) {
        inPower(kFrames, levels.data(), -0.75, gains.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * kFrames);
}
BENCHMARK_CAPTURE(Power, Brisken, brisken::utility::Power);
BENCHMARK_CAPTURE(Power, PlainFloat, plain::PowerFloat);
BENCHMARK_CAPTURE(Power, PlainDouble, plain::PowerDouble);

} // namespace
