#include <tessaro/resample/Resample.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "CoeffTableStore.h"
#include "SampleHistory.h"

namespace tessaro {

namespace {

constexpr int kDefaultOrder = 255;
constexpr int kHighestOrder = 1 << 24;
constexpr double kDefaultNoiseFloor = 150.0;
constexpr double kDefaultNyquistShift = 0.3;
/// Rows are padded to a multiple of this many doubles.
constexpr int kRowAlignment = 8;
/// Output samples, by which the stream starts late, so that rounding cannot put it before a row
constexpr double kStartMargin = 1e-12;
/// The transition band is this over the number of taps, of the lower rate's band.
constexpr double kTransition = 12.5;

/// Rates count as whole hertz in some places and must survive that.
bool IsUsableRate(float inRate)
{
    return inRate > 0.0f && inRate < static_cast<float>(std::numeric_limits<std::int32_t>::max());
}

std::int32_t RoundRate(float inRate)
{
    return static_cast<std::int32_t>(inRate + 0.5);
}

bool HasFraction(float inRate)
{
    return inRate != std::trunc(inRate);
}

} // namespace

Resample::Resample()
{
    SetFilterOrder(kDefaultOrder);
    SetSampleRates(48000.0f, 44100.0f, true);
    mSettings.mTableCount = 0;
    mSettings.mNoiseFloor = kDefaultNoiseFloor;
    mSettings.mNyquistShift = kDefaultNyquistShift;
}

Resample::Resample(const Resample& inOther)
{
    *this = inOther;
}

Resample& Resample::operator=(const Resample& inOther)
{
    if (this == &inOther) {
        return *this;
    }
    auto history = inOther.mHistory ? std::make_unique<SampleHistory>(*inOther.mHistory)
                                    : std::unique_ptr<SampleHistory>();
    mInitialized = inOther.mInitialized;
    mSettings = inOther.mSettings;
    mAttached = inOther.mAttached;
    mLatency = inOther.mLatency;
    mPhase = inOther.mPhase;
    mDue = inOther.mDue;
    mWriteIndex = inOther.mWriteIndex;
    mTable = inOther.mTable;
    mHistory = std::move(history);
    return *this;
}

Resample::~Resample() = default;

void Resample::SetFilterOrder(int inOrder)
{
    if (mInitialized) {
        return;
    }
    mSettings.mOrder = (std::clamp(inOrder, 1, kHighestOrder) - 1) / 2 * 2 + 1;
    PreComputeStuff();
}

void Resample::SetNoiseFloor(double inDecibels)
{
    mSettings.mNoiseFloor = inDecibels;
}

void Resample::SetNyquistShift(double inShift)
{
    if (!mInitialized) {
        mSettings.mNyquistShift = inShift;
    }
}

void Resample::SetSampleRates(int inSource, int inDestination)
{
    SetSampleRates(static_cast<float>(inSource), static_cast<float>(inDestination), true);
}

void Resample::SetSampleRates(float inSource, float inDestination, bool inRoundToInteger)
{
    if (mInitialized) {
        return;
    }
    for (const auto& [rate, stored] :
         {std::pair{inSource, &mSettings.mSourceRate}, std::pair{inDestination, &mSettings.mDestRate}}) {
        if (IsUsableRate(rate) && !(inRoundToInteger && RoundRate(rate) == 0)) {
            *stored = rate;
        }
    }
    auto& source = mSettings.mSourceRate;
    auto& destination = mSettings.mDestRate;
    if (source == destination) {
        mSettings.mTableCount = 0;
        mLatency = 0;
        return;
    }
    if (!inRoundToInteger && (HasFraction(source) || HasFraction(destination))) {
        mSettings.mTableCount = kMostTableRows;
        mSettings.mStep = static_cast<double>(source) * kMostTableRows / static_cast<double>(destination);
    } else {
        const auto wholeSource = RoundRate(source);
        const auto wholeDestination = RoundRate(destination);
        if (inRoundToInteger) {
            source = static_cast<float>(wholeSource);
            destination = static_cast<float>(wholeDestination);
        }
        SetRatio(wholeSource, wholeDestination);
    }
    PreComputeStuff();
}

/// Rows and step for whole rates
void Resample::SetRatio(std::int64_t inSource, std::int64_t inDestination)
{
    const auto divisor = std::gcd(inSource, inDestination);
    const auto rows = inDestination / divisor;
    if (rows > kMostTableRows) {
        mSettings.mTableCount = kMostTableRows;
        mSettings.mStep = static_cast<double>(inSource) * kMostTableRows / static_cast<double>(inDestination);
    } else {
        mSettings.mTableCount = static_cast<std::int32_t>(rows);
        mSettings.mStep = static_cast<double>(inSource / divisor);
    }
}

/// Starts the stream: the first output lies as far into the input that the filter's delay, less the latency
/// in whole output samples, is made up for.
void Resample::PreComputeStuff()
{
    mWriteIndex = 0;
    if (IsCopy()) {
        mSettings.mTableCount = 0;
        mLatency = 0;
        return;
    }
    const double delay = (mSettings.mOrder - 1) * 0.5 * static_cast<double>(mSettings.mDestRate) /
                         static_cast<double>(mSettings.mSourceRate);
    mLatency = static_cast<std::int32_t>(delay);
    if (mSettings.mTableCount > 0) {
        const double rows = mSettings.mTableCount;
        const double position = (delay - mLatency + kStartMargin) * mSettings.mStep + rows;
        mPhase = std::fmod(position, rows);
        mDue = static_cast<std::int64_t>(position / rows) - 1;
    }
}

void Resample::Initialize()
{
    mInitialized = 0;
    if (mSettings == mAttached) {
        mHistory->Clear();
        mInitialized = 1;
        return;
    }
    Deinitialize(true);
    if (mSettings.mTableCount > 0) {
        AttachTable();
        mInitialized = 1;
    }
}

void Resample::AttachTable()
{
    const int stride = (mSettings.mOrder - 1 + kRowAlignment) / kRowAlignment * kRowAlignment;
    const CoeffTableStore::Key key{static_cast<std::int32_t>(mSettings.mSourceRate),
                                   static_cast<std::int32_t>(mSettings.mDestRate),
                                   mSettings.mTableCount,
                                   stride,
                                   mSettings.mOrder,
                                   mSettings.mNyquistShift,
                                   mSettings.mNoiseFloor};
    auto table = FindInCache(key);
    if (!table) {
        const double rows = mSettings.mTableCount;
        const double step = mSettings.mStep;
        const double width = kTransition / mSettings.mOrder;
        const double shift = mSettings.mNyquistShift;
        const double cutoffDivisor = mSettings.mSourceRate > mSettings.mDestRate
                                         ? step / (rows - (shift - 0.31) * width * step)
                                         : rows / (rows - shift * 0.6 * width * rows);
        table = std::make_shared<const CoeffTableStore>(key, step, cutoffDivisor);
        AddToCache(table);
    }
    const auto& cycle = table->GetCycle();
    const int behind = std::max(cycle.mRowLength - mSettings.mOrder, 0);
    mHistory = std::make_unique<SampleHistory>(mSettings.mOrder, cycle.mMostZeros, behind);
    mTable = std::move(table);
    mAttached = mSettings;
}

void Resample::Deinitialize(bool inRelease)
{
    mInitialized = 0;
    if (inRelease) {
        mTable.reset();
        mHistory.reset();
        mAttached = {};
    }
}

int Resample::GetOutputBufferSize(int inCount) const
{
    return static_cast<int>(static_cast<float>(inCount) * mSettings.mDestRate / mSettings.mSourceRate + 2.0f);
}

} // namespace tessaro
