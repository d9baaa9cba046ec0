#include <algorithm>
#include <optional>
#include <vector>

#include <tessaro/filters/DeskFilter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

using Kind = tessaro::fDeskFilter::eFilterKindType;

constexpr double kLowestFrequency = 10.0;
constexpr double kMostGainDb = 48.0;
constexpr double kSmallestQ = 0.1;
constexpr double kLargestQ = 100.0;

/// In the order of the kinds' numbers.
const std::vector<std::string> kTypes = {"notch", "highshelf", "lowshelf", "peak"};
constexpr std::size_t kPeak = 3;

class SectionEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mSampleRate = static_cast<float>(inFormat.mSampleRate);
        tessaro::fDeskFilter section;
        section.ShiftGears(static_cast<Kind>(mValues->GetInteger("type")), mValues->GetSwitch("double"),
                           mValues->GetInteger("order") == 1);
        section.setStateVariable(mValues->GetSwitch("statevariable"));
        mSections.assign(static_cast<std::size_t>(inFormat.mChannelCount), section);
        ChannelwiseEffect::Configure(inFormat);
        Reset();
    }

    /// A hard start, on the target at once.
    void Reset() override
    {
        for (auto& section : mSections) {
            section.Setup(mSampleRate, static_cast<float>(mValues->GetNumber("frequency")),
                          static_cast<float>(mValues->GetNumber("gain")),
                          static_cast<float>(mValues->GetNumber("q")), 0.0f, 0.0f);
            section.TerminateRamp();
        }
    }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        const float magnitude = mSections.front().computeResponse(static_cast<float>(inFrequency), 1.0f);
        return EffectResponse{magnitude, {}};
    }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        std::copy_n(inInput, inCount, outOutput);
        mSections[inChannel].processInplace(outOutput, static_cast<int>(inCount));
    }

    std::optional<ParameterValues> mValues;
    float mSampleRate = 0.0f;
    std::vector<tessaro::fDeskFilter> mSections;
};

const EffectRegistrar kSection({
    .mName = "section",
    .mDescription = "One equalizer section, as the parametric equalizer has them",
    .mParameters = {ChoiceParameter("type", "What the section does", kTypes, kPeak),
                    NumberParameter("frequency", "Centre or corner", "Hz", kLowestFrequency, kHalfTheRate,
                                    1000.0),
                    NumberParameter("gain", "Gain at the centre, or of the shelf; 0 switches off", "dB",
                                    -kMostGainDb, kMostGainDb, 0.0),
                    NumberParameter("q", "Quality of peak and notch", "", kSmallestQ, kLargestQ, 1.0),
                    {"order", "Order of a shelf", {IntegerField("", "", 1, 2, 2)}},
                    SwitchParameter("double", "Run in double precision", true),
                    SwitchParameter("statevariable", "Run in state variable form", false)},
    .mExample = "section:type=lowshelf,frequency=200,gain=4",
    .mCreate = [] { return std::make_unique<SectionEffect>(); },
});

} // namespace

} // namespace host
