#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include <tessaro/dynamics/HardLimit.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

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

class HardLimitEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mLimiter->GetLatency(); }

    std::optional<float> TakeGainReduction() override { return std::exchange(mLeastGain, 1.0f); }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        const bool isTruePeak = inValues.GetSwitch("truepeak");
        mLimiter = std::make_unique<tessaro::HardLimit>(isTruePeak);
        mLimiter->SetChannels(static_cast<std::size_t>(inFormat.mChannelCount));
        mLimiter->SetSampleRate(inFormat.mSampleRate);
        Set(kCeiling, inValues.GetNumber("ceiling"));
        Set(kInputGain, inValues.GetNumber("gain"));
        Set(kLookAhead, inValues.GetNumber("lookahead"));
        Set(kRelease, inValues.GetNumber("release"));
        Set(kLinkChannels, inValues.GetSwitch("link") ? 1.0 : 0.0);
        Set(kTruePeak, isTruePeak ? 1.0 : 0.0);
        Set(kTowardsCeiling, inValues.GetSwitch("towardsceiling") ? 1.0 : 0.0);
        mLimiter->Resume();
        mLeastGain = 1.0f;
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        mLimiter->Process(inInput, outOutput, static_cast<int>(inCount));
        mLeastGain = std::min(mLeastGain, mLimiter->GetLeastGain());
    }

    void Set(int inIndex, double inValue) { mLimiter->SetParameter(inIndex, static_cast<float>(inValue)); }

    std::unique_ptr<tessaro::HardLimit> mLimiter;
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
