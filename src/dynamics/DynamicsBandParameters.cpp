// The settings of a band and what is derived from them; see DynamicsBand.cpp for what is done with it.

#include <tessaro/dynamics/DynamicsBand.h>

#include <algorithm>
#include <cmath>

#include "dynamics/GainTimes.h"

namespace tessaro::dynamics {

namespace {

/// Parts of the shorter of attack and release
constexpr double kSmoothingPart = 2.0;
constexpr double kRMSPart = 8.0;

} // namespace

void DynamicsBand::SetSampleRate(float inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        mSampleRate = inSampleRate;
        Rebuild();
    }
}

void DynamicsBand::SetMaxProcessingBlockSize(int inMaxBlockSize)
{
    if (inMaxBlockSize != mMaxBlockSize) {
        mMaxBlockSize = inMaxBlockSize;
        Rebuild();
    }
}

void DynamicsBand::SetAudioChannelLayout(const ChannelLayout& inLayout)
{
    if (inLayout != mLayout) {
        mLayout = inLayout;
        Rebuild();
    }
}

void DynamicsBand::UpdateThreshold(Stage& ioStage, float inThreshold)
{
    ioStage.mThreshold = inThreshold;
    ioStage.mLinearThreshold = LinearFromDecibels(inThreshold);
    UpdateMaxCompressorGain();
}

void DynamicsBand::UpdateMaxCompressorGain()
{
    const double rise = static_cast<double>(mLim.mLinearThreshold) / mComp.mLinearThreshold;
    mMaxCompressorGain = mComp.mExponent == 0.0 ? 1.0f : static_cast<float>(std::pow(rise, mComp.mExponent));
}

void DynamicsBand::UpdateTimes(Stage& ioStage)
{
    ioStage.mAttackKept = OnePoleKept(ioStage.mAttack, mSampleRate);
    ioStage.mReleaseKept = OnePoleKept(ioStage.mRelease, mSampleRate);
    const double shorter = std::min(mComp.mAttack, mComp.mRelease);
    const double gateShorter = std::min(mGate.mAttack, mGate.mRelease);
    mSmoothingKept = OnePoleKept(shorter / kSmoothingPart, mSampleRate);
    mRMSKept = OnePoleKept(shorter / kRMSPart, mSampleRate);
    mGateSmoothingKept = OnePoleKept(gateShorter / kSmoothingPart, mSampleRate);
}

void DynamicsBand::SetCompThreshold(float inThreshold)
{
    UpdateThreshold(mComp, inThreshold);
    mOrdered.mCompressor = inThreshold;
    mOrdered.mLimiter = std::max(mOrdered.mLimiter, inThreshold);
    mOrdered.mGate = std::min(mOrdered.mGate, inThreshold);
}

void DynamicsBand::SetLimThreshold(float inThreshold)
{
    UpdateThreshold(mLim, inThreshold);
    mOrdered.mLimiter = inThreshold;
    mOrdered.mCompressor = std::min(mOrdered.mCompressor, inThreshold);
    mOrdered.mGate = std::min(mOrdered.mGate, inThreshold);
}

void DynamicsBand::SetGateThreshold(float inThreshold)
{
    UpdateThreshold(mGate, inThreshold);
    mOrdered.mGate = inThreshold;
    mOrdered.mCompressor = std::max(mOrdered.mCompressor, inThreshold);
    mOrdered.mLimiter = std::max(mOrdered.mLimiter, inThreshold);
}

void DynamicsBand::SetCompRatio(float inRatio)
{
    mComp.mRatio = inRatio;
    mComp.mExponent = CompressionExponent(inRatio);
    UpdateMaxCompressorGain();
}

void DynamicsBand::SetLimRatio(float inRatio)
{
    mLim.mRatio = inRatio;
    mLim.mExponent = CompressionExponent(inRatio);
}

void DynamicsBand::SetGateRatio(float inRatio)
{
    mGate.mRatio = inRatio;
    mGate.mExponent = static_cast<double>(inRatio) - 1.0;
}

void DynamicsBand::SetCompAttack(float inAttack)
{
    mComp.mAttack = inAttack;
    UpdateTimes(mComp);
}

void DynamicsBand::SetCompRelease(float inRelease)
{
    mComp.mRelease = inRelease;
    UpdateTimes(mComp);
}

void DynamicsBand::SetLimAttack(float inAttack)
{
    mLim.mAttack = inAttack;
    UpdateTimes(mLim);
}

void DynamicsBand::SetLimRelease(float inRelease)
{
    mLim.mRelease = inRelease;
    UpdateTimes(mLim);
}

void DynamicsBand::SetGateAttack(float inAttack)
{
    mGate.mAttack = inAttack;
    UpdateTimes(mGate);
}

void DynamicsBand::SetGateRelease(float inRelease)
{
    mGate.mRelease = inRelease;
    UpdateTimes(mGate);
}

void DynamicsBand::SetOutputGain(float inGain)
{
    mOutputGain = inGain;
    mLinearOutputGain = LinearFromDecibels(inGain);
}

} // namespace tessaro::dynamics
