#include "eq/ParametricParameters.h"

#include <algorithm>

#include <tessaro/eq/Parametric.h>

namespace parametric {

namespace {

template <std::size_t kCount>
bool Contains(const std::array<std::size_t, kCount>& inIndices, std::size_t inIndex)
{
    return std::find(inIndices.begin(), inIndices.end(), inIndex) != inIndices.end();
}

bool Exists(int inIndex)
{
    return inIndex >= 0 && inIndex < Parametric::kNumParameters;
}

float LimitWidth(float inWidth)
{
    return std::clamp(inWidth, kSmallestWidth, kLargestWidth);
}

struct Range
{
    float mMinimum;
    float mMaximum;
    float mDefault;
};

constexpr Range kSwitchOff{-0.5f, 1.49f, 0.0f};
constexpr Range kSwitchOn{-0.5f, 1.49f, 1.0f};
constexpr Range kGain{-48.0f, 48.0f, 0.0f};

Range MakeFrequency(float inDefault)
{
    return {kLowestFrequency, 0.0f, inDefault}; // the maximum follows the sample rate
}

std::array<Range, Parametric::kNumParameters> MakeRanges()
{
    constexpr float kFrequencies[] = {50.0f, 200.0f, 800.0f, 3200.0f, 12800.0f};
    constexpr float kQ = 2.0f;
    constexpr Range kOrder{1.0f, 8.0f, 4.0f};

    std::array<Range, Parametric::kNumParameters> ranges{};
    ranges[index::kLowShelfFrequency] = MakeFrequency(40.0f);
    ranges[index::kLowShelfGain] = kGain;
    ranges[index::kHighShelfFrequency] = MakeFrequency(18000.0f);
    ranges[index::kHighShelfGain] = kGain;
    for (std::size_t band = 0; band < Parametric::kNumBands; ++band) {
        ranges[index::BandFrequency(band)] = MakeFrequency(kFrequencies[band]);
        ranges[index::BandQ(band)] = {kSmallestWidth, kLargestWidth, kQ};
        ranges[index::BandGain(band)] = kGain;
        ranges[index::BandOn(band)] = kSwitchOn;
        ranges[index::Bandwidth(band)] = {kSmallestWidth, kLargestWidth, kFrequencies[band] / kQ};
    }
    ranges[index::kMasterGain] = {-96.0f, 48.0f, 0.0f};
    ranges[index::kConstantQ] = kSwitchOn;
    ranges[index::kLowShelfSecondOrder] = kSwitchOff;
    ranges[index::kHighShelfSecondOrder] = kSwitchOff;
    ranges[index::kStateVariable] = kSwitchOff;
    ranges[index::kLowShelfOn] = kSwitchOn;
    ranges[index::kHighShelfOn] = kSwitchOn;
    ranges[index::kSampleRate] = {0.0f, 192000.0f, 0.0f};
    ranges[index::kHighpassOn] = kSwitchOff;
    ranges[index::kHighpassCutoff] = MakeFrequency(20.0f);
    ranges[index::kHighpassOrder] = kOrder;
    ranges[index::kLowpassOn] = kSwitchOff;
    ranges[index::kLowpassCutoff] = MakeFrequency(20000.0f);
    ranges[index::kLowpassOrder] = kOrder;
    ranges[index::kBypass] = {0.0f, 1.0f, 0.0f};
    ranges[index::kUnused] = {0.0f, 1.0f, 0.0f};
    return ranges;
}

} // namespace

void Parametric::SetDefaultParameters()
{
    const auto ranges = MakeRanges();
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        mMinima[i] = ranges[i].mMinimum;
        mMaxima[i] = ranges[i].mMaximum;
        mValues[i] = ranges[i].mDefault;
    }
    SampleRateDependentInitialization();
}

void Parametric::SampleRateDependentInitialization()
{
    const float nyquist = static_cast<float>(mSampleRate) * 0.5f;
    for (const auto i : index::kFrequencies) {
        mMinima[i] = kLowestFrequency;
        mMaxima[i] = nyquist;
        if (mValues[i] > nyquist) {
            mValues[i] = nyquist;
        }
    }
    mValues[index::kSampleRate] = static_cast<float>(mSampleRate);
}

