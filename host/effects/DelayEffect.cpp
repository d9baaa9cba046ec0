#include <algorithm>
#include <cmath>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <brisken/Utility.h>
#include <tessaro/utility/DelayLine.h>

#include "chain/EffectRegistry.h"

namespace host {

namespace {

constexpr double kLongestMillis = 10000.0;

class DelayEffect : public Effect
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
        mQuietSamples.assign(mLines.size(), mDelaySamples);
    }

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) override
    {
        auto silent = inSilent;
        for (std::size_t channel = 0; channel < mLines.size(); ++channel) {
            const bool isInputSilent = inSilent.GetBitModulo(channel);
            if (isInputSilent && mQuietSamples[channel] >= mDelaySamples) {
                std::fill_n(outOutput[channel], inCount, 0.0f);
                continue;
            }
            silent.ClearBit(channel % SilentChannels::kBitCount);
            mQuietSamples[channel] = isInputSilent ? mQuietSamples[channel] + inCount : 0;
            ProcessChannel(*mLines[channel], isInputSilent ? nullptr : inInput[channel], inCount,
                           outOutput[channel]);
        }
        return silent;
    }

    void Reset() override
    {
        for (const auto& line : mLines) {
            line->Reset();
        }
        mQuietSamples.assign(mLines.size(), mDelaySamples);
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
    /// A null input stands for silence.
    void ProcessChannel(tessaro::utility::DelayLine& ioLine, const float* inInput, unsigned inCount,
                        float* outOutput)
    {
        if (inInput == nullptr) {
            std::fill_n(outOutput, inCount, 0.0f);
        } else {
            std::copy_n(inInput, inCount, outOutput);
        }
        ioLine.ProcessInPlace(inCount, outOutput);
        if (mWet != 1.0f) {
            brisken::utility::MulConstant_InPlace(inCount, outOutput, mWet);
            if (inInput != nullptr) {
                brisken::utility::AddConstantProduct(inCount, inInput, outOutput, 1.0f - mWet);
            }
        }
    }

    float mMillis = 0.0f;
    float mWet = 1.0f;
    bool mIsCompensated = false;
    int mSampleRate = 0;
    unsigned mDelaySamples = 0;
    std::vector<boost::intrusive_ptr<tessaro::utility::DelayLine>> mLines;
    std::vector<std::uint64_t> mQuietSamples; ///< of input, up to now, by channel
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
