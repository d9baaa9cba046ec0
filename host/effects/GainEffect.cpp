#include <cmath>
#include <vector>

#include <tessaro/utility/GainRamp.h>

#include "chain/EffectRegistry.h"

namespace host {

namespace {

constexpr double kLowestDb = -400.0;
constexpr double kHighestDb = 60.0;
constexpr double kSilenceDb = -120.0; // where a ramp takes a gain for exactly 0

class GainEffect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override
    {
        const double decibels = inValues.GetNumber("gain");
        mGain = decibels <= kSilenceDb ? 0.0f : static_cast<float>(std::pow(10.0, decibels / 20.0));
    }

    void Configure(const StreamFormat& inFormat) override
    {
        mFormat = inFormat;
        mInput.reserve(static_cast<std::size_t>(inFormat.mChannelCount));
        mOutput.reserve(static_cast<std::size_t>(inFormat.mChannelCount));
        Reset();
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        mInput.clear();
        mOutput.clear();
        for (int channel = 0; channel < mFormat.mChannelCount; ++channel) {
            if (!inSilent.GetBitModulo(static_cast<std::size_t>(channel))) {
                mInput.push_back(inInput[channel]);
                mOutput.push_back(outOutput[channel]);
            }
        }
        const auto result =
            mRamp.Process(mInput.data(), mOutput.data(), mInput.size(), static_cast<int>(inCount));
        return result == tessaro::GainRamp::kSilent ? SilentChannels::All() : inSilent;
    }

    void Reset() override { mRamp = tessaro::GainRamp(static_cast<float>(mFormat.mSampleRate), mGain); }

    std::optional<EffectResponse> GetResponse(double) const override { return EffectResponse{mGain, 0.0}; }

private:
    float mGain = 1.0f;
    StreamFormat mFormat;
    tessaro::GainRamp mRamp;
    std::vector<const float*> mInput;
    std::vector<float*> mOutput;
};

const EffectRegistrar kGain({
    .mName = "gain",
    .mDescription = "Makes all channels louder or softer",
    .mParameters = {NumberParameter("gain", "Gain; silence from -120 dB down", "dB", kLowestDb, kHighestDb,
                                    0.0)},
    .mExample = "gain:gain=-3",
    .mCreate = [] { return std::make_unique<GainEffect>(); },
});

} // namespace

} // namespace host
