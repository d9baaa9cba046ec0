#include <tessaro/dynamics/IRCLimiter.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <brisken/Utility.h>

#include "dynamics/GainTimes.h"
#include "dynamics/InterSamplePeaks.h"
#include "dynamics/TransientCurve.h"

namespace tessaro {

namespace {

namespace kernels = brisken::utility;

/// Frames that are processed at a time
constexpr unsigned kLongestRun = 256;
static_assert(kLongestRun <= dynamics::InterSamplePeaks::kLongestRun);
static_assert(kLongestRun <= dynamics::TransientCurve::kLongestRun);

/// What `LimEnvelope` is told as its longest block
constexpr int kEnvelopeBlock = 8192;

// Seconds
constexpr double kHistory = 0.16;
constexpr float kLookAhead = 0.002f; // at behaviour 1
constexpr float kRelease = 0.05f;
constexpr float kLongWindow = 0.006f;
/// The look-ahead of behaviour 1.5
const float kLookAheadLimit = std::sqrt(1.5f) * 0.003f;

constexpr float kReleaseBehavior = 0.6f;

/// As linked as can be
constexpr float kFullLink = 100.0f;
constexpr float kLinkTolerance = 0.01f;

constexpr float kSmallestAmplitude = 1e-20f;

/// Turns magnitudes into levels over the threshold in dB, 0 for what is not above it. In place.
void ToLevelsOver(unsigned inCount, float inLinearThreshold, float inThreshold, float* ioLevels,
                  float* outLogarithms)
{
    if (kernels::Max(inCount, ioLevels) <= inLinearThreshold) {
        kernels::Zero(inCount, ioLevels);
        return;
    }
    std::transform(ioLevels, ioLevels + inCount, outLogarithms,
                   [](float inLevel) { return std::max(inLevel, kSmallestAmplitude); });
    kernels::Ln(inCount, outLogarithms, outLogarithms);
    for (unsigned i = 0; i < inCount; ++i) {
        const float over = std::max(
            outLogarithms[i] * static_cast<float>(dynamics::kDecibelsFromNatural) - inThreshold, 0.0f);
        ioLevels[i] = ioLevels[i] > inLinearThreshold ? over : 0.0f;
    }
}

} // namespace

/// What finds levels and transients, and the rows that they leave
struct IRCLimiter::Detectors
{
    dynamics::InterSamplePeaks mInterSamplePeaks;
    dynamics::TransientCurve mTransientCurve;
    DataTail mPeaks;
    std::vector<float> mLevels = std::vector<float>(kLongestRun);
    std::vector<float> mWork = std::vector<float>(kLongestRun);
    std::vector<float> mGain = std::vector<float>(kLongestRun); ///< first the reduction in dB
    std::vector<float> mZeros = std::vector<float>(kLongestRun);
    std::vector<const float*> mSources;
};

IRCLimiter::IRCLimiter() : mDetectors(std::make_unique<Detectors>()) {}
IRCLimiter::~IRCLimiter() = default;

void IRCLimiter::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    AudioProcessor::SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
    const auto channels = static_cast<std::size_t>(std::max(inNumChannels, 0));
    const auto history = static_cast<int>(std::lround(kHistory * inSamplingRate));
    mInput.ReserveMemory(inNumChannels, static_cast<int>(kLongestRun) + history);
    mDetectors->mInterSamplePeaks.SetMode(inNumChannels, inSamplingRate);
    mDetectors->mTransientCurve.SetMode(inNumChannels, inSamplingRate);
    mDetectors->mPeaks.SetMode(inNumChannels, inSamplingRate, kLongestRun);
    mDetectors->mSources.assign(channels, nullptr);
    mEnvelopes.resize(channels);
    for (auto& envelope : mEnvelopes) {
        envelope.StartNewStream(static_cast<float>(inSamplingRate), kEnvelopeBlock);
        envelope.ConstrainLatency(kLookAheadLimit, kLongWindow);
    }
    mMeters.assign(channels, 0.0f);
    ApplyBehavior();
    InitInputDelay();
}

