#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <tessaro/dynamics/HardLimit.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

/// The numbers of the limiter's parameters
enum Index
{
    kCeiling,
    kInputGain,
    kLookAhead,
    kRelease,
    kLinkChannels,
    kTowardsCeiling,
    kTruePeak
};

class HardLimitEffect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mChannelCount = static_cast<std::size_t>(inFormat.mChannelCount);
        mZeros.assign(static_cast<std::size_t>(inFormat.mMaxBlock), 0.0f);
        mRows.resize(mChannelCount);
        const bool isTruePeak = mValues->GetSwitch("truepeak");
        mLimiter = std::make_unique<tessaro::HardLimit>(isTruePeak);
        mLimiter->SetChannels(mChannelCount);
        mLimiter->SetSampleRate(inFormat.mSampleRate);
        Set(kCeiling, mValues->GetNumber("ceiling"));
        Set(kInputGain, mValues->GetNumber("gain"));
        Set(kLookAhead, mValues->GetNumber("lookahead"));
        Set(kRelease, mValues->GetNumber("release"));
        Set(kLinkChannels, mValues->GetSwitch("link") ? 1.0 : 0.0);
        Set(kTruePeak, isTruePeak ? 1.0 : 0.0);
        Set(kTowardsCeiling, mValues->GetSwitch("towardsceiling") ? 1.0 : 0.0);
        Reset();
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        // The limiter's own mask skips channels, and would leave out what is still to come of them.
        for (std::size_t i = 0; i < mChannelCount; ++i) {
            mRows[i] = inSilent.GetBitModulo(i) ? mZeros.data() : inInput[i];
        }
        mLimiter->Process(mRows.data(), outOutput, static_cast<int>(inCount));
        mLeastGain = std::min(mLeastGain, mLimiter->GetLeastGain());
        return FindSilentRows(outOutput, mChannelCount, inCount);
    }

    void Reset() override
    {
        mLimiter->Resume();
        mLeastGain = 1.0f;
    }

    std::int64_t GetLatency() const override { return mLimiter->GetLatency(); }

    std::optional<float> TakeGainReduction() override { return std::exchange(mLeastGain, 1.0f); }

private:
    void Set(int inIndex, double inValue) { mLimiter->SetParameter(inIndex, static_cast<float>(inValue)); }

    std::optional<ParameterValues> mValues;
    std::unique_ptr<tessaro::HardLimit> mLimiter;
    std::size_t mChannelCount = 0;
    std::vector<float> mZeros;
    std::vector<const float*> mRows;
    float mLeastGain = 1.0f;
};

const EffectRegistrar kHardLimit({
    .mName = "hardlimit",
    .mDescription = "Peak limiter with look-ahead: nothing passes the ceiling, between samples too if wanted",
    .mParameters = {NumberParameter("ceiling", "What no sample passes", "dB", -100.0, 0.0, -0.1),
                    NumberParameter("gain", "Gain before the limiter", "dB", -100.0, 50.0, 0.0),
                    NumberParameter("lookahead", "Time in which the gain goes down towards a peak", "ms", 5.0,
                                    20.0, 7.0),
                    NumberParameter("release", "Time in which the gain comes back by 16.5 dB", "ms", 40.0,
                                    200.0, 100.0),
                    SwitchParameter("link", "The same gain for all channels", true),
                    SwitchParameter("towardsceiling", "Come back on a curve that flattens out at the ceiling",
                                    true),
                    SwitchParameter("truepeak", "Take peaks between samples into account", false)},
    .mExample = "hardlimit:ceiling=-1,gain=6,truepeak=on",
    .mCreate = [] { return std::make_unique<HardLimitEffect>(); },
    .mIsLinear = false,
});

} // namespace

} // namespace host
