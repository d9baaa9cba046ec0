#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <optional>
#include <stdexcept>
#include <vector>

#include <tessaro/filters/ButterworthCascade.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

using Cascade = tessaro::ButterworthCascade;

constexpr double kLowestFrequency = 10.0;
constexpr int kHighestOrder = 16; // of the band types

/// In the order of the types' numbers, which begin with 1.
const std::vector<std::string> kTypes = {"lowpass", "highpass", "bandpass", "bandstop"};

class ButterworthEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mSampleRate = inFormat.mSampleRate;
        const int order = mValues->GetInteger("order");
        const int type = mValues->GetInteger("type") + 1;
        const double cutoff = mValues->GetNumber("frequency") / mSampleRate;
        const double upper = mValues->GetNumber("upper") / mSampleRate;
        Cascade cascade;
        cascade.Configure(order, type);
        if (cascade.Retune(cutoff, upper) != Cascade::kNoError) {
            throw std::invalid_argument("upper must lie above frequency, and both below half the rate");
        }
        mSections.resize(cascade.GetNumSections());
        Cascade::Design(order, type, cutoff, upper, mSections.data());
        mCascades.assign(static_cast<std::size_t>(inFormat.mChannelCount), cascade);
        ChannelwiseEffect::Configure(inFormat);
    }

    void Reset() override
    {
        for (auto& cascade : mCascades) {
            cascade.Reset();
        }
    }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        const auto delay = std::polar(1.0, -2.0 * M_PI * inFrequency / mSampleRate); // z^-1
        std::complex<double> response = 1.0;
        for (const auto& section : mSections) {
            std::complex<double> numerator = section.mFeed[0];
            std::complex<double> denominator = 1.0;
            std::complex<double> power = 1.0;
            for (std::size_t i = 0; i < section.mBack.size(); ++i) {
                power *= delay;
                numerator += section.mFeed[i + 1] * power;
                denominator += section.mBack[i] * power;
            }
            response *= numerator / denominator;
        }
        return EffectResponse{std::abs(response), std::arg(response)};
    }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        std::copy_n(inInput, inCount, outOutput);
        mCascades[inChannel].Process(outOutput, static_cast<int>(inCount));
    }

    std::optional<ParameterValues> mValues;
    double mSampleRate = 0.0;
    std::vector<Cascade::Section> mSections;
    std::vector<Cascade> mCascades;
};

const EffectRegistrar kButterworth({
    .mName = "butterworth",
    .mDescription = "Low-pass, high-pass, band-pass or band-stop without ripple, as steep as wanted",
    .mParameters =
        {ChoiceParameter("type", "What the filter does", kTypes),
         NumberParameter("frequency", "Where it is at -3 dB; the lower edge of a band", "Hz",
                         kLowestFrequency, kHalfTheRate, 1000.0),
         NumberParameter("upper", "The upper edge of a band", "Hz", kLowestFrequency, kHalfTheRate, 2000.0),
         {"order", "Slope in units of 6 dB an octave", {IntegerField("", "", 1, kHighestOrder, 4)}}},
    .mExample = "butterworth:type=bandpass,frequency=300,upper=3400,order=6",
    .mCreate = [] { return std::make_unique<ButterworthEffect>(); },
});

} // namespace

} // namespace host
