#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tessaro/eq/Parametric.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr int kBandCount = 5;
constexpr double kBandFrequencies[kBandCount] = {50.0, 200.0, 800.0, 3200.0, 12800.0};
constexpr double kLowestFrequency = 20.0;
constexpr double kMostGainDb = 48.0;
constexpr double kLowestMasterDb = -96.0;
constexpr double kSmallestQ = 0.0001;
constexpr double kLargestQ = 10000.0;

/// The numbers of the strip's parameters.
enum Index
{
    kLowShelf = 0, // frequency, gain
    kHighShelf = 2,
    kFirstBand = 4, // frequency, Q, gain, switch, for each of the five
    kMasterGain = 24,
    kLowShelfIsSteep = 26,
    kHighShelfIsSteep = 27,
    kStateVariableForm = 28,
    kHighpass = 37, // switch, cutoff, order
    kLowpass = 40,
    kBypass = 43
};

FieldSpec Frequency(double inDefault)
{
    return NumberField("frequency", "Hz", kLowestFrequency, kHalfTheRate, inDefault);
}

FieldSpec Gain()
{
    return NumberField("gain", "dB", -kMostGainDb, kMostGainDb, 0.0);
}

std::vector<ParameterSpec> MakeParameters()
{
    std::vector<ParameterSpec> specs{
        {"highpass", "Butterworth high-pass", {Frequency(20.0), IntegerField("order", "", 1, 8, 4)}, 1, true},
        {"lowpass",
         "Butterworth low-pass",
         {Frequency(20000.0), IntegerField("order", "", 1, 8, 4)},
         1,
         true},
        {"lowshelf", "Low shelf", {Frequency(40.0), Gain(), IntegerField("order", "", 1, 2, 1)}},
        {"highshelf", "High shelf", {Frequency(18000.0), Gain(), IntegerField("order", "", 1, 2, 1)}}};
    for (int band = 0; band < kBandCount; ++band) {
        specs.push_back(
            {"band" + std::to_string(band + 1),
             "Peak or dip",
             {Frequency(kBandFrequencies[band]), NumberField("q", "", kSmallestQ, kLargestQ, 2.0), Gain()}});
    }
    specs.push_back(
        NumberParameter("gain", "Gain behind all stages", "dB", kLowestMasterDb, kMostGainDb, 0.0));
    specs.push_back(SwitchParameter("statevariable", "Run all sections in state variable form", false));
    specs.push_back(SwitchParameter("bypass", "Let everything pass", false));
    return specs;
}

/// One strip for each channel, as a strip hears one.
class ParametricEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mStrips.clear();
        for (int channel = 0; channel < inFormat.mChannelCount; ++channel) {
            auto& strip = *mStrips.emplace_back(std::make_unique<parametric::Parametric>());
            strip.SetSampleRate(inFormat.mSampleRate);
            SetUp(strip);
            strip.Resume();
        }
        ChannelwiseEffect::Configure(inFormat);
    }

    void Reset() override
    {
        for (auto& strip : mStrips) {
            strip->Suspend();
            strip->Resume();
        }
    }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        if (mValues->GetSwitch("bypass")) {
            return EffectResponse{};
        }
        const double master = std::pow(10.0, mValues->GetNumber("gain") / 20.0);
        return EffectResponse{
            master * mStrips.front()->ComputeFilterResponse(static_cast<float>(inFrequency)), {}};
    }

private:
    void SetUp(parametric::Parametric& ioStrip) const
    {
        Set(ioStrip, kLowShelf, "lowshelf", "frequency");
        Set(ioStrip, kLowShelf + 1, "lowshelf", "gain");
        Set(ioStrip, kHighShelf, "highshelf", "frequency");
        Set(ioStrip, kHighShelf + 1, "highshelf", "gain");
        ioStrip.SetParameter(kLowShelfIsSteep, mValues->GetInteger("lowshelf", "order") == 2 ? 1.0f : 0.0f);
        ioStrip.SetParameter(kHighShelfIsSteep, mValues->GetInteger("highshelf", "order") == 2 ? 1.0f : 0.0f);
        for (int band = 0; band < kBandCount; ++band) {
            const auto name = "band" + std::to_string(band + 1);
            Set(ioStrip, kFirstBand + 4 * band, name, "frequency");
            Set(ioStrip, kFirstBand + 4 * band + 1, name, "q");
            Set(ioStrip, kFirstBand + 4 * band + 2, name, "gain");
        }
        for (const auto& [name, index] : {std::pair("highpass", kHighpass), std::pair("lowpass", kLowpass)}) {
            ioStrip.SetParameter(index, mValues->IsGiven(name) ? 1.0f : 0.0f);
            Set(ioStrip, index + 1, name, "frequency");
            Set(ioStrip, index + 2, name, "order");
        }
        Set(ioStrip, kMasterGain, "gain", "");
        Set(ioStrip, kStateVariableForm, "statevariable", "");
        Set(ioStrip, kBypass, "bypass", "");
    }

    /// What was not given stays as the strip has it, which fits its defaults to the sampling rate.
    void Set(parametric::Parametric& ioStrip, int inIndex, const std::string& inName,
             const char* inField) const
    {
        if (mValues->IsGiven(inName)) {
            ioStrip.SetParameter(inIndex, static_cast<float>(mValues->GetNumber(inName, inField)));
        }
    }

    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        mStrips[inChannel]->Process(inInput, outOutput, static_cast<int>(inCount));
    }

    std::optional<ParameterValues> mValues;
    std::vector<std::unique_ptr<parametric::Parametric>> mStrips;
};

const EffectRegistrar kParametric({
    .mName = "parametric",
    .mDescription = "Equalizer of a channel strip: high-pass, low-pass, two shelves and five bands",
    .mParameters = MakeParameters(),
    .mExample = "parametric:highpass=60/4,lowshelf=120/3,band3=800/2/-6,highshelf=8000/2/2",
    .mCreate = [] { return std::make_unique<ParametricEffect>(); },
    .mNotes = {"The slopes of highpass and lowpass are told as those of the analog filters; the measured "
               "ones are steeper "
               "towards half the sampling rate."},
});

} // namespace

} // namespace host
