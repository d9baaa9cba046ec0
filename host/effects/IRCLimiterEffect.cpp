#include <algorithm>
#include <optional>
#include <utility>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/dynamics/IRCLimiter.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

class IRCLimiterEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mLimiter->GetLatency(); }

    std::optional<float> TakeGainReduction() override
    {
        return tessaro::AudioProcessor::DB2Amp(-std::exchange(mReduction, 0.0f));
    }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        mChannelCount = inFormat.mChannelCount;
        mLimiter = new tessaro::IRCLimiter;
        mLimiter->SetThreshold(static_cast<float>(inValues.GetNumber("threshold")));
        mLimiter->SetBehavior(static_cast<float>(inValues.GetNumber("behavior")));
        mLimiter->SetStereoLinking(static_cast<float>(inValues.GetNumber("link")));
        mLimiter->EnableAnalogDetection(inValues.GetSwitch("truepeak"));
        mLimiter->EnableDoubleEnvelope(inValues.GetSwitch("transients"));
        mLimiter->SetMode(inFormat.mChannelCount, inFormat.mSampleRate, inFormat.mMaxBlock);
        mReduction = 0.0f;
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        mLimiter->Process(inInput, static_cast<int>(inCount), outOutput, SilentChannels());
        for (int channel = 0; channel < mChannelCount; ++channel) {
            mReduction = std::max(mReduction, mLimiter->GetMeter(channel));
        }
    }

    boost::intrusive_ptr<tessaro::IRCLimiter> mLimiter;
    int mChannelCount = 0;
    float mReduction = 0.0f; ///< dB
};

const EffectRegistrar kIRCLimiter({
    .mName = "irclimiter",
    .mDescription = "Limiter with look-ahead whose release follows the program; what is left is clipped",
    .mParameters = {NumberParameter("threshold", "What no sample passes", "dB", -60.0, 0.0, -1.0),
                    NumberParameter("behavior", "From clipping over fast to slow and smooth", "", 0.0, 2.0,
                                    0.5),
                    NumberParameter("link", "How far a channel follows the levels of the others", "%", 0.0,
                                    100.0, 100.0),
                    SwitchParameter("truepeak", "Take peaks between samples into account", false),
                    SwitchParameter("transients", "Reduce transients faster than the rest", true)},
    .mExample = "irclimiter:threshold=-12,behavior=0.8,link=50,truepeak=on",
    .mCreate = [] { return std::make_unique<IRCLimiterEffect>(); },
    .mIsLinear = false,
});

} // namespace

} // namespace host