/// The audio waits for the envelope and for what the envelope waits for: the transient curve, and the peaks
/// between samples. The peaks are taken from audio that is as late as the transient curve, and the transient
/// curve from audio that is as late as the peaks, so that both speak of the same frame.
void IRCLimiter::InitInputDelay()
{
    for (auto& envelope : mEnvelopes) {
        envelope.EnableDoubleCurve(mHasDoubleEnvelope);
    }
    const int envelopeDelay = mEnvelopes.empty() ? 0 : mEnvelopes.front().GetLatency();
    const int transientDelay = mHasDoubleEnvelope ? mDetectors->mTransientCurve.GetLatency() : 0;
    const int peakDelay = mHasAnalogDetection ? dynamics::InterSamplePeaks::kDelay : 0;
    const int delay = envelopeDelay + transientDelay + peakDelay;
    mInput.SetTailMode(GetNumChannels(), GetSamplingRate(), kLongestRun, delay, true);
    mPeakPosition = static_cast<unsigned>(delay - transientDelay);
    mTransientPosition = static_cast<unsigned>(delay - peakDelay);
    SetSystemDelay(delay);
    Reset();
}

void IRCLimiter::Reset()
{
    mInput.Reset();
    mDetectors->mInterSamplePeaks.Reset();
    mDetectors->mTransientCurve.Reset();
    for (auto& envelope : mEnvelopes) {
        envelope.Reset();
    }
    std::fill(mMeters.begin(), mMeters.end(), 0.0f);
}

void IRCLimiter::SetThreshold(float inDecibels)
{
    mThreshold = inDecibels;
    mLinearThreshold = DB2Amp(inDecibels);
}

void IRCLimiter::SetBehavior(float inBehavior)
{
    mBehavior = inBehavior > 0.0f ? inBehavior : 0.0f;
    ApplyBehavior();
}

void IRCLimiter::ApplyBehavior()
{
    const float lookAhead = std::sqrt(mBehavior) * mBehavior * kLookAhead;
    const float release = std::sqrt(mBehavior / kReleaseBehavior) * kRelease + kRelease;
    for (auto& envelope : mEnvelopes) {
        envelope.SetMode(lookAhead, release, kLongWindow);
        envelope.SetCharacter(mBehavior);
    }
}

void IRCLimiter::SetStereoLinking(float inPercent)
{
    mLink = inPercent * 0.01f;
    mIsLinked = std::abs(inPercent - kFullLink) < kLinkTolerance;
    Reset();
}

void IRCLimiter::EnableAnalogDetection(bool inEnable)
{
    mHasAnalogDetection = inEnable;
    InitInputDelay();
}

void IRCLimiter::EnableDoubleEnvelope(bool inEnable)
{
    mHasDoubleEnvelope = inEnable;
    InitInputDelay();
}

float IRCLimiter::GetMeter(int inChannel) const
{
    const auto channel = static_cast<std::size_t>(inChannel);
    return channel < mMeters.size() ? mMeters[channel] : 0.0f;
}

/// Not the frame's `Process` first: growing would clear the history, and there is nothing to grow.
void IRCLimiter::Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                         Channels inSkippedChannels)
{
    std::fill(mMeters.begin(), mMeters.end(), 0.0f);
    const auto count = static_cast<unsigned>(std::max(inNumSamples, 0));
    for (unsigned done = 0; done < count;) {
        const unsigned run = std::min(count - done, kLongestRun);
        Append(inInput, done, run, inSkippedChannels);
        ProcessRun(done, run, outOutput, inSkippedChannels);
        mInput.Shift(static_cast<int>(run));
        done += run;
    }
}

