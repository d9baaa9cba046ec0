#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

/// Holds the signal back by the limiter's look-ahead, so that the limiter can read ahead.
class SimpleIRCLimiterEffect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mLimiter.reset(new tessaro::SimpleIRCLimiter);
        mLimiter->SetThreshold(static_cast<float>(mValues->GetNumber("threshold")));
        mLimiter->SetBehavior(static_cast<float>(mValues->GetNumber("behavior")));
        mLimiter->EnableAnalogDetection(mValues->GetSwitch("analog"));
        mLimiter->SetMode(inFormat.mChannelCount, inFormat.mSampleRate, inFormat.mMaxBlock);
        mLookAhead = static_cast<std::size_t>(mLimiter->GetLookAhead());
        mRows.assign(static_cast<std::size_t>(inFormat.mChannelCount),
                     std::vector<float>(mLookAhead + static_cast<std::size_t>(inFormat.mMaxBlock)));
        mPointers.clear();
        for (const auto& row : mRows) {
            mPointers.push_back(row.data());
        }
        Reset();
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        for (std::size_t i = 0; i < mRows.size(); ++i) {
            float* const end = mRows[i].data() + mLookAhead;
            if (inSilent.GetBitModulo(i)) {
                std::fill_n(end, inCount, 0.0f);
            } else {
                std::copy_n(inInput[i], inCount, end);
            }
        }
        mLimiter->Process(mPointers.data(), static_cast<int>(inCount), outOutput, {});
        mLargestReduction = std::max(mLargestReduction, mLimiter->GetReduction());
        for (auto& row : mRows) {
            std::copy_n(row.data() + inCount, mLookAhead, row.data());
        }
        return FindSilentRows(outOutput, mRows.size(), inCount);
    }

    void Reset() override
    {
        mLimiter->Reset();
        for (auto& row : mRows) {
            std::fill(row.begin(), row.end(), 0.0f);
        }
        mLargestReduction = 0.0f;
    }

    std::int64_t GetLatency() const override { return mLimiter->GetLookAhead(); }

    std::optional<float> TakeGainReduction() override
    {
        const float gain = std::pow(10.0f, mLargestReduction / -20.0f);
        mLargestReduction = 0.0f;
        return gain;
    }

private:
    std::optional<ParameterValues> mValues;
    boost::intrusive_ptr<tessaro::SimpleIRCLimiter> mLimiter;
    std::size_t mLookAhead = 0;
    std::vector<std::vector<float>> mRows; ///< look-ahead, then block
    std::vector<const float*> mPointers;
    float mLargestReduction = 0.0f; ///< dB
};

const EffectRegistrar kSimpleLimiter({
    .mName = "simplelimiter",
    .mDescription = "Look-ahead limiter whose release follows the program, one gain for all channels",
    .mParameters = {NumberParameter("threshold", "What no sample passes", "dB", -60.0, 0.0, -3.0),
                    NumberParameter("behavior", "From clipping over fast and clean to slow release", "", 0.0,
                                    1.5, 0.5),
                    SwitchParameter("analog", "Take peaks between samples into account", false)},
    .mExample = "simplelimiter:threshold=-6,behavior=0.6",
    .mCreate = [] { return std::make_unique<SimpleIRCLimiterEffect>(); },
    .mIsLinear = false,
});

} // namespace

} // namespace host
