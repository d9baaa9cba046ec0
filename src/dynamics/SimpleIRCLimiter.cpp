#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <brisken/Utility.h>

#include "dynamics/GainTimes.h"
#include "dynamics/SimpleIRCCurve.h"

namespace tessaro {

namespace {

namespace kernels = brisken::utility;

constexpr int kUpsampling = 5;
constexpr int kUpsamplerTaps = 64;
constexpr float kUpsamplerShape = 5.0f;
/// How late the values around a frame, two at the higher rate to each side, are complete: the filter's delay
/// of 31 of them, up to the end of the five that come with each frame
constexpr int kAnalogDelay = (kUpsamplerTaps / 2 - 1 + kUpsampling / 2) / kUpsampling;
static_assert(kUpsamplerTaps / 2 - 1 - kUpsampling * kAnalogDelay == 1,
              "the values around a frame begin with the last that came with the frame before");
constexpr float kDecibelsPerNeper = 8.685889638065037f;
constexpr unsigned kPiece = SimpleIRCCurve::kMaxCount;

/// Raises levels to the magnitudes of a row. What is no finite number is not heard, and hides no other row.
void RaiseToMagnitudes(unsigned inCount, const float* inRow, float* ioLevels)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const float magnitude = std::abs(inRow[i]);
        const float heard = magnitude <= std::numeric_limits<float>::max() ? magnitude : 0.0f;
        ioLevels[i] = std::max(ioLevels[i], heard);
    }
}

} // namespace

SimpleIRCLimiter::SimpleIRCLimiter()
    : mLinearThreshold(DB2Amp(mThreshold)),

      mCurve(std::make_unique<SimpleIRCCurve>())
{
    mUpsampler.SetOptions(kUpsampling, 1, kUpsamplerTaps, kUpsamplerShape);
}

SimpleIRCLimiter::~SimpleIRCLimiter() = default;

void SimpleIRCLimiter::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    AudioProcessor::SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
    const auto channels = static_cast<std::size_t>(std::max(inNumChannels, 0));
    mLevels.SetTailMode(kPiece, kAnalogDelay, true);
    mEnvelope.resize(kPiece);
    mScratch.resize(kPiece);
    mUpsampler.SetMode(inNumChannels, inSamplingRate, kPiece);
    mUpsampled.Init(channels, kPiece * kUpsampling);
    mRows.resize(channels);
    mZeros.assign(kPiece, 0.0f);
    mAnalogLevels.resize(kPiece * kUpsampling);
    mCurve->SetSamplingRate(inSamplingRate);
    SetLookAhead(static_cast<int>(mCurve->GetLookAhead()) + kAnalogDelay);
    SetBehavior(mBehavior);
}

void SimpleIRCLimiter::ChangeBufferSize(int inMaxBlockSize)
{
    // The base class's form would call `SetMode`, which resets. Blocks are cut in pieces anyway.
    AudioProcessor::SetMode(GetNumChannels(), GetSamplingRate(), inMaxBlockSize);
}

void SimpleIRCLimiter::SetThreshold(float inDecibels)
{
    mThreshold = inDecibels;
    mLinearThreshold = DB2Amp(inDecibels);
}

void SimpleIRCLimiter::SetBehavior(float inBehavior)
{
    mBehavior = inBehavior > 0.0f ? inBehavior : 0.0f;
    mCurve->SetBehavior(mBehavior);
    Reset();
}

void SimpleIRCLimiter::EnableAnalogDetection(bool inEnabled)
{
    if (inEnabled != mAnalogDetection) {
        mAnalogDetection = inEnabled;
        Reset();
    }
}

void SimpleIRCLimiter::Reset()
{
    mLevels.Reset();
    mUpsampler.Reset();
    mLastAnalogLevel = 0.0f;
    mCurve->Reset();
    mIsFirstBlock = true;
    mReduction = 0.0f;
}

void SimpleIRCLimiter::Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                               SilenceFlags inSilentChannels)
{
    AudioProcessor::Process(inInput, inNumSamples, outOutput, inSilentChannels);
    if (inNumSamples <= 0) {
        return;
    }
    const int lookAhead = GetLookAhead();
    if (mIsFirstBlock) {
        for (int done = 0; done < lookAhead;) {
            const int count = std::min(lookAhead - done, static_cast<int>(kPiece));
            TakeIn(inInput, done, static_cast<unsigned>(count), inSilentChannels);
            done += count;
        }
        mIsFirstBlock = false;
    }
    mReduction = 0.0f;
    for (int done = 0; done < inNumSamples;) {
        const int count = std::min(inNumSamples - done, static_cast<int>(kPiece));
        TakeIn(inInput, lookAhead + done, static_cast<unsigned>(count), inSilentChannels);
        ApplyEnv(inInput, outOutput, done, static_cast<unsigned>(count), inSilentChannels);
        done += count;
    }
}

