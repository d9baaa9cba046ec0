#include <tessaro/eq/Parametric.h>

#include <algorithm>
#include <cmath>

#include <brisken/Utility.h>

#include "eq/ParametricParameters.h"

namespace parametric {

namespace {

/// dB; a gain this close to 0 switches its section off.
constexpr float kNoGain = 0.0001f;
constexpr float kMostResponse = 256.0f;
/// Shelves have no Q, and no section reads the spares.
constexpr float kShelfQ = 1.0f;
constexpr float kSpare = 0.1f;

int RoundOrder(float inOrder)
{
    return static_cast<int>(inOrder + 0.5f);
}

bool IsNoGain(float inGain)
{
    return std::abs(inGain) < kNoGain;
}

template <typename Section>
void SetEnabled(Section& ioSection, bool inEnabled)
{
    if (inEnabled) {
        ioSection.enable();
    } else {
        ioSection.disable();
    }
}

} // namespace

Parametric::Parametric() : mChannels(1)
{
    SetDefaultParameters();
    Initialize();
}

Parametric::Parametric(const Parametric&) = default;
Parametric& Parametric::operator=(const Parametric&) = default;
Parametric::Parametric(Parametric&&) noexcept = default;
Parametric& Parametric::operator=(Parametric&&) noexcept = default;
Parametric::~Parametric() = default;

void Parametric::Initialize()
{
    mNeedsInitialize = true;
    mParametersChanged = true;
    for (auto& channel : mChannels) {
        for (auto* shelf : {&channel.mLowShelf, &channel.mHighShelf}) {
            shelf->enable();
            shelf->ClearState();
        }
        for (auto& band : channel.mBands) {
            band.ClearState();
        }
        channel.mHighpass.Reset();
        channel.mLowpass.Reset();
    }
    SetAllParameterChangedFlags();
    mNeedsInitialize = false;
}

void Parametric::Deinitialize()
{
    mNeedsInitialize = true;
    mParametersChanged = true;
}

void Parametric::Suspend()
{
    mRunning = false;
}

void Parametric::Resume()
{
    Initialize();
    SetRuntimeParams();
    mRunning = true;
    for (auto& channel : mChannels) {
        channel.mLowShelf.TerminateRamp();
        channel.mHighShelf.TerminateRamp();
        for (auto& band : channel.mBands) {
            band.TerminateRamp();
        }
    }
}

void Parametric::SetChannels(int inChannels)
{
    const auto count = static_cast<std::size_t>(std::max(inChannels, 0));
    if (count != mChannels.size()) {
        mChannels.resize(count);
        Deinitialize();
    }
}

void Parametric::SetSampleRate(int inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        Deinitialize();
        mSampleRate = inSampleRate;
        SampleRateDependentInitialization();
    }
}

void Parametric::SetupFilters()
{
    if (!mRunning) {
        Initialize();
        SetRuntimeParams();
    }
}

void Parametric::CatchUp()
{
    if (mNeedsInitialize) {
        Initialize();
    }
    if (mParametersChanged) {
        SetRuntimeParams();
    }
}

void Parametric::SetRuntimeParams()
{
    mParametersChanged = false;
    const Flags changed = mChanged;
    ClearAllParameterChangedFlags();
    for (auto& channel : mChannels) {
        ApplyToShelves(channel, changed);
        ApplyToCascades(channel, changed);
        for (std::size_t band = 0; band < kNumBands; ++band) {
            ApplyToBand(band, channel.mBands[band], changed);
        }
    }
    mMasterGain = std::pow(10.0f, mValues[index::kMasterGain] / 20.0f);
}

void Parametric::ApplyToShelves(Channel& ioChannel, const Flags& inChanged) const
{
    using tessaro::fDeskFilter;
    auto& low = ioChannel.mLowShelf;
    auto& high = ioChannel.mHighShelf;
    // A shelf of another order starts anew from its stored gain, switched on by that alone.
    if (inChanged[index::kLowShelfSecondOrder]) {
        low.ShiftGears(fDeskFilter::kLowShelf, true, !IsOn(index::kLowShelfSecondOrder));
    }
    if (inChanged[index::kHighShelfSecondOrder]) {
        high.ShiftGears(fDeskFilter::kHighShelf, true, !IsOn(index::kHighShelfSecondOrder));
    }
    if (inChanged[index::kStateVariable]) {
        low.setStateVariable(IsOn(index::kStateVariable));
        high.setStateVariable(IsOn(index::kStateVariable));
    }
    const auto apply = [&](fDeskFilter& ioShelf, std::size_t inFrequency, std::size_t inGain,
                           std::size_t inOn) {
        if (inChanged[inFrequency] || inChanged[inGain] || inChanged[inOn]) {
            const float gain = mValues[inGain];
            ioShelf.SetupCoefficients(static_cast<float>(mSampleRate), mValues[inFrequency], gain, kShelfQ,
                                      kSpare, kSpare);
            SetEnabled(ioShelf, !IsNoGain(gain) && mValues[inOn] != 0.0f);
        }
    };
    apply(low, index::kLowShelfFrequency, index::kLowShelfGain, index::kLowShelfOn);
    apply(high, index::kHighShelfFrequency, index::kHighShelfGain, index::kHighShelfOn);
}

