#include <tessaro/resample/LinearResample.h>

#include <cmath>
#include <cstdint>

#include <brisken/utility/Copy.h>

namespace tessaro {

namespace {

/// Hz
constexpr float kSameRate = 1e-5f;
constexpr int kSpare = 2;

} // namespace

LinearResample::LinearResample(float inInputRate, float inOutputRate)
    : mInputRate(inInputRate), mOutputRate(inOutputRate), mRatio(GetRatio())
{
}

void LinearResample::Reset()
{
    mPosition = 0.0;
    mIndex = 0;
    mLastSample = 0.0;
    mRatio = GetRatio();
}

void LinearResample::UpdateSampleRatesWhileProcessing(float inInputRate, float inOutputRate)
{
    mInputRate = inInputRate;
    mOutputRate = inOutputRate;
    mRatio = GetRatio();
}

double LinearResample::GetRatio() const
{
    return static_cast<double>(mInputRate) / static_cast<double>(mOutputRate);
}

bool LinearResample::IsCopy() const
{
    return std::fabs(mInputRate - mOutputRate) < kSameRate;
}

/// Without rates as for equal rates
double LinearResample::GetUsableRatio() const
{
    return std::isfinite(mRatio) && mRatio > 0.0 ? mRatio : 1.0;
}

int LinearResample::GetOutputBufferSize(int inCount) const
{
    return static_cast<int>(std::ceil(inCount / GetUsableRatio())) + kSpare;
}

int LinearResample::GetInputBufferSizeForOutput(int inCount) const
{
    return static_cast<int>(std::ceil(GetUsableRatio() * inCount)) + kSpare;
}

int LinearResample::Process(const float* inInput, float* outOutput, int inCount)
{
    return Process(inInput, outOutput, inCount, mLastSample, mPosition, mIndex);
}

int LinearResample::Process(const float* inInput, float* outOutput, int inCount, double& ioLastSample,
                            double& ioPosition, int& ioIndex) const
{
    if (inCount <= 0) {
        return 0;
    }
    if (IsCopy()) {
        brisken::utility::Copy(static_cast<unsigned>(inCount), inInput, outOutput);
        ioLastSample = static_cast<double>(inInput[inCount - 1]);
        ioIndex += inCount;
        ioPosition += inCount;
        return inCount;
    }
    if (!(std::isfinite(mRatio) && mRatio > 0.0)) {
        return 0;
    }
    double position = ioPosition;
    double lastSample = ioLastSample;
    std::int64_t index = ioIndex;
    std::int64_t current = 0;
    int produced = 0;
    bool isEaten = mEatLatency && index == 0;
    while (current < inCount) {
        const auto sample = static_cast<double>(inInput[current]);
        if (!isEaten) {
            const double fraction = position - static_cast<double>(index);
            outOutput[produced++] = static_cast<float>(fraction * (sample - lastSample) + lastSample);
        }
        isEaten = false;
        position += mRatio;
        const auto nextIndex = static_cast<std::int64_t>(position);
        if (nextIndex > index) {
            lastSample = sample;
            current += nextIndex - index;
            index = nextIndex;
        }
    }
    ioPosition = position;
    ioLastSample = lastSample;
    ioIndex = static_cast<int>(index);
    return produced;
}

} // namespace tessaro
