#include <algorithm>
#include <cmath>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <brisken/Utility.h>
#include <tessaro/utility/DelayLine.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr double kLongestMillis = 10000.0;

class DelayEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override
    {
        mMillis = static_cast<float>(inValues.GetNumber("time"));
        mWet = static_cast<float>(inValues.GetNumber("mix") / 100.0);
        mIsCompensated = inValues.GetSwitch("compensated");
    }

    void Configure(const StreamFormat& inFormat) override
    {
        mSampleRate = inFormat.mSampleRate;
        mLines.clear();
        for (int channel = 0; channel < inFormat.mChannelCount; ++channel) {
            mLines.emplace_back(
                new tessaro::utility::DelayLine(static_cast<float>(inFormat.mSampleRate), mMillis));
            mLines.back()->SetDelayMillis(mMillis);
        }
        mDelaySamples = mLines.empty() ? 0 : mLines.front()->GetDelaySamples();
        ChannelwiseEffect::Configure(inFormat);
    }

    void Reset() override
    {
        for (const auto& line : mLines) {
            line->Reset();
        }
    }

    std::int64_t GetLatency() const override { return mIsCompensated ? mDelaySamples : 0; }

    std::optional<EffectResponse> GetResponse(double inFrequency) const override
    {
        const double angle = 2.0 * M_PI * inFrequency * mDelaySamples / mSampleRate;
        const double real = 1.0 - mWet + mWet * std::cos(angle);
        const double imaginary = -mWet * std::sin(angle);
        return EffectResponse{std::hypot(real, imaginary), std::atan2(imaginary, real)};
    }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        std::copy_n(inInput, inCount, outOutput);
        mLines[inChannel]->ProcessInPlace(inCount, outOutput);
        if (mWet != 1.0f) {
            brisken::utility::MulConstant_InPlace(inCount, outOutput, mWet);
            brisken::utility::AddConstantProduct(inCount, inInput, outOutput, 1.0f - mWet);
        }
    }

    float mMillis = 0.0f;
    float mWet = 1.0f;
    bool mIsCompensated = false;
    int mSampleRate = 0;
    unsigned mDelaySamples = 0;
    std::vector<boost::intrusive_ptr<tessaro::utility::DelayLine>> mLines;
};

const EffectRegistrar kDelay({
    .mName = "delay",
    .mDescription = "Delays all channels by a whole number of samples",
    .mParameters = {NumberParameter("time", "Delay, rounded to the nearest sample", "ms", 0.0, kLongestMillis,
                                    100.0),
                    NumberParameter("mix", "Share of the delayed signal, the rest being the input", "%", 0.0,
                                    100.0, 100.0),
                    SwitchParameter("compensated",
                                    "Report the delay as latency, so that a render makes up for it", false)},
    .mExample = "delay:time=125,mix=40",
    .mCreate = [] { return std::make_unique<DelayEffect>(); },
});

} // namespace

} // namespace host
