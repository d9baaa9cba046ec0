#include "dynamics/InterSamplePeaks.h"

#include <algorithm>
#include <cmath>

namespace tessaro::dynamics {

namespace {

constexpr int kFactor = 9;
constexpr int kTaps = 144;
constexpr float kKaiserBeta = 5.0f;

/// The nine values around a sample among the oversampled ones, counted from the first of the frame before
/// the one that has just come in. The middle one is as late as the filter, 71 values of 72.
constexpr int kFirstAround = 4;
static_assert(kFirstAround + kFactor / 2 == kTaps / 2 - 1 - (InterSamplePeaks::kDelay - 1) * kFactor);

} // namespace

InterSamplePeaks::InterSamplePeaks() : mUpsampler(new ResampleInt)
{
    mUpsampler->SetOptions(kFactor, 1, kTaps, kKaiserBeta);
}

InterSamplePeaks::~InterSamplePeaks() = default;

void InterSamplePeaks::SetMode(int inNumChannels, int inSamplingRate)
{
    constexpr int kRun = kLongestRun;
    mUpsampler->SetMode(inNumChannels, inSamplingRate, kRun);
    mOversampled.SetTailMode(inNumChannels, inSamplingRate * kFactor, kRun * kFactor, kFactor, true);
}

void InterSamplePeaks::Process(const float* const* inInput, unsigned inCount, float* const* outPeaks,
                               ombrel::utility::Flags<std::uint64_t> inSkipped)
{
    mUpsampler->Process(inInput, static_cast<int>(inCount), mOversampled.MakeOffsetPointer(kFactor),
                        inSkipped);
    for (int channel = 0; channel < mOversampled.GetNumChannels(); ++channel) {
        float* const row = mOversampled.GetPointer()[channel];
        if (inSkipped.GetBitModulo(static_cast<std::size_t>(channel))) {
            std::copy_n(row, kFactor, row + inCount * kFactor); // so that its past outlasts the shift
            continue;
        }
        const float* around = row + kFirstAround;
        for (unsigned i = 0; i < inCount; ++i, around += kFactor) {
            float peak = 0.0f;
            for (int k = 0; k < kFactor; ++k) {
                peak = std::max(peak, std::abs(around[k]));
            }
            outPeaks[channel][i] = peak;
        }
    }
    mOversampled.AddTotal(inCount * kFactor);
    mOversampled.Shift(static_cast<int>(inCount) * kFactor);
}

void InterSamplePeaks::Reset()
{
    mUpsampler->Reset();
    mOversampled.Reset();
}

} // namespace tessaro::dynamics
