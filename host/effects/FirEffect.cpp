#include <cmath>
#include <complex>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tessaro/filters/FIR.h>
#include <tessaro/filters/IZFIRFilter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr double kLowestFrequency = 10.0;
constexpr double kMostGainDb = 48.0;
constexpr double kSmallestQ = 0.05;
constexpr double kLargestQ = 50.0;
constexpr double kMostScale = 16.0;
constexpr std::size_t kMostNodes = 16;
constexpr double kLargestKaiser = 20.0;

/// In the order of the node types' numbers.
const std::vector<std::string> kTypes = {"bell", "lowpass", "highpass", "lowshelf", "highshelf"};
const std::vector<std::string> kSizes = {"256", "512", "1024", "2048", "4096", "8192", "16384"};
constexpr std::size_t kDefaultSize = 4;

class FirEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override
    {
        mNodes.clear();
        for (std::size_t i = 0; i < inValues.GetCount("node"); ++i) {
            tessaro::NodeFR node;
            node.mFrequency = static_cast<float>(inValues.GetNumber("node", "frequency", i));
            node.mGain = static_cast<float>(inValues.GetNumber("node", "gain", i));
            node.mQ = static_cast<float>(inValues.GetNumber("node", "q", i));
            node.mScale = static_cast<float>(inValues.GetNumber("node", "scale", i));
            node.mPhaseMix = static_cast<float>(inValues.GetNumber("node", "mix", i));
            node.mType = inValues.GetInteger("node", "type", i);
            mNodes.push_back(node);
        }
        mSize = static_cast<unsigned>(std::stoul(inValues.GetText("size")));
        mPhase = inValues.GetText("phase");
        mKaiser = static_cast<float>(inValues.GetNumber("kaiser"));
    }

    void Configure(const StreamFormat& inFormat) override
    {
        mSampleRate = inFormat.mSampleRate;
        DesignTaps();
        mFilters.clear();
        for (int channel = 0; channel < inFormat.mChannelCount; ++channel) {
            mFilters.push_back(std::make_unique<tessaro::IZFIRFilter>(
                mTaps.data(), static_cast<unsigned>(mTaps.size()), inFormat.mMaxBlock));
        }
        ChannelwiseEffect::Configure(inFormat);
    }

    void Reset() override
    {
        for (auto& filter : mFilters) {
            filter->Reset();
        }
    }

    std::int64_t GetLatency() const override { return mPhase == "minimum" ? 0 : mSize / 2 - 1; }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        std::complex<double> response;
        const auto turn = std::polar(1.0, -2.0 * M_PI * inFrequency / mSampleRate);
        for (auto tap = mTaps.rbegin(); tap != mTaps.rend(); ++tap) {
            response = response * turn + static_cast<double>(*tap);
        }
        return EffectResponse{std::abs(response), std::arg(response)};
    }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        mFilters[inChannel]->Process(inCount, inInput, outOutput);
    }

    void DesignTaps()
    {
        std::vector<unsigned> sizes{mSize};
        std::vector<unsigned> minPhaseSizes{4 * mSize};
        tessaro::FIR design(sizes, minPhaseSizes);
        const auto count = static_cast<unsigned>(mNodes.size());
        const auto rate = static_cast<float>(mSampleRate);
        mTaps.assign(mSize, 0.0f);
        if (mPhase == "mixed") {
            design.DesignFIRMixedPhase(mNodes.data(), count, mSize, rate, mKaiser, mTaps.data());
            return;
        }
        std::vector<float> magnitude(mSize / 2 + 1);
        design.BuildFreqResp(mNodes.data(), count, magnitude.data(), mSize, rate, false);
        if (mPhase == "minimum") {
            design.DesignFIRMinPhase(magnitude.data(), mSize, mKaiser, mTaps.data(), 4 * mSize);
        } else {
            design.DesignFIR(magnitude.data(), mSize, mKaiser, mTaps.data(), nullptr, 0);
        }
    }

    std::vector<tessaro::NodeFR> mNodes;
    unsigned mSize = 0;
    std::string mPhase;
    float mKaiser = 0.0f;
    int mSampleRate = 0;
    std::vector<float> mTaps;
    std::vector<std::unique_ptr<tessaro::IZFIRFilter>> mFilters;
};

ParameterSpec MakeNode()
{
    return {"node",
            "A piece of the magnitude curve; pieces add up in dB. Slopes take their steepness from scale, in "
            "units of 6 dB an octave, and have no gain",
            {ChoiceField("type", kTypes),
             NumberField("frequency", "Hz", kLowestFrequency, kHalfTheRate, 1000.0),
             NumberField("gain", "dB", -kMostGainDb, kMostGainDb, 0.0),
             NumberField("q", "", kSmallestQ, kLargestQ, 1.0), NumberField("scale", "", 0.0, kMostScale, 1.0),
             NumberField("mix", "", -1.0, 1.0, 0.0)},
            kMostNodes};
}

const EffectRegistrar kFir({
    .mName = "fir",
    .mDescription = "FIR filter of a drawn magnitude curve, with linear, minimum or mixed phase",
    .mParameters = {MakeNode(),
                    ChoiceParameter("phase",
                                    "With mixed, each node goes by its mix, from -1 (minimum) to 1 "
                                    "(maximum phase)",
                                    {"linear", "minimum", "mixed"}),
                    ChoiceParameter("size", "Length of the filter in samples", kSizes, kDefaultSize),
                    NumberParameter("kaiser", "Shape of the Kaiser window on the taps; higher is smoother",
                                    "", 0.0, kLargestKaiser, 6.0)},
    .mExample = "fir:node=bell/1000/-6/2,node=highpass/80,phase=linear",
    .mCreate = [] { return std::make_unique<FirEffect>(); },
});

} // namespace

} // namespace host
