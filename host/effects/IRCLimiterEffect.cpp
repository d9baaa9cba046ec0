#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/dynamics/IRCLimiter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

class IRCLimiterEffect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override
    {
        mLimiter = new tessaro::IRCLimiter;
        mLimiter->SetThreshold(static_cast<float>(inValues.GetNumber("threshold")));
        mLimiter->SetBehavior(static_cast<float>(inValues.GetNumber("behavior")));
        mLimiter->SetStereoLinking(static_cast<float>(inValues.GetNumber("link")));
        mLimiter->EnableAnalogDetection(inValues.GetSwitch("truepeak"));
        mLimiter->EnableDoubleEnvelope(inValues.GetSwitch("transients"));
    }

    void Configure(const StreamFormat& inFormat) override
    {
        mLimiter->SetMode(inFormat.mChannelCount, inFormat.mSampleRate, inFormat.mMaxBlock);
        mZeros.assign(static_cast<std::size_t>(inFormat.mMaxBlock), 0.0f);
        mRows.resize(static_cast<std::size_t>(inFormat.mChannelCount));
        mReduction = 0.0f;
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        // The limiter's own flags skip channels, and would leave out what is still to come of them.
        for (std::size_t i = 0; i < mRows.size(); ++i) {
            mRows[i] = inSilent.GetBitModulo(i) ? mZeros.data() : inInput[i];
        }
        mLimiter->Process(mRows.data(), static_cast<int>(inCount), outOutput, SilentChannels());
        for (std::size_t i = 0; i < mRows.size(); ++i) {
            mReduction = std::max(mReduction, mLimiter->GetMeter(static_cast<int>(i)));
        }
        return FindSilentRows(outOutput, mRows.size(), inCount);
    }

    void Reset() override
    {
        mLimiter->Reset();
        mReduction = 0.0f;
    }

    std::int64_t GetLatency() const override { return mLimiter->GetLatency(); }

    std::optional<float> TakeGainReduction() override
    {
        return tessaro::AudioProcessor::DB2Amp(-std::exchange(mReduction, 0.0f));
    }

private:
    boost::intrusive_ptr<tessaro::IRCLimiter> mLimiter;
    std::vector<float> mZeros;
    std::vector<const float*> mRows;
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
