#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/dynamics/TubeLimiter.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

class TubeEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mLimiter->GetSystemDelay(); }

    std::optional<float> TakeGainReduction() override
    {
        return std::pow(10.0f, std::exchange(mLargestReduction, 0.0f) / -20.0f);
    }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        mChannelCount = static_cast<std::size_t>(inFormat.mChannelCount);
        mLimiter.reset(new tessaro::TubeLimiter(inFormat.mMaxBlock, static_cast<float>(inFormat.mSampleRate),
                                                inFormat.mChannelCount));
        mLimiter->SetThreshold(static_cast<float>(inValues.GetNumber("threshold")));
        mLimiter->SetMargin(static_cast<float>(inValues.GetNumber("margin")));
        mLimiter->SetCharacter(static_cast<float>(inValues.GetNumber("character")));
        mLimiter->SetPreventIntersampleClips(inValues.GetSwitch("truepeak"));
        mLargestReduction = 0.0f;
    }

    /// In place: that is how it limits.
    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
            std::copy_n(inInput[channel], inCount, outOutput[channel]);
        }
        mLimiter->Process(inCount, outOutput, outOutput, {});
        mLargestReduction = std::max(mLargestReduction, mLimiter->GetReduction());
    }

    boost::intrusive_ptr<tessaro::TubeLimiter> mLimiter;
    std::size_t mChannelCount = 0;
    float mLargestReduction = 0.0f; ///< dB
};

const EffectRegistrar kTube({
    .mName = "tube",
    .mDescription = "Look-ahead limiter with one character control, and a lift by margin minus threshold",
    .mParameters = {NumberParameter("threshold", "What no sample passes", "dB", -60.0, 0.0, 0.0),
                    NumberParameter("margin", "Where the threshold comes out", "dB", -60.0, 0.0, 0.0),
                    NumberParameter("character", "From clipping over fast and clean to slow release", "", 0.0,
                                    10.0, 4.0),
                    SwitchParameter("truepeak", "Take peaks between samples into account", false)},
    .mExample = "tube:threshold=-6,margin=-1,character=5",
    .mCreate = [] { return std::make_unique<TubeEffect>(); },
    .mIsLinear = false,
});

} // namespace

} // namespace host