/// For a skipped channel zeros go into the delay, so that it moves on.
void IRCLimiter::Append(const float* const* inInput, unsigned inOffset, unsigned inCount, Channels inSkipped)
{
    auto& sources = mDetectors->mSources;
    for (std::size_t channel = 0; channel < sources.size(); ++channel) {
        sources[channel] =
            inSkipped.GetBitModulo(channel) ? mDetectors->mZeros.data() : inInput[channel] + inOffset;
    }
    mInput.Append(sources.data(), inCount, 0);
}

void IRCLimiter::ProcessRun(unsigned inOffset, unsigned inCount, float* const* outOutput, Channels inSkipped)
{
    const float* const transients =
        mHasDoubleEnvelope
            ? mDetectors->mTransientCurve.Process(mInput, mTransientPosition, inCount, inSkipped)
            : nullptr;
    FindPeaks(inCount, inSkipped);
    float reduction = 0.0f;
    if (mIsLinked && !mEnvelopes.empty()) {
        MakeLevelMap(0, inCount, inSkipped);
        reduction = MakeGain(mEnvelopes.front(), inCount, transients);
    }
    for (std::size_t channel = 0; channel < mEnvelopes.size(); ++channel) {
        if (inSkipped.GetBitModulo(channel)) {
            continue;
        }
        if (!mIsLinked) {
            MakeLevelMap(channel, inCount, inSkipped);
            reduction = MakeGain(mEnvelopes[channel], inCount, transients);
        }
        ApplyGain(channel, inCount, reduction, outOutput[channel] + inOffset);
    }
}

void IRCLimiter::FindPeaks(unsigned inCount, Channels inSkipped)
{
    float* const* const peaks = mDetectors->mPeaks;
    float* const* const input = mInput.MakeOffsetPointer(mPeakPosition);
    if (mHasAnalogDetection) {
        mDetectors->mInterSamplePeaks.Process(input, inCount, peaks, inSkipped);
        return;
    }
    for (std::size_t channel = 0; channel < mEnvelopes.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            kernels::Abs(inCount, input[channel], peaks[channel]);
        }
    }
}

/// When all are linked, the channel does not matter.
void IRCLimiter::MakeLevelMap(std::size_t inChannel, unsigned inCount, Channels inSkipped)
{
    float* const levels = mDetectors->mLevels.data();
    float* const work = mDetectors->mWork.data();
    kernels::Zero(inCount, levels);
    for (std::size_t channel = 0; channel < mEnvelopes.size(); ++channel) {
        if (inSkipped.GetBitModulo(channel)) {
            continue;
        }
        const float* peaks = mDetectors->mPeaks.GetPointer()[channel];
        if (!mIsLinked && channel != inChannel) {
            kernels::MulConstant(inCount, peaks, work, mLink);
            peaks = work;
        }
        kernels::MaxEvery_InPlace(inCount, peaks, levels);
    }
    kernels::Threshold_GT_InPlace(inCount, levels, std::numeric_limits<float>::max());
    ToLevelsOver(inCount, mLinearThreshold, mThreshold, levels, work);
}

/// Returns the largest reduction, in dB.
float IRCLimiter::MakeGain(LimEnvelope& ioEnvelope, unsigned inCount, const float* inTransients)
{
    float* const gain = mDetectors->mGain.data();
    ioEnvelope.Process(mDetectors->mLevels.data(), gain, static_cast<int>(inCount), inTransients);
    const float reduction = kernels::Max(inCount, gain);
    kernels::MulConstant_InPlace(inCount, gain, static_cast<float>(-dynamics::kNaturalFromDecibels));
    kernels::Exp(inCount, gain, gain);
    return reduction;
}

void IRCLimiter::ApplyGain(std::size_t inChannel, unsigned inCount, float inReduction, float* outRow)
{
    kernels::Mul(inCount, mInput.GetPointer()[inChannel], mDetectors->mGain.data(), outRow);
    kernels::Trim(inCount, outRow, -mLinearThreshold, mLinearThreshold);
    mMeters[inChannel] = std::max(mMeters[inChannel], inReduction);
}

} // namespace tessaro
