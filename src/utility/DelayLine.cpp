#include <tessaro/utility/DelayLine.h>

#include <algorithm>
#include <cmath>

#include <brisken/Utility.h>

namespace tessaro::utility {

namespace {

namespace kernels = brisken::utility;

/// Samples that are processed at a time
constexpr unsigned kLongestRun = 512;

unsigned LongestDelay(float inSampleRate, float inMaxDelayMillis)
{
    const float samples = std::ceil(inMaxDelayMillis / 1000.0f * inSampleRate);
    return static_cast<unsigned>(std::round(std::max(0.0f, samples)));
}

} // namespace

DelayLine::DelayLine(float inSampleRate, float inMaxDelayMillis)
    : mSampleRate(inSampleRate),
      mMaxDelayMillis(std::max(0.0f, inMaxDelayMillis)),
      mLongestDelay(LongestDelay(inSampleRate, mMaxDelayMillis)),
      mStorage(std::size_t{mLongestDelay} + kLongestRun)
{
}

DelayLine::~DelayLine() = default;

void DelayLine::SetDelayMillis(float inMillis)
{
    if (inMillis == mDelayMillis) {
        return;
    }
    mDelayMillis = std::min(std::max(0.0f, inMillis), mMaxDelayMillis);
    const auto samples = std::lround(mDelayMillis * 0.001 * mSampleRate);
    MoveReadIndex(static_cast<unsigned>(samples));
}

void DelayLine::SetDelaySamples(unsigned inSamples)
{
    MoveReadIndex(inSamples);
    mDelayMillis = static_cast<float>(mDelaySamples) / mSampleRate * 1000.0f;
}

void DelayLine::MoveReadIndex(unsigned inDelay)
{
    mDelaySamples = std::min(inDelay, mLongestDelay);
    mReadIndex = mWriteIndex >= mDelaySamples ? mWriteIndex - mDelaySamples
                                              : mWriteIndex + GetLength() - mDelaySamples;
}

/// Each sample is stored before the one that comes out for it is fetched, so that a delay of 0 works. A whole
/// run may be stored before it is fetched, as the storage has room for it beside the longest delay: it does
/// not store over what is yet to be fetched.
void DelayLine::ProcessInPlace(unsigned inCount, float* ioData)
{
    while (inCount != 0) {
        const auto run = std::min(inCount, kLongestRun);
        Store(run, ioData);
        Fetch(run, ioData);
        ioData += run;
        inCount -= run;
    }
}

void DelayLine::Store(unsigned inCount, const float* inData)
{
    const auto firstRun = std::min(inCount, GetLength() - mWriteIndex);
    kernels::Copy(firstRun, inData, mStorage.data() + mWriteIndex);
    kernels::Copy(inCount - firstRun, inData + firstRun, mStorage.data());
    mWriteIndex = Advanced(mWriteIndex, inCount);
}

void DelayLine::Fetch(unsigned inCount, float* outData)
{
    const auto firstRun = std::min(inCount, GetLength() - mReadIndex);
    kernels::Copy(firstRun, mStorage.data() + mReadIndex, outData);
    kernels::Copy(inCount - firstRun, mStorage.data(), outData + firstRun);
    mReadIndex = Advanced(mReadIndex, inCount);
}

unsigned DelayLine::Advanced(unsigned inIndex, unsigned inCount) const
{
    const auto untilEnd = GetLength() - inIndex;
    return inCount < untilEnd ? inIndex + inCount : inCount - untilEnd;
}

void DelayLine::Reset()
{
    float* const storage = mStorage.data();
    if (mReadIndex <= mWriteIndex) {
        kernels::Zero(mWriteIndex - mReadIndex, storage + mReadIndex);
    } else {
        kernels::Zero(GetLength() - mReadIndex, storage + mReadIndex);
        kernels::Zero(mWriteIndex, storage);
    }
}

} // namespace tessaro::utility
