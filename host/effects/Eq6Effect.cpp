#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/eq/ParametricEQ.h>
#include <tessaro/filters/FilterResponse.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr unsigned kBandCount = 6;
constexpr double kLowestFrequency = 10.0;
constexpr double kMostGainDb = 48.0;
constexpr double kSmallestQ = 0.01;
constexpr double kLargestQ = 100.0;

/// In the order of the shapes' numbers.
const std::vector<std::string> kShapes = {"peak", "lowpass", "highpass"};

struct BandDefault
{
    std::size_t mShape;
    double mFrequency;
    double mQ;
    bool mIsOn;
};

constexpr std::array<BandDefault, kBandCount> kBands = {{{2, 30.0, 0.7, false},
                                                         {0, 180.0, 0.3, true},
                                                         {0, 520.0, 0.3, true},
                                                         {0, 1870.0, 0.3, true},
                                                         {0, 7400.0, 0.3, true},
                                                         {1, 10000.0, 0.7, false}}};

std::vector<ParameterSpec> MakeParameters()
{
    std::vector<ParameterSpec> specs;
    for (unsigned band = 0; band < kBandCount; ++band) {
        const auto& standard = kBands[band];
        specs.push_back({"band" + std::to_string(band + 1),
                         "Peak or dip, low-pass or high-pass; only a peak has a gain",
                         {NumberField("frequency", "Hz", kLowestFrequency, kHalfTheRate, standard.mFrequency),
                          NumberField("q", "", kSmallestQ, kLargestQ, standard.mQ),
                          NumberField("gain", "dB", -kMostGainDb, kMostGainDb, 0.0),
                          ChoiceField("shape", kShapes, standard.mShape)},
                         1,
                         true});
    }
    return specs;
}

class Eq6Effect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        mFormat = inFormat;
        mEqualizer.reset(new eq::ParametricEQ(
            inFormat.mMaxBlock, static_cast<float>(inFormat.mSampleRate),
            std::vector<kestrin::AudioChannelDescription>(static_cast<std::size_t>(inFormat.mChannelCount))));
        mSections.clear();
        for (unsigned band = 0; band < kBandCount; ++band) {
            SetUpBand(band);
        }
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        const auto channels = static_cast<std::size_t>(mFormat.mChannelCount);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            if (inSilent.GetBitModulo(channel)) {
                std::fill_n(outOutput[channel], inCount, 0.0f);
            } else {
                std::copy_n(inInput[channel], inCount, outOutput[channel]);
            }
        }
        mEqualizer->ProcessInPlace(inCount, outOutput);
        return {}; // its guard against denormals is no silence
    }

    void Reset() override { mEqualizer->Reset(); }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        const double angle = 2.0 * M_PI * inFrequency / mFormat.mSampleRate;
        const auto count = static_cast<int>(mSections.size() / 6);
        return EffectResponse{tessaro::GetMagnitudeResponse(angle, mSections.data(), 2, count),
                              tessaro::GetPhaseResponse(angle, mSections.data(), 2, count)};
    }

private:
    /// Bands that were not given are switched off, which is what a peak of 0 dB amounts to.
    void SetUpBand(unsigned inBand)
    {
        const auto name = "band" + std::to_string(inBand + 1);
        const bool isOn = mValues->IsGiven(name);
        mEqualizer->SetBandEnable(inBand, isOn);
        if (!isOn) {
            return;
        }
        const auto shape = static_cast<unsigned>(mValues->GetInteger(name, "shape"));
        const auto frequency = static_cast<float>(mValues->GetNumber(name, "frequency"));
        const auto q = static_cast<float>(mValues->GetNumber(name, "q"));
        const auto gain = static_cast<float>(mValues->GetNumber(name, "gain"));
        mEqualizer->SetBandShape(inBand, shape);
        mEqualizer->SetFrequency(inBand, frequency);
        mEqualizer->SetQ(inBand, q);
        mEqualizer->SetGain(inBand, gain);
        std::array<double, 6> section{};
        eq::ParametricEQ::CalculateIIRCoefficients(section.data(), static_cast<float>(mFormat.mSampleRate),
                                                   shape, frequency, gain, q);
        mSections.insert(mSections.end(), section.begin(), section.end());
    }

    std::optional<ParameterValues> mValues;
    StreamFormat mFormat;
    boost::intrusive_ptr<eq::ParametricEQ> mEqualizer;
    std::vector<double> mSections; ///< six coefficients for each band that is on
};

const EffectRegistrar kEq6({
    .mName = "eq6",
    .mDescription = "Equalizer of six bands in double precision",
    .mParameters = MakeParameters(),
    .mExample = "eq6:band1=40,band3=520/1/-4,band5=7400/0.7/2.5",
    .mCreate = [] { return std::make_unique<Eq6Effect>(); },
    .mNotes = {"A square wave of -200 dB, which keeps denormal numbers away, stays in the output."},
});

} // namespace

} // namespace host