void Parametric::SetParameter(int inIndex, float inValue)
{
    if (!Exists(inIndex)) {
        return;
    }
    const auto i = static_cast<std::size_t>(inIndex);
    // Hosts count on the middle of the range, not on its end.
    const bool isInside = inValue >= mMinima[i] && inValue <= mMaxima[i];
    const float value = isInside ? inValue : (mMinima[i] + mMaxima[i]) / 2.0f;

    if (Contains(index::kSwitches, i)) {
        mValues[i] = value >= kSwitchThreshold ? 1.0f : 0.0f;
        Mark(i);
    } else if (i == index::kSampleRate) {
        RescaleFrequencies(value);
    } else if (value != mValues[i]) {
        mValues[i] = value;
        DeriveFrom(i);
        Mark(i);
    }
}

void Parametric::DeriveFrom(std::size_t inIndex)
{
    for (std::size_t band = 0; band < kNumBands; ++band) {
        const float frequency = mValues[index::BandFrequency(band)];
        auto& q = mValues[index::BandQ(band)];
        auto& bandwidth = mValues[index::Bandwidth(band)];
        if (inIndex == index::BandFrequency(band)) {
            DeriveFromFrequency(band);
        } else if (inIndex == index::BandQ(band)) {
            bandwidth = frequency / q;
        } else if (inIndex == index::Bandwidth(band)) {
            q = frequency / bandwidth;
        }
    }
}

void Parametric::DeriveFromFrequency(std::size_t inBand)
{
    const float frequency = mValues[index::BandFrequency(inBand)];
    auto& q = mValues[index::BandQ(inBand)];
    auto& bandwidth = mValues[index::Bandwidth(inBand)];
    if (IsOn(index::kConstantQ)) {
        bandwidth = LimitWidth(frequency / q);
    } else {
        q = LimitWidth(frequency / bandwidth);
    }
}

void Parametric::RescaleFrequencies(float inSampleRate)
{
    const int sampleRate = static_cast<int>(inSampleRate + 0.5f);
    if (sampleRate == mSampleRate) {
        return;
    }
    const float oldNyquist = static_cast<float>(mSampleRate) * 0.5f;
    const float newNyquist = static_cast<float>(sampleRate) * 0.5f;
    for (const auto i : index::kFrequencies) {
        const float lowest = mMinima[i];
        const float frequency =
            (mValues[i] - lowest) * (newNyquist - lowest) / (oldNyquist - lowest) + lowest;
        mValues[i] = frequency > oldNyquist ? oldNyquist : frequency;
    }
    for (std::size_t band = 0; band < kNumBands; ++band) {
        DeriveFromFrequency(band);
    }
}

float Parametric::GetParameter(int inIndex) const
{
    return Exists(inIndex) ? mValues[static_cast<std::size_t>(inIndex)] : 0.0f;
}

void Parametric::SetBounds(int inIndex, float inMinimum, float inMaximum)
{
    if (Exists(inIndex)) {
        mMinima[static_cast<std::size_t>(inIndex)] = inMinimum;
        mMaxima[static_cast<std::size_t>(inIndex)] = inMaximum;
    }
}

void Parametric::GetBounds(int inIndex, float& outMinimum, float& outMaximum) const
{
    if (Exists(inIndex)) {
        outMinimum = mMinima[static_cast<std::size_t>(inIndex)];
        outMaximum = mMaxima[static_cast<std::size_t>(inIndex)];
    }
}

void Parametric::Mark(std::size_t inIndex)
{
    mChanged[inIndex] = true;
    mParametersChanged = true;
}

void Parametric::SetAllParameterChangedFlags()
{
    mChanged.fill(true);
}

void Parametric::ClearAllParameterChangedFlags()
{
    mChanged.fill(false);
}

} // namespace parametric
