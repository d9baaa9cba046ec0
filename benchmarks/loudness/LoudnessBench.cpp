#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <tessaro/loudness/Itu1770.h>
#include <tessaro/loudness/TruePeak.h>

#ifdef TESSARO_HAVE_EBUR128
#include <ebur128.h>
#endif

// Arguments: channels, sampling rate. Ten seconds of noise in blocks of 1024 frames; items are frames. "Peer"
// is libebur128, which takes interleaved samples; its own interleaving is not counted.

namespace tessaro {
namespace {

constexpr unsigned kBlock = 1024;

struct Programme
{
    explicit Programme(const benchmark::State& inState)
        : mChannels(static_cast<unsigned>(inState.range(0))),
          mRate(static_cast<unsigned>(inState.range(1))),
          mFrames(10 * mRate / kBlock * kBlock),
          mRows(mChannels, std::vector<float>(mFrames)),
          mInterleaved(std::size_t{mFrames} * mChannels)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> value(-0.3f, 0.3f);
        for (unsigned i = 0; i < mFrames; ++i) {
            for (unsigned channel = 0; channel < mChannels; ++channel) {
                mRows[channel][i] = mInterleaved[std::size_t{i} * mChannels + channel] = value(random);
            }
        }
    }

    std::vector<const float*> From(unsigned inFrame) const
    {
        std::vector<const float*> rows;
        for (const auto& row : mRows) {
            rows.push_back(row.data() + inFrame);
        }
        return rows;
    }

    unsigned mChannels;
    unsigned mRate;
    unsigned mFrames;
    std::vector<std::vector<float>> mRows;
    std::vector<float> mInterleaved;
};

void Measure(benchmark::State& ioState, bool inTruePeak)
{
    const Programme programme(ioState);
    const std::vector<Itu1770::ChannelLabel> labels(programme.mChannels, Itu1770::kOther);
    for (auto _ : ioState) {
        Itu1770 meter;
        meter.Init(kBlock, static_cast<float>(programme.mRate), labels);
        std::vector<TruePeak> peaks(inTruePeak ? programme.mChannels : 0);
        for (auto& peak : peaks) {
            peak.Init(kBlock, static_cast<float>(programme.mRate));
        }
        for (unsigned done = 0; done < programme.mFrames; done += kBlock) {
            const auto rows = programme.From(done);
            meter.Process(rows.data(), kBlock);
            for (std::size_t channel = 0; channel < peaks.size(); ++channel) {
                peaks[channel].Process(rows[channel], kBlock);
            }
        }
        benchmark::DoNotOptimize(meter.GetLKFS());
        benchmark::DoNotOptimize(peaks.data());
        benchmark::ClobberMemory();
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(programme.mFrames));
}

void Loudness(benchmark::State& ioState)
{
    Measure(ioState, false);
}

void LoudnessAndTruePeak(benchmark::State& ioState)
{
    Measure(ioState, true);
}

void Formats(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->ArgsProduct({{1, 2, 6}, {48000, 192000}})->Unit(benchmark::kMillisecond);
}

BENCHMARK(Loudness)->Apply(Formats);

#ifdef TESSARO_HAVE_EBUR128

void MeasurePeer(benchmark::State& ioState, int inMode)
{
    const Programme programme(ioState);
    for (auto _ : ioState) {
        ebur128_state* meter = ebur128_init(programme.mChannels, programme.mRate, inMode);
        for (unsigned done = 0; done < programme.mFrames; done += kBlock) {
            ebur128_add_frames_float(
                meter, programme.mInterleaved.data() + std::size_t{done} * programme.mChannels, kBlock);
        }
        double loudness = 0.0;
        ebur128_loudness_global(meter, &loudness);
        benchmark::DoNotOptimize(loudness);
        ebur128_destroy(&meter);
    }
    ioState.SetItemsProcessed(ioState.iterations() * static_cast<std::int64_t>(programme.mFrames));
}

void PeerLoudness(benchmark::State& ioState)
{
    MeasurePeer(ioState, EBUR128_MODE_I);
}

void PeerLoudnessAndTruePeak(benchmark::State& ioState)
{
    MeasurePeer(ioState, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK);
}

BENCHMARK(PeerLoudness)->Apply(Formats);
BENCHMARK(LoudnessAndTruePeak)->Apply(Formats);
BENCHMARK(PeerLoudnessAndTruePeak)->Apply(Formats);

#else

BENCHMARK(LoudnessAndTruePeak)->Apply(Formats);

#endif

} // namespace
} // namespace tessaro
