#include <tessaro/loudness/TruePeak.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <brisken/Utility.h>
#include <brisken/filter/LowpassDesign.h>

namespace tessaro {

namespace {

constexpr unsigned kNumTaps = 71;
/// Of the oversampled rate, times the factor
constexpr double kCutoff = 0.48;
constexpr float kLowRate = 24000.0f;
constexpr float kHighRate = 96000.0f;
/// Room behind the oversampled block
constexpr std::size_t kSpare = 4;
constexpr float kSmallestAmplitude = 1e-15f;

} // namespace

unsigned GetTruePeakOversampleFactor(float inSampleRate)
{
    if (inSampleRate <= kLowRate) {
        return 8;
    }
    return inSampleRate < kHighRate ? 4 : 2;
}

void TruePeakResampler::Init(unsigned, float inSampleRate)
{
    mFactor = GetTruePeakOversampleFactor(inSampleRate);
    std::array<double, kNumTaps> design{};
    std::vector<unsigned char> work(brisken::filter::FIRGetWorkBufferSize(kNumTaps));
    brisken::filter::GenerateLowpassFIRCoefficients(kCutoff / mFactor, kNumTaps, design.data(),
                                                    brisken::utility::DSPWindowType::kBlackman, true,
                                                    work.data());
    std::array<float, kNumTaps> taps{};
    std::transform(design.begin(), design.end(), taps.begin(),
                   [this](double inTap) { return static_cast<float>(inTap * mFactor); });
    // The zeros between the samples are left out of the sums; the result is that of filtering with them.
    brisken::MRFState_Float* made = nullptr;
    brisken::filter::MRFInit(&made, mFactor, 1, taps.data(), kNumTaps, nullptr, 0, 0, 0);
    mFilter.reset(made);
}

void TruePeakResampler::Process(const float* inInput, float* outOutput, unsigned inFrames)
{
    if (mFilter) {
        brisken::filter::MRFProcess(inInput, outOutput, inFrames, mFilter.get());
    } else {
        brisken::utility::Zero(inFrames, outOutput);
    }
}

void TruePeakResampler::Reset()
{
    if (mFilter) {
        brisken::filter::MRFSetDlyLine(mFilter.get(), nullptr, 0);
    }
}

void TruePeak::Init(unsigned inBlockFrames, float inSampleRate)
{
    mResampler.Init(inBlockFrames, inSampleRate);
    mWork.assign(std::size_t{inBlockFrames} * mResampler.GetOversampleFactor() + kSpare, 0.0f);
    mPeak = 0.0f;
    mCount = 0;
    mPosition = 0;
}

void TruePeak::Process(const float* inInput, unsigned inFrames)
{
    const unsigned factor = mResampler.GetOversampleFactor();
    unsigned index = 0;
    if (TakePeak(inInput, inFrames, index)) {
        mPosition = mCount + index;
    }
    if (mWork.size() < std::size_t{inFrames} * factor) {
        mWork.resize(std::size_t{inFrames} * factor + kSpare);
    }
    mResampler.Process(inInput, mWork.data(), inFrames);
    if (TakePeak(mWork.data(), inFrames * factor, index)) {
        mPosition = mCount + index / factor;
    }
    mCount += inFrames;
}

/// Takes the largest magnitude of the row if it is above the peak so far, with the index at which it stands
/// first.
bool TruePeak::TakePeak(const float* inRow, unsigned inCount, unsigned& outIndex)
{
    const float largest = brisken::utility::MaxAbs(inRow, inCount);
    if (!(largest > mPeak)) {
        return false;
    }
    mPeak = largest;
    const float* const found =
        std::find_if(inRow, inRow + inCount, [largest](float inX) { return std::fabs(inX) == largest; });
    outIndex = static_cast<unsigned>(found - inRow);
    return true;
}

void TruePeak::GetPeakValue(float& outDecibels, std::int64_t& outPosition) const
{
    outDecibels = 20.0f * std::log10(std::max(kSmallestAmplitude, mPeak));
    outPosition = mPosition;
}

} // namespace tessaro
