#include <memory>
#include <optional>
#include <string>

#include <tessaro/dynamics/DynamicsBand.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

using tessaro::dynamics::DynamicsBand;

constexpr float kOutOfReachDb = 200.0f;

ParameterSpec StageParameter(const char* inName, const char* inDescription, double inThreshold,
                             double inRatio, double inAttack)
{
    return {inName,
            inDescription,
            {NumberField("threshold", "dB", -100.0, 20.0, inThreshold),
             NumberField("ratio", "", 1.0, 1000.0, inRatio),
             NumberField("attack", "ms", 0.0, 10000.0, inAttack),
             NumberField("release", "ms", 0.0, 10000.0, 100.0)},
            1,
            true};
}

/// A stage that is not given keeps its ratio of 1, at which it does nothing.
class BandEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mBand->GetSystemDelay(); }

    std::optional<float> TakeGainReduction() override { return mBand->GetGainReduction(); }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        mBand = std::make_unique<DynamicsBand>(static_cast<float>(inFormat.mSampleRate),
                                               kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(
                                                   static_cast<unsigned>(inFormat.mChannelCount)),
                                               inFormat.mMaxBlock);
        const auto number = [&](const char* inName, const char* inField = "") {
            return static_cast<float>(inValues.GetNumber(inName, inField));
        };
        if (inValues.IsGiven("compressor")) {
            mBand->SetCompThreshold(number("compressor", "threshold"));
            mBand->SetCompRatio(number("compressor", "ratio"));
            mBand->SetCompAttack(number("compressor", "attack"));
            mBand->SetCompRelease(number("compressor", "release"));
        }
        if (inValues.IsGiven("limiter")) {
            mBand->SetLimThreshold(number("limiter", "threshold"));
            mBand->SetLimRatio(number("limiter", "ratio"));
            mBand->SetLimAttack(number("limiter", "attack"));
            mBand->SetLimRelease(number("limiter", "release"));
        } else {
            mBand->SetLimThreshold(kOutOfReachDb); // from there on its times would count
        }
        if (inValues.IsGiven("gate")) {
            mBand->SetGateThreshold(number("gate", "threshold"));
            mBand->SetGateRatio(number("gate", "ratio"));
            mBand->SetGateAttack(number("gate", "attack"));
            mBand->SetGateRelease(number("gate", "release"));
        }
        mBand->SetOutputGain(number("gain"));
        mBand->SetAutoMakeupGain(inValues.GetSwitch("makeup"));
        mBand->SetRMSDetection(inValues.GetText("detection") == "rms");
        mBand->SetAutoSmoothing(inValues.GetSwitch("smoothing"));
        mBand->SetGainReductionEnabled(true);
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        mBand->Process(inCount, inInput, outOutput, {});
    }

    std::unique_ptr<DynamicsBand> mBand;
};

const EffectRegistrar kBand({
    .mName = "band",
    .mDescription = "Compressor, limiter and gate in one gain curve for all channels",
    .mParameters = {StageParameter("compressor", "Turns down what is above the threshold, by ratio", -20.0,
                                   3.0, 10.0),
                    StageParameter("limiter", "The same for what is louder still, by a ratio of its own",
                                   -6.0, 20.0, 5.0),
                    StageParameter("gate", "Turns down what is below the threshold, by ratio", -60.0, 2.0,
                                   10.0),
                    NumberParameter("gain", "Gain behind it", "dB", -100.0, 60.0, 0.0),
                    SwitchParameter("makeup", "Bring the level back to what it was, by the last 4 s", false),
                    ChoiceParameter("detection", "How levels are measured", {"rms", "peak"}),
                    SwitchParameter("smoothing", "Smooth the gain once more", true)},
    .mExample = "band:compressor=-24/3,limiter=-8/20/1/50,gate=-60/2,gain=4",
    .mCreate = [] { return std::make_unique<BandEffect>(); },
    .mNotes = {"The gain is 63 % of its way in half of attack or release.",
               "With makeup the output fades in over the first 4 s."},
    .mIsLinear = false,
});

} // namespace

} // namespace host
