#include <tessaro/resample/ResampleInt.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace tessaro {

namespace {

/// Sinc under a Kaiser window with a sum of `inGain`; an even length leaves the last tap 0.
void DesignTaps(int inZeroSpacing, float inKaiserBeta, float inGain, std::vector<float>& outTaps)
{
    const auto length = static_cast<int>(outTaps.size()) - 1;
    for (int i = 0; i < length; ++i) {
        const double x = (i - (length - 1) * 0.5) * std::numbers::pi / inZeroSpacing;
        outTaps[static_cast<std::size_t>(i)] = x == 0.0 ? 1.0f : static_cast<float>(std::sin(x) / x);
    }
    outTaps.back() = 0.0f;
    AudioProcessor::ApplyKaiserWindow(outTaps.data(), length, inKaiserBeta, 2);

    const double sum = std::accumulate(outTaps.begin(), outTaps.end(), 0.0);
    if (sum != 0.0) {
        const double gain = inGain / sum;
        for (float& tap : outTaps) {
            tap = static_cast<float>(tap * gain);
        }
    }
}

} // namespace

ResampleInt::ResampleInt() = default;
ResampleInt::~ResampleInt() = default;

void ResampleInt::SetOptions(int inInterpolation, int inDecimation, int inTaps, float inKaiserBeta)
{
    const int interpolation = std::max(inInterpolation, 1);
    const int decimation = std::max(inDecimation, 1);
    const int tapCount = std::max(inTaps, 1);
    if (interpolation == mInterpolation && decimation == mDecimation && tapCount == mTapCount &&
        inKaiserBeta == mKaiserBeta) {
        return;
    }
    mInterpolation = interpolation;
    mDecimation = decimation;
    mTapCount = tapCount;
    mKaiserBeta = inKaiserBeta;
    mTaps.resize(static_cast<std::size_t>(tapCount));
    DesignTaps(std::max(interpolation, decimation), inKaiserBeta, static_cast<float>(interpolation), mTaps);
    CommitTaps();
}

void ResampleInt::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    if (inNumChannels != GetNumChannels() || inSamplingRate != GetSamplingRate()) {
        AudioProcessor::SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
        CommitTaps();
    }
    Reset();
}

void ResampleInt::CommitTaps()
{
    if (mTaps.empty()) {
        return;
    }
    mFilters.clear();
    mFilters.reserve(static_cast<std::size_t>(std::max(GetNumChannels(), 0)));
    for (int channel = 0; channel < GetNumChannels(); ++channel) {
        brisken::MRFState_Float* made = nullptr;
        brisken::filter::MRFInit(&made, static_cast<unsigned>(mInterpolation),
                                 static_cast<unsigned>(mDecimation), mTaps.data(),
                                 static_cast<unsigned>(mTapCount), nullptr, 0, 0, 0);
        mFilters.emplace_back(made);
    }
    SetSystemDelay(mTapCount / 2 - 1);
}

void ResampleInt::Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                          ombrel::utility::Flags<std::uint64_t> inSilentChannels)
{
    // Not the frame's Process first: growing would clear the past, and there is nothing to grow.
    const int iterations = mInterpolation < 2 ? inNumSamples / mDecimation : inNumSamples;
    if (iterations <= 0) {
        return;
    }
    for (std::size_t channel = 0; channel < mFilters.size(); ++channel) {
        if (!inSilentChannels.GetBitModulo(channel)) {
            float* output = outOutput ? outOutput[channel] : const_cast<float*>(inInput[channel]);
            brisken::filter::MRFProcess(inInput[channel], output, static_cast<unsigned>(iterations),
                                        mFilters[channel].get());
        }
    }
}

void ResampleInt::Reset()
{
    for (const auto& filter : mFilters) {
        brisken::filter::MRFSetDlyLine(filter.get(), nullptr, 0);
    }
}

} // namespace tessaro
