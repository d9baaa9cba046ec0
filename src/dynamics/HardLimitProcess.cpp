#include <algorithm>
#include <cmath>
#include <limits>

#include <brisken/Utility.h>
#include <tessaro/dynamics/HardLimit.h>

#include "dynamics/HardLimitChannel.h"
#include "dynamics/HardLimitParameters.h"

namespace tessaro {

using namespace hardlimit;

namespace {

namespace kernels = brisken::utility;

/// A gain above it counts as none.
constexpr double kNotLimiting = 0.9999;

/// What the envelope sees of a magnitude: nothing where it is no finite number.
float See(float inMagnitude)
{
    return inMagnitude <= std::numeric_limits<float>::max() ? inMagnitude : 0.0f;
}

double TurnIntoGains(double inCeiling, unsigned inCount, double* ioHeights)
{
    double least = 1.0;
    for (unsigned k = 0; k < inCount; ++k) {
        const double gain = ioHeights[k] > inCeiling ? inCeiling / ioHeights[k] : 1.0;
        least = std::min(least, gain);
        ioHeights[k] = gain;
    }
    return least;
}

} // namespace

void HardLimit::Process(const float* const* inInput, float* const* outOutput, int inCount, ChannelMask inMask)
{
    CatchUp();
    if (inCount <= 0) {
        return;
    }
    FollowMask(inMask);
    mLeastGain = 1.0;
    const Block block{inInput, outOutput, static_cast<unsigned>(inCount), inMask};
    if (!mIsTruePeak) {
        ProcessChunk(block, 0, block.mCount, false);
    } else {
        for (unsigned start = 0; start < block.mCount; start += kChunk) {
            ProcessChunk(block, start, std::min(kChunk, block.mCount - start), true);
        }
    }
    mCurrentGain = mTargetGain;
    mIsLimiting = mLeastGain < kNotLimiting;
}

void HardLimit::ProcessChunk(const Block& inBlock, unsigned inStart, unsigned inCount, bool inIsOversampled)
{
    for (std::size_t i = 0; inIsOversampled && i < mChannels.size(); ++i) {
        if (!inBlock.mMask.GetBitModulo(i)) {
            mChannels[i]->mResampler.Process(inBlock.mInput[i] + inStart, mOversampled[i], inCount);
        }
    }
    for (unsigned done = 0; done < inCount;) {
        const unsigned count = std::min({inCount - done, mDelaySize - mWritePosition, kPiece});
        ProcessPiece(inBlock, inStart + done, count, inIsOversampled, done);
        done += count;
    }
}

/// Processes samples whose places in the rings lie in one run.
void HardLimit::ProcessPiece(const Block& inBlock, unsigned inStart, unsigned inCount, bool inIsOversampled,
                             unsigned inStartInChunk)
{
    MakeInputGains(inBlock, inStart, inCount);
    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        if (inBlock.mMask.GetBitModulo(i)) {
            continue;
        }
        kernels::Mul(inCount, inBlock.mInput[i] + inStart, mInputGains.data(), mPiece[i]);
        if (inIsOversampled) {
            HoldBack(i, inCount);
        }
        for (unsigned k = 0; k < inCount; ++k) {
            mArriving[k] = See(std::abs(mPiece[i][k]));
        }
        if (inIsOversampled) {
            TakeTruePeaks(i, inStartInChunk, inCount);
        }
        auto& channel = *mChannels[i];
        channel.mEnvelope.Process({mMagnitudes[i], mDelaySize, mWritePosition}, mArriving.data(), inCount,
                                  channel.mGains.data());
    }
    mLeastGain = std::min(mLeastGain, MakeGains(inBlock.mMask, inCount));
    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        if (!inBlock.mMask.GetBitModulo(i)) {
            WriteOutput(i, inBlock.mOutput[i] + inStart, inCount);
        }
    }
    mWritePosition += inCount;
    mWritePosition = mWritePosition == mDelaySize ? 0 : mWritePosition;
}

/// The line from the gain of the last block to the target, over the whole block.
void HardLimit::MakeInputGains(const Block& inBlock, unsigned inStart, unsigned inCount)
{
    const double step = (mTargetGain - mCurrentGain) / inBlock.mCount;
    for (unsigned k = 0; k < inCount; ++k) {
        mInputGains[k] = static_cast<float>(step * (inStart + k) + mCurrentGain);
    }
}

/// Delays the signal as much as the detector does.
void HardLimit::HoldBack(std::size_t inChannel, unsigned inCount)
{
    const unsigned delay = GetCompensation();
    const int channel = static_cast<int>(inChannel);
    float* const row = mPiece[inChannel];
    const unsigned fromBefore = std::min(delay, inCount);
    mAlignment.Read(channel, mArriving.data(), static_cast<int>(fromBefore), 0);
    mAlignment.Write(channel, row, static_cast<int>(inCount));
    std::copy_backward(row, row + (inCount - fromBefore), row + inCount);
    std::copy_n(mArriving.data(), fromBefore, row);
}

/// Raises the arriving magnitudes to what lies between the samples of their frame and the one before.
void HardLimit::TakeTruePeaks(std::size_t inChannel, unsigned inStartInChunk, unsigned inCount)
{
    auto& channel = *mChannels[inChannel];
    const unsigned factor = channel.mResampler.GetOversampleFactor();
    const float* between = mOversampled[inChannel] + std::size_t{inStartInChunk} * factor;
    float last = channel.mLastTruePeak;
    for (unsigned k = 0; k < inCount; ++k, between += factor) {
        float peak = 0.0f;
        for (unsigned j = 0; j < factor; ++j) {
            peak = std::max(peak, std::abs(between[j]));
        }
        peak = See(peak * std::abs(mInputGains[k]));
        mArriving[k] = std::max({mArriving[k], peak, last});
        last = peak;
    }
    channel.mLastTruePeak = last;
}

/// Turns heights of the envelopes into gains; linked, all channels get those of the highest. Returns the
/// least gain.
double HardLimit::MakeGains(ChannelMask inMask, unsigned inCount)
{
    double least = 1.0;
    double* highest = nullptr;
    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        if (inMask.GetBitModulo(i)) {
            continue;
        }
        double* const heights = mChannels[i]->mGains.data();
        if (!IsOn(kLinkChannels)) {
            least = std::min(least, TurnIntoGains(mCeiling, inCount, heights));
        } else if (highest == nullptr) {
            highest = heights;
        } else {
            std::transform(heights, heights + inCount, highest, highest,
                           [](double inA, double inB) { return std::max(inA, inB); });
        }
    }
    if (highest != nullptr) {
        least = TurnIntoGains(mCeiling, inCount, highest);
        for (std::size_t i = 0; i < mChannels.size(); ++i) {
            if (mChannels[i]->mGains.data() != highest) {
                std::copy_n(highest, inCount, mChannels[i]->mGains.data());
            }
        }
    }
    return least;
}

void HardLimit::WriteOutput(std::size_t inChannel, float* outOutput, unsigned inCount)
{
    float* const ring = mSignals[inChannel] + mWritePosition;
    const double* const gains = mChannels[inChannel]->mGains.data();
    for (unsigned k = 0; k < inCount; ++k) {
        outOutput[k] = static_cast<float>(gains[k] * static_cast<double>(ring[k]));
    }
    kernels::Copy(inCount, mPiece[inChannel], ring);
}

} // namespace tessaro
