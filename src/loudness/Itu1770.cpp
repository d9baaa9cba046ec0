#include <tessaro/loudness/Itu1770.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <brisken/utility/Copy.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Reductions.h>

namespace tessaro {

namespace {

using brisken::filter::SectionTaps;

constexpr double kBlockSeconds = 0.4;
/// What the weighting adds to a sine of 997 Hz, and the scale takes off again, in dB
constexpr double kOffset = -0.691;
/// -70 LKFS as a mean square
const double kAbsoluteGate = std::pow(10.0, -6.93090);
/// dB below the mean of the blocks above the absolute gate
constexpr double kRelativeGate = -10.0;
constexpr double kSurroundWeight = 1.41f;

/// A section of the weighting: gains far above, at and far below its centre.
struct Weighting
{
    double mHigh;
    double mBand;
    double mLow;
    double mQ;
    double mCenter; ///< Hz
};

constexpr Weighting kPrefilter{1.5848647011308554, 1.2587209302325613, 1.000000000000008, 0.7071752369554194,
                               1681.9744509555321};
constexpr Weighting kRLB{1.0049948987146884, 0.0, 0.0, 0.5003270373250421, 38.13547087611304};

SecondOrderIIRCoefficients Design(const Weighting& inWeighting, double inSampleRate)
{
    const auto& [high, band, low, q, center] = inWeighting;
    const double k = std::tan(std::numbers::pi * center / inSampleRate);
    const double d = 1.0 / (k * k + k / q + 1.0);
    SecondOrderIIRCoefficients coefficients;
    coefficients.a1 = 2.0 * (k * k - 1.0) * d;
    coefficients.a2 = (k * k - k / q + 1.0) * d;
    coefficients.b0 = (low * k * k + band * k / q + high) * d;
    coefficients.b1 = 2.0 * (low * k * k - high) * d;
    coefficients.b2 = (low * k * k - band * k / q + high) * d;
    return coefficients;
}

SectionTaps ToTaps(const SecondOrderIIRCoefficients& inCoefficients)
{
    const auto& [a1, a2, b0, b1, b2] = inCoefficients;
    return {a1, a2, b0, b1, b2};
}

double ToDecibels(double inPower)
{
    return 10.0 * std::log10(inPower);
}

} // namespace

SecondOrderIIRCoefficients Itu1770::CalculatePrefilterCoefficients(double inSampleRate)
{
    return Design(kPrefilter, inSampleRate);
}

SecondOrderIIRCoefficients Itu1770::CalculateRLBfilterCoefficients(double inSampleRate)
{
    return Design(kRLB, inSampleRate);
}

void Itu1770::Init(unsigned inMaximumBlockFrames, float inSampleRate,
                   const std::vector<ChannelLabel>& inLabels)
{
    const double length = inSampleRate * kBlockSeconds;
    mBlockLength = length >= 1.0 ? static_cast<unsigned>(length) : 0;
    mOverlap = 3 * mBlockLength / 4;
    mMaximumFrames = std::max(inMaximumBlockFrames, 1u);
    mTaps[0] = ToTaps(CalculatePrefilterCoefficients(inSampleRate));
    mTaps[1] = ToTaps(CalculateRLBfilterCoefficients(inSampleRate));
    mChannels.clear();
    for (std::size_t row = 0; row < inLabels.size(); ++row) {
        const auto label = inLabels[row];
        if (label != kLowFrequency) {
            const bool isSurround = label == kLeftSurround || label == kRightSurround;
            mChannels.push_back({row,
                                 isSurround ? kSurroundWeight : 1.0,
                                 {},
                                 std::vector<float>(std::size_t{mBlockLength} + mMaximumFrames)});
        }
    }
    mInputRows.resize(mChannels.size());
    mOutputRows.resize(mChannels.size());
    mStates.resize(mChannels.size());
    mBlockPowers.clear();
    mFilled = 0;
}

void Itu1770::Process(const float* const* inChannels, unsigned inFrames)
{
    if (mBlockLength == 0) {
        return;
    }
    for (unsigned done = 0; done < inFrames;) {
        const unsigned count = std::min(inFrames - done, mMaximumFrames);
        Weigh(inChannels, done, count);
        mFilled += count;
        TakeBlocks();
        done += count;
    }
}

/// Appends the weighted samples of each channel to its store, and zeros to those of silent ones.
void Itu1770::Weigh(const float* const* inChannels, unsigned inOffset, unsigned inFrames)
{
    unsigned rows = 0;
    for (auto& channel : mChannels) {
        float* const store = channel.mStore.data() + mFilled;
        if (mSilentChannels.GetBitModulo(channel.mRow)) {
            brisken::utility::Zero(inFrames, store);
        } else {
            mInputRows[rows] = inChannels[channel.mRow] + inOffset;
            mOutputRows[rows] = store;
            mStates[rows] = channel.mFilters;
            ++rows;
        }
    }
    brisken::filter::RunSectionPair(rows, inFrames, mInputRows.data(), mOutputRows.data(), mTaps,
                                    mStates.data());
    rows = 0;
    for (auto& channel : mChannels) {
        if (!mSilentChannels.GetBitModulo(channel.mRow)) {
            channel.mFilters = mStates[rows++];
        }
    }
}

void Itu1770::TakeBlocks()
{
    while (mFilled >= mBlockLength) {
        const double power = GetBlockPower();
        // One infinite power would be the mean of all.
        if (power > kAbsoluteGate && power <= std::numeric_limits<float>::max()) {
            mBlockPowers.push_back(static_cast<float>(power));
        }
        const unsigned step = mBlockLength - mOverlap;
        mFilled -= step;
        for (auto& channel : mChannels) {
            brisken::utility::Move(mFilled, channel.mStore.data() + step, channel.mStore.data());
        }
    }
}

double Itu1770::GetBlockPower() const
{
    double sum = 0.0;
    for (const auto& channel : mChannels) {
        sum += channel.mWeight * brisken::utility::SumOfSquares(mBlockLength, channel.mStore.data());
    }
    return sum / mBlockLength;
}

float Itu1770::GetLKFS() const
{
    if (mBlockPowers.empty()) {
        return kFloor;
    }
    double sum = 0.0;
    for (const float power : mBlockPowers) {
        sum += power;
    }
    const double mean = sum / static_cast<double>(mBlockPowers.size());
    const double gate = std::pow(10.0, (ToDecibels(mean) + kOffset + kRelativeGate - kOffset) / 10.0);
    double gatedSum = 0.0;
    std::size_t gatedCount = 0;
    for (const float power : mBlockPowers) {
        if (power > gate) {
            gatedSum += power;
            ++gatedCount;
        }
    }
    if (gatedCount == 0) {
        return kFloor;
    }
    return static_cast<float>(ToDecibels(gatedSum / static_cast<double>(gatedCount)) + kOffset);
}

} // namespace tessaro
