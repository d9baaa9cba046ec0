#include <array>
#include <cmath>
#include <vector>

#include <tessaro/filters/BiquadDesign.h>
#include <tessaro/filters/FilterResponse.h>
#include <tessaro/filters/SecondOrderIIRFilter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr double kLowestFrequency = 10.0;
constexpr double kMostGainDb = 48.0;
constexpr double kSmallestQ = 0.01;
constexpr double kLargestQ = 100.0;
constexpr double kSmallestSlope = 0.01;

const std::vector<std::string> kTypes = {"lowpass",  "highpass",  "bandpass",    "peak",
                                         "lowshelf", "highshelf", "lowpass-6db", "highpass-6db"};

/// `b0 b1 b2 a0 a1 a2`
using Coefficients = std::array<double, 6>;

Coefficients Widen(const std::array<double, 4>& inFirstOrder)
{
    return {inFirstOrder[0], inFirstOrder[1], 0.0, inFirstOrder[2], inFirstOrder[3], 0.0};
}

Coefficients Design(const ParameterValues& inValues, double inSampleRate)
{
    const auto& type = inValues.GetText("type");
    const double frequency = inValues.GetNumber("frequency");
    const double gain = inValues.GetNumber("gain");
    const double q = inValues.GetNumber("q");
    const double slope = inValues.GetNumber("slope");
    Coefficients design{};
    std::array<double, 4> firstOrder{};
    if (type == "lowpass") {
        tessaro::LowpassCoefficients(design.data(), inSampleRate, frequency, q);
    } else if (type == "highpass") {
        tessaro::HighpassCoefficients(design.data(), inSampleRate, frequency, q);
    } else if (type == "bandpass") {
        tessaro::BandpassCoefficients(design.data(), inSampleRate, frequency, q);
    } else if (type == "peak") {
        tessaro::PeakingEQCoefficients(design.data(), inSampleRate, frequency, gain, q);
    } else if (type == "lowshelf") {
        tessaro::LowShelfCoefficients(design.data(), inSampleRate, frequency, gain / 2.0, slope);
    } else if (type == "highshelf") {
        tessaro::HighShelfCoefficients(design.data(), inSampleRate, frequency, gain / 2.0, slope);
    } else if (type == "lowpass-6db") {
        tessaro::LowpassCoefficients(firstOrder.data(), inSampleRate, frequency, true);
        design = Widen(firstOrder);
    } else {
        tessaro::HighpassCoefficients(firstOrder.data(), inSampleRate, frequency, true);
        design = Widen(firstOrder);
    }
    return design;
}

class BiquadEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mSampleRate = inFormat.mSampleRate;
        mDesign = Design(*mValues, mSampleRate);
        tessaro::SecondOrderIIRFilter filter;
        filter.SetCoefficients({mDesign[4], mDesign[5], mDesign[0], mDesign[1], mDesign[2]});
        mFilters.assign(static_cast<std::size_t>(inFormat.mChannelCount), filter);
        ChannelwiseEffect::Configure(inFormat);
    }

    void Reset() override
    {
        for (auto& filter : mFilters) {
            filter.Reset();
        }
    }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        const double angle = 2.0 * M_PI * inFrequency / mSampleRate;
        return EffectResponse{tessaro::GetMagnitudeResponse(angle, mDesign.data(), 2, 1),
                              tessaro::GetPhaseResponse(angle, mDesign.data(), 2, 1)};
    }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        mFilters[inChannel].Process(inCount, inInput, outOutput);
    }

    std::optional<ParameterValues> mValues;
    double mSampleRate = 0.0;
    Coefficients mDesign{};
    std::vector<tessaro::SecondOrderIIRFilter> mFilters;
};

const EffectRegistrar kBiquad({
    .mName = "biquad",
    .mDescription = "One filter of the first or second order",
    .mParameters = {ChoiceParameter("type", "What the filter does; the last two are of the first order",
                                    kTypes),
                    NumberParameter("frequency", "Cutoff, centre or corner", "Hz", kLowestFrequency,
                                    kHalfTheRate, 1000.0),
                    NumberParameter("q", "Quality of lowpass, highpass, bandpass and peak", "", kSmallestQ,
                                    kLargestQ, std::sqrt(0.5)),
                    NumberParameter("gain", "Gain of peak and shelves", "dB", -kMostGainDb, kMostGainDb, 0.0),
                    NumberParameter("slope", "Slope of the shelves; 1 is the steepest without overshoot", "",
                                    kSmallestSlope, 1.0, 1.0)},
    .mExample = "biquad:type=peak,frequency=800,q=1.4,gain=-6",
    .mCreate = [] { return std::make_unique<BiquadEffect>(); },
});

} // namespace

} // namespace host
