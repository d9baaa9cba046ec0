#include <tessaro/dynamics/MaximizerDSP.h>

#include <algorithm>
#include <limits>

#include <brisken/utility/Arithmetic.h>
#include <brisken/utility/Compare.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Reductions.h>
#include <tessaro/dynamics/IRCLimiter.h>

#include "dynamics/GainLoops.h"
#include "dynamics/GainTimes.h"
#include "dynamics/LevelFollowers.h"
#include "dynamics/MaximizerHistogram.h"
#include "dynamics/MaximizerKernels.h"
#include "dynamics/MaximizerRuns.h"

namespace tessaro {

namespace {

namespace kernels = brisken::utility;
using namespace dynamics::maximizer;

/// Output over level in the soft mode: the curve of a ratio of 20
constexpr double kSoftExponent = -0.95;

static_assert(kOutputRing == dynamics::HoldLine::kLength, "a target holds until its sample has come out");

} // namespace

void MaximizerDSP::Process(unsigned inCount, float* const* ioData, ChannelMask inSkipped)
{
    if (mIsBypassed) {
        return;
    }
    switch (mMode) {
    case kSoft:
        ProcessSoft(inCount, ioData, inSkipped);
        break;
    case kBrickwall:
        ProcessBrickwall(inCount, ioData, inSkipped);
        break;
    case kDigital:
    case kProgram:
        ProcessDigital(inCount, ioData, inSkipped);
        break;
    }
}

void MaximizerDSP::ProcessSoft(unsigned inCount, float* const* ioData, ChannelMask inSkipped)
{
    const dynamics::SoftSpeeds speeds = {mAttackKept, mAttackStep, mReleaseKept, mReleaseStep, mSmootherStep};
    float* const gains = mGains.data();
    for (unsigned begin = 0; begin < inCount; begin += kLongestRun) {
        const unsigned count = std::min(inCount - begin, kLongestRun);
        DelayInput(begin, count, ioData, inSkipped);
        FindPeaks(0, count, mScratchRows.data(), inSkipped);
        dynamics::HoldPeaks(count, mPeaks.data(), mPeakDecay, mPeak, mPeaks.data());
        dynamics::CurveAbove(count, mPeaks.data(), kernels::Max(count, mPeaks.data()), mLinearThreshold,
                             kSoftExponent, gains);
        dynamics::FollowSoft(count, speeds, mGain, mSmoothedGain, gains);
        DelayOutput(begin, count, gains, ioData, inSkipped);
    }
}

void MaximizerDSP::ProcessBrickwall(unsigned inCount, float* const* ioData, ChannelMask inSkipped)
{
    const dynamics::WallSpeeds speeds = {mPeakDecay, mReleaseKept, mReleaseStep};
    dynamics::WallState state = {mPeak, mGain, *mHoldLine};
    float* const gains = mGains.data();
    for (unsigned begin = 0; begin < inCount; begin += kLongestRun) {
        const unsigned count = std::min(inCount - begin, kLongestRun);
        DelayInput(begin, count, ioData, inSkipped);
        FindPeaks(0, count, mScratchRows.data(), inSkipped);
        FeedHistogram(count);
        dynamics::FollowWall(count, speeds, mLinearThreshold, state, mPeaks.data(), gains);
        NoteGain(kernels::Min(count, gains));
        DelayOutput(begin, count, gains, ioData, inSkipped);
    }
    mPeak = state.mLevel;
    mGain = state.mGain;
}

void MaximizerDSP::ProcessDigital(unsigned inCount, float* const* ioData, ChannelMask inSkipped)
{
    ProcessMeters(inCount, ioData, inSkipped);
    mLimiter->Process(ioData, static_cast<int>(inCount), ioData, inSkipped);
    for (std::size_t channel = 0; channel < mScratchRows.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            kernels::MulConstant_InPlace(inCount, ioData[channel], mMakeup);
        }
    }
    NoteGain(dynamics::LinearFromDecibels(-mLimiter->GetMeter(0)));
}

void MaximizerDSP::ProcessMeters(unsigned inCount, const float* const* inData, ChannelMask inSkipped)
{
    for (unsigned begin = 0; begin < inCount; begin += kLongestRun) {
        const unsigned count = std::min(inCount - begin, kLongestRun);
        FindPeaks(begin, count, inData, inSkipped);
        dynamics::HoldMeterPeaks(count, mPeaks.data(), mPeakDecay, mPeak);
        FeedHistogram(count);
    }
}

/// Leaves in the scratch what comes out of the input delay. The ring of a skipped channel stands still while
/// the position moves on.
void MaximizerDSP::DelayInput(unsigned inOffset, unsigned inCount, const float* const* inData,
                              ChannelMask inSkipped)
{
    for (std::size_t channel = 0; channel < mScratchRows.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            dynamics::PassThroughRing(mInputDelay.data() + channel * kInputRing, kInputRing, mInputPosition,
                                      inCount, inData[channel] + inOffset,
                                      mScratch.data() + channel * kLongestRun);
        }
    }
    mInputPosition = (mInputPosition + inCount) % kInputRing;
}

/// First the gain and then the make-up: a peak that is reduced to the threshold comes out at the margin,
/// without a rounding above it.
void MaximizerDSP::DelayOutput(unsigned inOffset, unsigned inCount, const float* inGains,
                               float* const* outData, ChannelMask inSkipped)
{
    for (std::size_t channel = 0; channel < mScratchRows.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            float* const row = outData[channel] + inOffset;
            dynamics::PassThroughRing(mOutputDelay.data() + channel * kOutputRing, kOutputRing,
                                      mOutputPosition, inCount, mScratchRows[channel], row);
            kernels::Mul_InPlace(inCount, inGains, row);
            kernels::MulConstant_InPlace(inCount, row, mMakeup);
        }
    }
    mOutputPosition = (mOutputPosition + inCount) % kOutputRing;
}

/// The largest magnitude of the channels in each frame. Infinite ones count as the largest number, so that
/// the held peak falls again.
void MaximizerDSP::FindPeaks(unsigned inOffset, unsigned inCount, const float* const* inRows,
                             ChannelMask inSkipped)
{
    float* const peaks = mPeaks.data();
    kernels::Set(inCount, peaks, dynamics::kLeastPeak);
    for (std::size_t channel = 0; channel < mScratchRows.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            dynamics::FoldMagnitudes(inCount, inRows[channel] + inOffset, peaks);
        }
    }
    kernels::Threshold_GT_InPlace(inCount, peaks, std::numeric_limits<float>::max());
}

void MaximizerDSP::FeedHistogram(unsigned inCount)
{
    if (mHistogram && mIsMeterVisible) {
        std::for_each_n(mPeaks.begin(), inCount, [this](float inPeak) { UpdateHistogram(inPeak); });
    }
}

void MaximizerDSP::UpdateHistogram(float inPeak)
{
    mHistogram->Update(inPeak);
}

void MaximizerDSP::NoteGain(float inGain)
{
    if (mLeastGain >= inGain) {
        mLeastGain = inGain;
        mHasNewGainReduction = true;
    }
}

} // namespace tessaro
