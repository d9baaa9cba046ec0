#include <memory>
#include <optional>

#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include "chain/EffectRegistry.h"
#include "effects/LinkedEffect.h"

namespace host {

namespace {

using tessaro::dynamics::SingleBandCompressorDSP;

class CompressorEffect : public LinkedEffect
{
public:
    std::int64_t GetLatency() const override { return mCompressor->GetLatency(); }

    std::optional<float> TakeGainReduction() override { return mCompressor->GetGainReduction(); }

private:
    void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) override
    {
        mCompressor = std::make_unique<SingleBandCompressorDSP>(
            static_cast<float>(inFormat.mSampleRate),
            kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(
                static_cast<unsigned>(inFormat.mChannelCount)));
        mCompressor->SetThreshold(static_cast<float>(inValues.GetNumber("threshold")));
        mCompressor->SetRatio(static_cast<float>(inValues.GetNumber("ratio")));
        mCompressor->SetAttack(static_cast<float>(inValues.GetNumber("attack")));
        mCompressor->SetRelease(static_cast<float>(inValues.GetNumber("release")));
        mCompressor->SetOutputGain(static_cast<float>(inValues.GetNumber("gain")));
        mCompressor->SetAutoMakeupGain(inValues.GetSwitch("makeup"));
    }

    void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) override
    {
        mCompressor->Process(inInput, outOutput, inCount, {});
    }

    std::unique_ptr<SingleBandCompressorDSP> mCompressor;
};

const EffectRegistrar kCompressor({
    .mName = "compressor",
    .mDescription = "Peak compressor with one gain for all channels",
    .mParameters = {NumberParameter("threshold", "Level from which it turns down", "dB", -100.0, 20.0, -20.0),
                    NumberParameter("ratio", "dB of level for a dB of output", "", 1.0, 1000.0, 3.0),
                    NumberParameter("attack", "Time of turning down", "ms", 0.0, 10000.0, 10.0),
                    NumberParameter("release", "Time of coming back", "ms", 0.0, 10000.0, 100.0),
                    NumberParameter("gain", "Gain behind it", "dB", -100.0, 60.0, 0.0),
                    SwitchParameter("makeup", "Add the mean reduction of the last 2 s", false)},
    .mExample = "compressor:threshold=-24,ratio=4,attack=5,release=80,makeup=on",
    .mCreate = [] { return std::make_unique<CompressorEffect>(); },
    .mNotes = {"The gain is 63 % of its way in half of attack or release."},
    .mIsLinear = false,
});

} // namespace

} // namespace host
