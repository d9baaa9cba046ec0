#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

/// Two channels of four seconds at 48 kHz, taken through a processor block by block.
class StereoStream
{
public:
    static constexpr int kRate = 48000;
    static constexpr std::size_t kLength = 4 * kRate;

    enum class Signal
    {
        kMusic,  ///< strokes over two tones, with peaks of 0 dB
        kSoft,   ///< the same at -60 dB
        kFading, ///< the same for a tenth of a second, then silence, with denormal numbers as they come
    };

    /// `inSample` gives the sample at a time in seconds from a noise of -1 to 1. The right channel is a
    /// little softer than the left.
    template <typename Sample>
    explicit StereoStream(const Sample& inSample)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
        for (std::size_t i = 0; i < kLength; ++i) {
            const auto time = static_cast<float>(i) / kRate;
            mLeft[i] = inSample(time, noise(random));
            mRight[i] = 0.7f * inSample(time, noise(random));
        }
    }

    explicit StereoStream(Signal inSignal)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
        for (std::size_t i = 0; i < kLength; ++i) {
            const auto time = static_cast<float>(i) / kRate;
            const float stroke = std::exp(-12.0f * std::fmod(time, 0.25f));
            const float tones = 0.25f * std::sin(380.0f * time) + 0.1f * std::sin(2900.0f * time);
            const bool isOver = inSignal == Signal::kFading && i > kRate / 10;
            const float gain = isOver ? 0.0f : (inSignal == Signal::kSoft ? 0.001f : 1.0f);
            mLeft[i] = gain * (0.65f * stroke * noise(random) + tones);
            mRight[i] = gain * (0.5f * stroke * noise(random) + tones);
        }
    }

    /// `inReset()` before each pass, `inProcess(input, output, count)` for each block. Reports the speed, and
    /// the time of the slowest block over that of the median one, each block of the stream taken at its
    /// fastest of all passes.
    template <typename Reset, typename Process>
    void Measure(benchmark::State& ioState, const Reset& inReset, const Process& inProcess) const
    {
        const auto block = static_cast<std::size_t>(ioState.range(0));
        std::vector<float> outLeft(block), outRight(block);
        float* const output[] = {outLeft.data(), outRight.data()};
        std::vector<double> fastest(kLength / block, 1e9);
        for (auto _ : ioState) {
            ioState.PauseTiming();
            inReset();
            ioState.ResumeTiming();
            for (std::size_t i = 0; i < fastest.size(); ++i) {
                const float* const input[] = {mLeft.data() + i * block, mRight.data() + i * block};
                const auto start = std::chrono::steady_clock::now();
                inProcess(input, output, static_cast<unsigned>(block));
                const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
                fastest[i] = std::min(fastest[i], time.count());
            }
        }
        const auto frames = static_cast<std::int64_t>(ioState.iterations() * fastest.size() * block);
        ioState.SetItemsProcessed(frames);
        ioState.counters["times_real_time"] =
            benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
        std::sort(fastest.begin(), fastest.end());
        ioState.counters["worst_over_median"] = fastest.back() / fastest[fastest.size() / 2];
    }

private:
    std::vector<float> mLeft = std::vector<float>(kLength);
    std::vector<float> mRight = std::vector<float>(kLength);
};
