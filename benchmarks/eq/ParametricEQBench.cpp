#include <tessaro/eq/ParametricEQ.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "PlainSections.h"

namespace {

using brisken::filter::SectionMemory;
using brisken::filter::SectionTaps;

constexpr unsigned kSections = 6;
constexpr unsigned kFrames = 512;
constexpr float kRate = 48000.0f;

template <typename Sample>
std::vector<Sample> MakeNoise(unsigned inSeed)
{
    std::mt19937 random(inSeed);
    std::uniform_real_distribution<Sample> value(Sample(-0.5), Sample(0.5));
    std::vector<Sample> row(kFrames);
    for (auto& sample : row) {
        sample = value(random);
    }
    return row;
}

/// Six double biquads on two rows. The taps are all peaks of 0 dB with a trace of gain, so that rows may be
/// filtered over and over.
struct Cascade
{
    Cascade()
    {
        for (unsigned i = 0; i < mTaps.size(); ++i) {
            double c[6];
            eq::ParametricEQ::CalculateIIRCoefficients(c, kRate, 0, 100.0f * float(1 << (i % kSections)),
                                                       -0.001f, 0.7f);
            mTaps[i] = {c[4], c[5], c[0], c[1], c[2]};
        }
    }

    std::array<SectionTaps, 2 * kSections> mTaps;
    std::array<SectionMemory, 2 * kSections> mMemories{};
    std::vector<double> mRows[2] = {MakeNoise<double>(1), MakeNoise<double>(2)};
    double* mPointers[2] = {mRows[0].data(), mRows[1].data()};
};

void CountFrames(benchmark::State& ioState, unsigned inChannels)
{
    const auto frames = static_cast<std::int64_t>(ioState.iterations()) * kFrames;
    ioState.SetItemsProcessed(frames * inChannels);
    ioState.counters["times_real_time"] =
        benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
}

void StereoSections(benchmark::State& ioState)
{
    Cascade cascade;
    for (auto _ : ioState) {
        brisken::filter::RunSectionCascade(2, kFrames, cascade.mPointers, kSections, cascade.mTaps.data(),
                                           cascade.mMemories.data());
        benchmark::ClobberMemory();
    }
    CountFrames(ioState, 2);
}
BENCHMARK(StereoSections);

void StereoSectionsPlain(benchmark::State& ioState)
{
    Cascade cascade;
    for (auto _ : ioState) {
        for (unsigned row = 0; row < 2; ++row) {
            plain::RunSections(kFrames, cascade.mPointers[row], kSections,
                               cascade.mTaps.data() + row * kSections,
                               cascade.mMemories.data() + row * kSections);
        }
        benchmark::ClobberMemory();
    }
    CountFrames(ioState, 2);
}
BENCHMARK(StereoSectionsPlain);

void StereoSectionsPairVector(benchmark::State& ioState)
{
    Cascade cascade;
    for (auto _ : ioState) {
        plain::RunSectionsOnPair(kFrames, cascade.mPointers, kSections, cascade.mTaps.data(),
                                 cascade.mMemories.data());
        benchmark::ClobberMemory();
    }
    CountFrames(ioState, 2);
}
BENCHMARK(StereoSectionsPairVector);

/// The whole equalizer with all bands on; `silent` is the decay into silence.
void Equalizer(benchmark::State& ioState, unsigned inChannels, bool inSilent)
{
    eq::ParametricEQ equalizer(kFrames, kRate,
                               kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(inChannels));
    equalizer.SetBandEnable(0, true);
    equalizer.SetBandEnable(5, true);
    for (std::size_t band = 1; band < 5; ++band) {
        equalizer.SetGain(band, band % 2 == 0 ? 3.0f : -3.0f);
    }
    std::vector<std::vector<float>> rows;
    std::vector<float*> pointers;
    for (unsigned channel = 0; channel < inChannels; ++channel) {
        rows.push_back(MakeNoise<float>(channel));
    }
    for (auto& row : rows) {
        pointers.push_back(row.data());
    }
    const auto input = rows;
    equalizer.ProcessInPlace(kFrames, pointers.data());
    for (auto _ : ioState) {
        for (unsigned channel = 0; channel < inChannels; ++channel) {
            if (inSilent) {
                std::fill(rows[channel].begin(), rows[channel].end(), 0.0f);
            } else {
                std::copy(input[channel].begin(), input[channel].end(), rows[channel].begin());
            }
        }
        equalizer.ProcessInPlace(kFrames, pointers.data());
        benchmark::ClobberMemory();
    }
    CountFrames(ioState, inChannels);
}
BENCHMARK_CAPTURE(Equalizer, mono, 1, false);
BENCHMARK_CAPTURE(Equalizer, stereo, 2, false);
BENCHMARK_CAPTURE(Equalizer, six_channels, 6, false);
BENCHMARK_CAPTURE(Equalizer, stereo_decay, 2, true);

} // namespace