void Parametric::ApplyToCascades(Channel& ioChannel, const Flags& inChanged) const
{
    using tessaro::ButterworthCascade;
    const auto apply = [&](ButterworthCascade& ioCascade, int inType, std::size_t inCutoff,
                           std::size_t inOrder) {
        if (inChanged[inCutoff] || inChanged[inOrder]) {
            ioCascade.Configure(RoundOrder(mValues[inOrder]), inType);
            ioCascade.Retune(static_cast<double>(mValues[inCutoff]) / mSampleRate);
        }
    };
    apply(ioChannel.mLowpass, ButterworthCascade::kLowpass, index::kLowpassCutoff, index::kLowpassOrder);
    apply(ioChannel.mHighpass, ButterworthCascade::kHighpass, index::kHighpassCutoff, index::kHighpassOrder);
}

void Parametric::ApplyToBand(std::size_t inBand, tessaro::dPARA& ioBand, const Flags& inChanged) const
{
    const auto frequency = index::BandFrequency(inBand), q = index::BandQ(inBand);
    const auto gain = index::BandGain(inBand), on = index::BandOn(inBand);
    const bool isOn = mValues[on] != 0.0f;
    const auto setup = [&] {
        ioBand.SetupCoefficients(static_cast<float>(mSampleRate), mValues[frequency], mValues[gain],
                                 mValues[q], kSpare, kSpare);
    };
    if (inChanged[on]) {
        if (isOn) {
            setup();
            ioBand.setStateVariable(IsOn(index::kStateVariable));
        }
        SetEnabled(ioBand, isOn && !IsNoGain(mValues[gain]));
        return;
    }
    if (inChanged[frequency] || inChanged[q] || inChanged[gain] || inChanged[index::Bandwidth(inBand)]) {
        setup();
    }
    if (inChanged[index::kStateVariable]) {
        ioBand.setStateVariable(IsOn(index::kStateVariable));
    }
    if (inChanged[gain]) {
        if (IsNoGain(mValues[gain])) {
            ioBand.disable();
        } else if (isOn) {
            ioBand.enable();
        }
    }
}

void Parametric::Process(const float* inInput, float* outOutput, int inCount)
{
    CatchUp();
    if (inCount <= 0) {
        return;
    }
    const auto count = static_cast<unsigned>(inCount);
    std::copy_n(inInput, count, outOutput);
    if (IsOn(index::kBypass) || mChannels.empty()) {
        return;
    }
    auto& channel = mChannels.front();
    if (mValues[index::kHighpassOn] != 0.0f) {
        channel.mHighpass.Process(outOutput, inCount);
    }
    if (mValues[index::kLowpassOn] != 0.0f) {
        channel.mLowpass.Process(outOutput, inCount);
    }
    channel.mLowShelf.processInplace(outOutput, inCount);
    channel.mHighShelf.processInplace(outOutput, inCount);
    for (auto& band : channel.mBands) {
        band.processInplace(outOutput, inCount);
    }
    brisken::utility::MulConstant_InPlace(count, outOutput, mMasterGain);
}

void Parametric::ProcessOneSample(const float* inInput, float* outOutput)
{
    CatchUp();
    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        auto& channel = mChannels[i];
        float sample = channel.mLowShelf.processOneSample(inInput[i]);
        sample = channel.mHighShelf.processOneSample(sample);
        for (auto& band : channel.mBands) {
            sample = band.processOneSample(sample);
        }
        outOutput[i] = sample * mMasterGain;
    }
}

float Parametric::ComputeFilterResponse(float inFrequency)
{
    CatchUp();
    float response = 1.0f;
    if (mValues[index::kHighpassOn] != 0.0f) {
        response = ComputeButterResponse(true, mValues[index::kHighpassCutoff], inFrequency,
                                         RoundOrder(mValues[index::kHighpassOrder]), response);
    }
    if (mValues[index::kLowpassOn] != 0.0f) {
        response = ComputeButterResponse(false, mValues[index::kLowpassCutoff], inFrequency,
                                         RoundOrder(mValues[index::kLowpassOrder]), response);
    }
    if (!mChannels.empty()) {
        const auto& channel = mChannels.front();
        response = channel.mLowShelf.computeResponse(inFrequency, response);
        response = channel.mHighShelf.computeResponse(inFrequency, response);
        for (const auto& band : channel.mBands) {
            response = band.computeResponse(inFrequency, response);
        }
    }
    return std::clamp(response, -kMostResponse, kMostResponse);
}

float Parametric::ComputeButterResponse(bool inFlag, float inA, float inB, int inOrder, float inValue)
{
    const double a = inA, b = inB;
    return static_cast<float>(inValue / std::sqrt(1.0 + std::pow(inFlag ? a / b : b / a, 2 * inOrder)));
}

} // namespace parametric
