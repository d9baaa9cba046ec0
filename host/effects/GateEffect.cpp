#include <memory>
#include <optional>

#include <tessaro/dynamics/AutoGateDSP.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

using tessaro::dynamics::AutoGateDSP;

class GateEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mGate->GetLatency(); }

    std::optional<float> TakeGainReduction() override { return mGate->GetGainReduction(); }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        mGate = std::make_unique<AutoGateDSP>(static_cast<float>(inFormat.mSampleRate),
                                              kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(
                                                  static_cast<unsigned>(inFormat.mChannelCount)),
                                              inFormat.mMaxBlock, inValues.GetText("mode") == "block");
        mGate->SetThreshold(static_cast<float>(inValues.GetNumber("threshold")));
        mGate->SetRatio(static_cast<float>(inValues.GetNumber("ratio")));
        mGate->SetAttack(static_cast<float>(inValues.GetNumber("attack")));
        mGate->SetHold(static_cast<float>(inValues.GetNumber("hold")));
        mGate->SetRelease(static_cast<float>(inValues.GetNumber("release")));
        mGate->SetRMSDetection(inValues.GetText("detection") == "rms");
        mGate->EnableGainReductionMeasurement(true);
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        mGate->Process(inCount, inInput, outOutput, {});
    }

    std::unique_ptr<AutoGateDSP> mGate;
};

const EffectRegistrar kGate({
    .mName = "gate",
    .mDescription = "Gate with hold and a look-ahead of 10 ms, one gain for all channels",
    .mParameters = {NumberParameter("threshold", "Level above which it opens", "dB", -150.0, 20.0, -40.0),
                    NumberParameter("ratio", "dB of output for a dB of level below the threshold", "", 1.0,
                                    1000.0, 100.0),
                    NumberParameter("attack", "Time of opening", "ms", 0.0, 10000.0, 1.0),
                    NumberParameter("hold", "Time that it stays open", "ms", 0.0, 10000.0, 50.0),
                    NumberParameter("release", "Time of closing", "ms", 0.0, 10000.0, 100.0),
                    ChoiceParameter("detection", "How levels are measured", {"rms", "peak"}),
                    ChoiceParameter("mode", "Follow the level sample by sample, or the peak of each block",
                                    {"sample", "block"})},
    .mExample = "gate:threshold=-45,ratio=10,hold=30,release=200",
    .mCreate = [] { return std::make_unique<GateEffect>(); },
    .mNotes = {"The gain is 63 % of its way in half of attack or release.",
               "In block mode there is no hold, and long attacks are quick ones."},
    .mIsLinear = false,
});

} // namespace

} // namespace host