/// Takes samples into sight, and leaves the reduction of those that go out of it in the envelope.
void SimpleIRCLimiter::TakeIn(const float* const* inInput, int inOffset, unsigned inCount,
                              SilenceFlags inSilentChannels)
{
    BuildOverMap(inInput, inOffset, inCount, inSilentChannels);
    mCurve->Process(inCount, mEnvelope.data());
}

void SimpleIRCLimiter::BuildOverMap(const float* const* inInput, int inOffset, unsigned inCount,
                                    SilenceFlags inSilentChannels)
{
    TakeLevels(inInput, inOffset, inCount, inSilentChannels);
    if (mAnalogDetection) {
        TakeAnalogLevels(inInput, inOffset, inCount, inSilentChannels);
    }
    const float threshold = mLinearThreshold;
    for (unsigned i = 0; i < inCount; ++i) {
        const float level = mEnvelope[i];
        const bool isOver = level > threshold;
        mEnvelope[i] = isOver ? level : threshold;
        mScratch[i] = isOver ? 1.0f : 0.0f;
    }
    kernels::Ln(inCount, mEnvelope.data(), mEnvelope.data());
    for (unsigned i = 0; i < inCount; ++i) {
        const float over = mEnvelope[i] * kDecibelsPerNeper - mThreshold;
        mEnvelope[i] = mScratch[i] != 0.0f ? std::max(over, 0.0f) : 0.0f;
    }
}

/// The largest magnitude in each frame, late by the delay of the analog detection
void SimpleIRCLimiter::TakeLevels(const float* const* inInput, int inOffset, unsigned inCount,
                                  SilenceFlags inSilentChannels)
{
    float* const levels = mLevels.MakeOffsetPointer(mLevels.GetTotal());
    kernels::Zero(inCount, levels);
    for (std::size_t i = 0; i < mRows.size(); ++i) {
        if (!inSilentChannels.GetBitModulo(i)) {
            RaiseToMagnitudes(inCount, inInput[i] + inOffset, levels);
        }
    }
    mLevels.AddTotal(inCount);
    kernels::Copy(inCount, mLevels.GetPointer(), mEnvelope.data());
    mLevels.Shift(static_cast<int>(inCount));
}

/// Raises the levels to those of the five values around each frame at the higher rate.
void SimpleIRCLimiter::TakeAnalogLevels(const float* const* inInput, int inOffset, unsigned inCount,
                                        SilenceFlags inSilentChannels)
{
    for (std::size_t i = 0; i < mRows.size(); ++i) {
        mRows[i] = inSilentChannels.GetBitModulo(i) ? mZeros.data() : inInput[i] + inOffset;
    }
    mUpsampler.Process(mRows.data(), static_cast<int>(inCount), mUpsampled.GetFloatBuffers(), {});
    const unsigned numValues = inCount * kUpsampling;
    kernels::Zero(numValues, mAnalogLevels.data());
    for (std::size_t i = 0; i < mRows.size(); ++i) {
        RaiseToMagnitudes(numValues, mUpsampled[i], mAnalogLevels.data());
    }
    const float* around = mAnalogLevels.data();
    for (unsigned i = 0; i < inCount; ++i, around += kUpsampling) {
        const float level = std::max({mLastAnalogLevel, around[0], around[1], around[2], around[3]});
        mEnvelope[i] = std::max(mEnvelope[i], level);
        mLastAnalogLevel = around[kUpsampling - 1];
    }
}

void SimpleIRCLimiter::ApplyEnv(const float* const* inInput, float* const* outOutput, int inOffset,
                                unsigned inCount, SilenceFlags inSilentChannels)
{
    const float largest = *std::max_element(mEnvelope.begin(), mEnvelope.begin() + inCount);
    mReduction = std::max(mReduction, largest);
    if (largest > 0.0f) {
        kernels::MulConstant_InPlace(inCount, mEnvelope.data(),
                                     static_cast<float>(-dynamics::kNaturalFromDecibels));
        kernels::Exp(inCount, mEnvelope.data(), mEnvelope.data());
    }
    for (std::size_t i = 0; i < mRows.size(); ++i) {
        if (inSilentChannels.GetBitModulo(i)) {
            continue;
        }
        const float* const input = inInput[i] + inOffset;
        float* const output = outOutput[i] + inOffset;
        if (largest > 0.0f) {
            kernels::Mul(inCount, input, mEnvelope.data(), output);
        } else if (input != output) {
            kernels::Copy(inCount, input, output);
        }
    }
}

} // namespace tessaro
