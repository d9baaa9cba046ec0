#include "RateConverter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <tessaro/resample/LinearResample.h>
#include <tessaro/resample/Resample.h>
#include <tessaro/resample/Resampler.h>

namespace host {

namespace {

class Copy : public RateConverter
{
public:
    void Convert(const float* inInput, int inCount, std::vector<float>& ioOutput) override
    {
        ioOutput.insert(ioOutput.end(), inInput, inInput + inCount);
    }
};

/// Leaves out the latency.
class TableConverter : public RateConverter
{
public:
    explicit TableConverter(const RateConversion& inConversion)
    {
        mResample.SetFilterOrder(inConversion.mOrder);
        mResample.SetNoiseFloor(inConversion.mNoiseFloor);
        mResample.SetSampleRates(inConversion.mSourceRate, inConversion.mDestinationRate);
        mResample.Initialize();
        mToDrop = static_cast<std::size_t>(mResample.GetLatency());
    }

    void Convert(const float* inInput, int inCount, std::vector<float>& ioOutput) override
    {
        mBlock.resize(static_cast<std::size_t>(mResample.GetOutputBufferSize(inCount)));
        const auto count = static_cast<std::size_t>(mResample.Process(inInput, mBlock.data(), inCount));
        const auto dropped = std::min(mToDrop, count);
        mToDrop -= dropped;
        ioOutput.insert(ioOutput.end(), mBlock.data() + dropped, mBlock.data() + count);
    }

private:
    tessaro::Resample mResample;
    std::size_t mToDrop;
    std::vector<float> mBlock;
};

/// A stream that begins on its first sample is not late. Steps that lead beyond the end of a block are taken
/// off the next one.
class LinearConverter : public RateConverter
{
public:
    explicit LinearConverter(const RateConversion& inConversion)
        : mResample(static_cast<float>(inConversion.mSourceRate),
                    static_cast<float>(inConversion.mDestinationRate))
    {
    }

    void Convert(const float* inInput, int inCount, std::vector<float>& ioOutput) override
    {
        if (mIsFirst && inCount > 0) {
            mIsFirst = false;
            mLastSample = static_cast<double>(inInput[0]);
            mToSkip = 1;
        }
        const int skipped = std::min(mToSkip, inCount);
        const int count = inCount - skipped;
        mBlock.resize(static_cast<std::size_t>(mResample.GetOutputBufferSize(count)));
        const int produced =
            mResample.Process(inInput + skipped, mBlock.data(), count, mLastSample, mPosition, mIndex);
        ioOutput.insert(ioOutput.end(), mBlock.begin(), mBlock.begin() + produced);
        mToSkip += mIndex - kStart - inCount;
        // Only the difference of the two counts; so they stay small.
        mPosition -= mIndex - kStart;
        mIndex = kStart;
    }

private:
    /// At 0 the first output would be left out.
    static constexpr int kStart = 1;

    tessaro::LinearResample mResample;
    bool mIsFirst = true;
    double mLastSample = 0.0;
    double mPosition = kStart;
    int mIndex = kStart;
    int mToSkip = 0;
    std::vector<float> mBlock;
};

/// Holds as much of the input on both sides of a position as the kernel takes in, zeros before its start.
class KernelConverter : public RateConverter
{
public:
    explicit KernelConverter(const RateConversion& inConversion)
        : mResampler(kPhases),
          mStep(static_cast<double>(inConversion.mSourceRate) / inConversion.mDestinationRate)
    {
        mResampler.SetOptimalKernel(
            static_cast<float>(kFewestCrossings + kMoreCrossings * inConversion.mQuality),
            static_cast<float>(inConversion.mSourceRate), static_cast<float>(inConversion.mDestinationRate));
        mLookAround = mResampler.GetLookAround();
        mInput.assign(static_cast<std::size_t>(mLookAround), 0.0f);
        mOrigin = -mLookAround;
    }

    void Convert(const float* inInput, int inCount, std::vector<float>& ioOutput) override
    {
        mInput.insert(mInput.end(), inInput, inInput + inCount);
        const auto reach =
            static_cast<double>(mOrigin + static_cast<std::int64_t>(mInput.size()) - mLookAround);
        const auto end = std::max(static_cast<std::int64_t>(std::ceil(reach / mStep)), mNext);
        const auto count = static_cast<std::size_t>(end - mNext);
        const auto produced = ioOutput.size();
        ioOutput.resize(produced + count);
        const float* input = mInput.data();
        float* output = ioOutput.data();
        mResampler.InterpolateNSamples(&input, 1, static_cast<unsigned>(mInput.size()),
                                       static_cast<double>(mNext) * mStep - static_cast<double>(mOrigin),
                                       &output, static_cast<unsigned>(produced), static_cast<unsigned>(count),
                                       mStep, false);
        mNext = end;
        const auto done =
            static_cast<std::int64_t>(static_cast<double>(mNext) * mStep) - mLookAround - mOrigin;
        const auto forgotten = std::clamp<std::int64_t>(done, 0, static_cast<std::int64_t>(mInput.size()));
        mInput.erase(mInput.begin(), mInput.begin() + forgotten);
        mOrigin += forgotten;
    }

private:
    static constexpr int kPhases = 8192;
    static constexpr double kFewestCrossings = 4.0;
    static constexpr double kMoreCrossings = 24.0;

    tessaro::utility::Resampler mResampler;
    double mStep; ///< input samples an output
    std::int64_t mLookAround;
    std::vector<float> mInput;
    std::int64_t mOrigin;   ///< the input sample with which `mInput` begins
    std::int64_t mNext = 0; ///< output
};

} // namespace

std::unique_ptr<RateConverter> RateConverter::Create(const RateConversion& inConversion)
{
    if (inConversion.mSourceRate == inConversion.mDestinationRate) {
        return std::make_unique<Copy>();
    }
    switch (inConversion.mEngine) {
    case RateConversion::Engine::kKernel:
        return std::make_unique<KernelConverter>(inConversion);
    case RateConversion::Engine::kLinear:
        return std::make_unique<LinearConverter>(inConversion);
    case RateConversion::Engine::kTable:
        break;
    }
    return std::make_unique<TableConverter>(inConversion);
}

} // namespace host
