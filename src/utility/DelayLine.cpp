#include <tessaro/utility/DelayLine.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <brisken/Utility.h>

namespace tessaro::utility {

namespace {

namespace kernels = brisken::utility;

/// Samples processed at a time; so many may have to be held aside
constexpr unsigned kLongestRun = 512;

std::size_t StorageLength(float inSampleRate, float inMaxDelayMillis)
{
    const float samples = std::ceil(inMaxDelayMillis / 1000.0f * inSampleRate);
    return static_cast<std::size_t>(std::round(std::max(0.0f, samples))) + 1;
}

} // namespace

DelayLine::DelayLine(float inSampleRate, float inMaxDelayMillis)
    : mSampleRate(inSampleRate),
      mMaxDelayMillis(std::max(0.0f, inMaxDelayMillis)),
      mStorage(StorageLength(inSampleRate, mMaxDelayMillis))
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
    mDelaySamples = std::min(inDelay, GetLength() - 1);
    mReadIndex = mWriteIndex >= mDelaySamples ? mWriteIndex - mDelaySamples
                                              : mWriteIndex + GetLength() - mDelaySamples;
}

/// Each sample is stored before the one that comes out for it is fetched, so that a delay of 0 works. Storing
/// a whole run and then fetching it gives the same, as long as that does not store over samples which are yet
/// to be fetched. Where it would, what is in the delay is fetched first; the rest of the output is the start
/// of the run itself.
void DelayLine::ProcessInPlace(unsigned inCount, float* ioData)
{
    std::array<float, kLongestRun> held;
    while (inCount != 0) {
        const auto run = std::min(inCount, kLongestRun);
        if (run <= GetLength() - mDelaySamples) {
            Store(run, ioData);
            Fetch(run, ioData);
        } else {
            const auto inDelay = std::min(run, mDelaySamples);
            Fetch(inDelay, held.data());
            Store(run, ioData);
            kernels::Move(run - inDelay, ioData, ioData + inDelay);
            kernels::Copy(inDelay, held.data(), ioData);
        }
        mWriteIndex = (mWriteIndex + run) % GetLength();
        MoveReadIndex(mDelaySamples);
        ioData += run;
        inCount -= run;
    }
}

/// Stores from the write index on; of more than the length only the last samples, as the others would be
/// stored over.
void DelayLine::Store(unsigned inCount, const float* inData)
{
    const auto lost = inCount > GetLength() ? inCount - GetLength() : 0;
    const auto index = (mWriteIndex + lost) % GetLength();
    const auto count = inCount - lost;
    const auto firstRun = std::min(count, GetLength() - index);
    kernels::Copy(firstRun, inData + lost, mStorage.data() + index);
    kernels::Copy(count - firstRun, inData + lost + firstRun, mStorage.data());
}

void DelayLine::Fetch(unsigned inCount, float* outData) const
{
    const auto firstRun = std::min(inCount, GetLength() - mReadIndex);
    kernels::Copy(firstRun, mStorage.data() + mReadIndex, outData);
    kernels::Copy(inCount - firstRun, mStorage.data(), outData + firstRun);
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
