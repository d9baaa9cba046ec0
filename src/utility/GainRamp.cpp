#include <tessaro/utility/GainRamp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <brisken/Utility.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/utility/Gain.h>

#include "utility/Ramps.h"

namespace tessaro {

namespace kernels = brisken::utility;

namespace {

constexpr float kDefaultSampleRate = 48000.0f;
constexpr float kSnapDistance = 1e-6f;

float SnapGain(float inGain)
{
    if (!(inGain >= kSnapDistance)) {
        return 0.0f;
    }
    return std::fabs(inGain - 1.0f) < kSnapDistance ? 1.0f : inGain;
}

float StepFor(float inSampleRate, float inRampingSpeed)
{
    const float samplesPerUnit = inSampleRate * inRampingSpeed;
    return samplesPerUnit > 0.0f ? 1.0f / samplesPerUnit : std::numeric_limits<float>::infinity();
}

unsigned CountOf(int inNumSamples)
{
    return static_cast<unsigned>(std::max(inNumSamples, 0));
}

} // namespace

GainRamp::GainRamp() : GainRamp(kDefaultSampleRate) {}

GainRamp::GainRamp(float inSampleRate, float inInitialGain, float inRampingSpeed)
    : mCurrentGain(SnapGain(inInitialGain)),
      mTargetGain(mCurrentGain),
      mStep(StepFor(inSampleRate, inRampingSpeed))
{
    EndRampOnTarget();
}

GainRamp::GainRamp(const kestrin::FrameRate& inRate, float inInitialGain, float inRampingSpeed)
    : GainRamp(static_cast<float>(inRate.GetFramesPerSecond()), inInitialGain, inRampingSpeed)
{
}

void GainRamp::SetTargetGain(float inGain)
{
    const float target = SnapGain(inGain);
    if (target == mTargetGain) {
        return;
    }
    mTargetGain = target;
    mStep = std::copysign(mStep, mCurrentGain > target ? -1.0f : 1.0f);
    mState = State::kRamping;
}

void GainRamp::AdvanceWithoutProcessing(std::size_t inSamples)
{
    if (mState != State::kRamping) {
        return;
    }
    // An infinite step over no samples would be a NaN.
    const float way = inSamples == 0 ? 0.0f : static_cast<float>(inSamples) * mStep;
    const float moved = mCurrentGain + way;
    mCurrentGain = mStep < 0.0f ? std::max(moved, mTargetGain) : std::min(moved, mTargetGain);
    EndRampOnTarget();
}

bool GainRamp::HasConstantGainZero() const
{
    return mState == State::kConstant && mCurrentGain == 0.0f;
}

void GainRamp::CreateRamp(float* outRamp, std::size_t inCount)
{
    mCurrentGain = ramps::GenerateTowardsTarget(mCurrentGain, mStep, mTargetGain, outRamp, inCount);
    EndRampOnTarget();
}

void GainRamp::EndRampOnTarget()
{
    if (mCurrentGain == mTargetGain) {
        mState = mCurrentGain == 1.0f ? State::kUnity : State::kConstant;
    }
}

template <std::size_t N>
GainRamp::ProcessResult GainRamp::ProcessRange(float* const* ioChannels, std::size_t inNumChannels,
                                               std::size_t inOffset, std::size_t inCount,
                                               std::uint64_t inSilentChannels)
{
    const ombrel::utility::Flags<std::uint64_t> silent(inSilentChannels);
    if (mState != State::kRamping) {
        for (std::size_t channel = 0; channel < inNumChannels; ++channel) {
            if (!silent.GetBit(channel)) {
                ApplyGain(ioChannels + channel, 1, static_cast<std::int64_t>(inOffset),
                          static_cast<std::int64_t>(inCount), mCurrentGain);
            }
        }
        return HasConstantGainZero() ? kSilent : kNonSilent;
    }
    float ramp[N];
    for (std::size_t done = 0; done < inCount;) {
        const auto chunk = static_cast<unsigned>(std::min(N, inCount - done));
        CreateRamp(ramp, chunk);
        for (std::size_t channel = 0; channel < inNumChannels; ++channel) {
            if (!silent.GetBit(channel)) {
                kernels::Mul_InPlace(chunk, ramp, ioChannels[channel] + inOffset + done);
            }
        }
        done += chunk;
    }
    return kNonSilent;
}

template <std::size_t N>
GainRamp::ProcessResult GainRamp::Process(float* const* ioChannels, std::size_t inNumChannels,
                                          int inNumSamples)
{
    return ProcessRange<N>(ioChannels, inNumChannels, 0, CountOf(inNumSamples));
}

template TESSARO_EXPORT GainRamp::ProcessResult
GainRamp::Process<GainRamp::kDefaultRampBufferSize>(float* const*, std::size_t, int);
template TESSARO_EXPORT GainRamp::ProcessResult
GainRamp::Process<GainRamp::kUnitTestRampBufferSize>(float* const*, std::size_t, int);

GainRamp::ProcessResult GainRamp::Process(const float* const* inSource, float* const* outDest,
                                          std::size_t inNumChannels, int inNumSamples)
{
    return ProcessRows(inSource, outDest, inNumChannels, CountOf(inNumSamples));
}

GainRamp::ProcessResult GainRamp::ProcessRows(const float* const* inSource, float* const* outDest,
                                              std::size_t inNumChannels, unsigned inCount)
{
    if (HasConstantGainZero()) {
        ApplyGain(outDest, inNumChannels, 0, inCount, 0.0f);
        return kSilent;
    }
    if (mState != State::kRamping) {
        ApplyGainWithRamping(inSource, outDest, inNumChannels, inCount, mCurrentGain, mCurrentGain);
        return kNonSilent;
    }
    if (inNumChannels == 0 || inSource[0] == outDest[0]) {
        ApplyGainWithRamping(inSource, outDest, inNumChannels, inCount, 1.0f, 1.0f);
        return ProcessRange<kDefaultRampBufferSize>(outDest, inNumChannels, 0, inCount);
    }
    // The first destination row carries the ramp until all other channels have had it.
    CreateRamp(outDest[0], inCount);
    for (std::size_t channel = 1; channel < inNumChannels; ++channel) {
        kernels::Mul(inCount, outDest[0], inSource[channel], outDest[channel]);
    }
    kernels::Mul_InPlace(inCount, inSource[0], outDest[0]);
    return kNonSilent;
}

void GainRamp::Process(AudioBuffer& ioBuffer)
{
    ProcessRange(ioBuffer, 0, ioBuffer.GetBufferSize());
}

/// Treats the range as a view of it would be treated: a part that turns silent says nothing of the whole.
void GainRamp::ProcessRange(AudioBuffer& ioBuffer, unsigned inOffset, unsigned inCount)
{
    if (ioBuffer.IsZero()) {
        AdvanceWithoutProcessing(inCount);
        return;
    }
    // Asked channel by channel: the word of a channel view is its parent's, and bit 0 another channel there.
    AudioBuffer::SilenceMask silent;
    for (std::size_t channel = 0; channel < std::min(ioBuffer.GetChannelCount(), silent.kBitCount);
         ++channel) {
        silent.SetBit(channel, ioBuffer.IsChannelZero(channel));
    }
    const auto result = ProcessRange<kDefaultRampBufferSize>(
        ioBuffer.GetFloatBuffers(), ioBuffer.GetChannelCount(), inOffset, inCount, silent.GetValue());
    if (result == kSilent && inCount == ioBuffer.GetBufferSize()) {
        ioBuffer.MarkChannelsZero(AudioBuffer::SilenceMask::All());
    }
}

void GainRamp::Process(AudioBuffer& ioBuffer, std::size_t inChannel)
{
    float* row = ioBuffer[inChannel];
    if (row == nullptr || ioBuffer.IsChannelZero(inChannel)) {
        AdvanceWithoutProcessing(ioBuffer.GetBufferSize());
        return;
    }
    const auto result = ProcessRange<kDefaultRampBufferSize>(&row, 1, 0, ioBuffer.GetBufferSize());
    ioBuffer.SetChannelZero(inChannel, result == kSilent);
}

void GainRamp::Process(const AudioBuffer& inSource, std::size_t inSourceChannel, AudioBuffer& ioDest,
                       std::size_t inDestChannel)
{
    const float* source = inSource[inSourceChannel];
    float* dest = ioDest[inDestChannel];
    const auto count = dest == nullptr ? inSource.GetBufferSize()
                                       : std::min(inSource.GetBufferSize(), ioDest.GetBufferSize());
    if (source == nullptr || dest == nullptr || inSource.IsChannelZero(inSourceChannel)) {
        AdvanceWithoutProcessing(count);
        if (dest != nullptr) {
            ioDest.MarkChannelZero(inDestChannel);
        }
        return;
    }
    if (ioDest.IsChannelZero(inDestChannel)) {
        // The flag is about to go: what lies behind the source's samples must still read as silence.
        kernels::Zero(ioDest.GetBufferSize() - count, dest + count);
    }
    const auto result = ProcessRows(&source, &dest, 1, count);
    ioDest.SetChannelZero(inDestChannel, result == kSilent);
}

} // namespace tessaro
