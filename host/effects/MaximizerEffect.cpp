#include <algorithm>
#include <optional>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/dynamics/MaximizerDSP.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

using tessaro::MaximizerDSP;

class MaximizerEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mMaximizer->GetSystemDelay(); }

    /// Nothing in the soft mode, which does not measure
    std::optional<float> TakeGainReduction() override
    {
        float gain = 1.0f;
        mMaximizer->GetGainReduction(gain);
        return mMaximizer->GetMode() == MaximizerDSP::kSoft ? std::nullopt : std::optional(gain);
    }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        const auto number = [&](const char* inName) {
            return static_cast<float>(inValues.GetNumber(inName));
        };
        mChannelCount = static_cast<std::size_t>(inFormat.mChannelCount);
        mMaximizer.reset(new MaximizerDSP(inFormat.mMaxBlock, static_cast<float>(inFormat.mSampleRate),
                                          inFormat.mChannelCount, false));
        mMaximizer->SetMode(static_cast<MaximizerDSP::Mode>(inValues.GetNumber("mode")));
        mMaximizer->SetThreshold(number("threshold"));
        mMaximizer->SetMargin(number("margin"));
        mMaximizer->SetAttack(number("attack"));
        mMaximizer->SetRelease(number("release"));
        mMaximizer->SetPreventIntersampleClips(inValues.GetSwitch("truepeak"));
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
            std::copy_n(inInput[channel], inCount, outOutput[channel]);
        }
        mMaximizer->Process(inCount, outOutput, {});
    }

    boost::intrusive_ptr<MaximizerDSP> mMaximizer;
    std::size_t mChannelCount = 0;
};

const EffectRegistrar kMaximizer({
    .mName = "maximizer",
    .mDescription = "Limits peaks above a threshold and lifts everything, so that the threshold comes out at "
                    "the margin",
    .mParameters = {ChoiceParameter("mode", "Soft curve, brick wall, or release that follows the program",
                                    {"soft", "brickwall", "digital", "program"}),
                    NumberParameter("threshold", "Level above which it limits", "dB", -60.0, 0.0, 0.0),
                    NumberParameter("margin", "Where the threshold comes out", "dB", -60.0, 0.0, 0.0),
                    NumberParameter("attack", "Time in which the soft gain falls", "ms", 0.0, 1000.0, 4.0),
                    NumberParameter("release", "Time in which soft and brick-wall gains come back", "ms", 0.0,
                                    10000.0, 500.0),
                    SwitchParameter("truepeak", "Digital and program find peaks between samples too", false)},
    .mExample = "maximizer:mode=program,threshold=-8,margin=-1,truepeak=on",
    .mCreate = [] { return std::make_unique<MaximizerEffect>(); },
    .mNotes = {"The gain is 63 % of its way in half of attack or release."},
    .mIsLinear = false,
});

} // namespace

} // namespace host
