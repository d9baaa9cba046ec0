#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

#include <tessaro/filters/FIRFilter.h>

#include "chain/EffectRegistry.h"
#include "effects/ChannelwiseEffect.h"

namespace host {

namespace {

constexpr int kHighestOrder = 16384;

class FirBandEffect : public ChannelwiseEffect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    void Configure(const StreamFormat& inFormat) override
    {
        const double low = mValues->GetNumber("low") / inFormat.mSampleRate;
        const double high = std::min(mValues->GetNumber("high") / inFormat.mSampleRate, 0.5);
        if (low >= high) {
            throw std::invalid_argument("high must lie above low");
        }
        mOrder = mValues->GetInteger("order");
        mFresh = tessaro::FIRFilter();
        mFresh.GenerateFIRCoeffs(low, high, mOrder);
        mFilters.assign(static_cast<std::size_t>(inFormat.mChannelCount), mFresh);
        ChannelwiseEffect::Configure(inFormat);
    }

    /// Starts from filters that have heard nothing; the filter's own `Reset` keeps the signal.
    void Reset() override { mFilters.assign(mFilters.size(), mFresh); }

    std::int64_t GetLatency() const override { return mOrder / 2; }

private:
    void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                        unsigned inCount) override
    {
        std::copy_n(inInput, inCount, outOutput);
        mFilters[inChannel].Process(outOutput, static_cast<int>(inCount));
    }

    std::optional<ParameterValues> mValues;
    int mOrder = 0;
    tessaro::FIRFilter mFresh;
    std::vector<tessaro::FIRFilter> mFilters;
};

const EffectRegistrar kFirBand({
    .mName = "firband",
    .mDescription = "Linear-phase band-pass of a windowed sinc",
    .mParameters = {NumberParameter("low", "Lower edge; 0 for a low-pass", "Hz", 0.0, kHalfTheRate, 0.0),
                    NumberParameter("high", "Upper edge", "Hz", 1.0, kHalfTheRate, 20000.0),
                    {"order",
                     "Length of the filter less 1; the longer the steeper",
                     {IntegerField("", "samples", 2, kHighestOrder, 512)}}},
    .mExample = "firband:low=300,high=3400,order=1024",
    .mCreate = [] { return std::make_unique<FirBandEffect>(); },
});

} // namespace

} // namespace host
