#include <tessaro/resample/Resample.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include <brisken/Utility.h>

#include "CoeffTableStore.h"

namespace tessaro {

namespace {

constexpr int kDefaultOrder = 255;
constexpr int kHighestOrder = 1 << 24;
constexpr double kDefaultNoiseFloor = 150.0;
constexpr double kDefaultNyquistShift = 0.3;
/// More rows no table has; with so many, outputs are interpolated between two of them.
constexpr int kMostRows = 1000;
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

void Resample::FreeRow::operator()(double* inRow) const
{
    brisken::utility::Free(inRow);
}

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
    History history;
    if (inOther.mHistory) {
        const auto size = static_cast<unsigned>(2 * inOther.mRowStride);
        history.reset(brisken::utility::Malloc_Double(size));
        if (!history) {
            throw std::bad_alloc();
        }
        brisken::utility::Copy(size, inOther.mHistory.get(), history.get());
    }
    mInitialized = inOther.mInitialized;
    mSettings = inOther.mSettings;
    mAttached = inOther.mAttached;
    mLatency = inOther.mLatency;
    mRowStride = inOther.mRowStride;
    mPhase = inOther.mPhase;
    mReadPosition = inOther.mReadPosition;
    mWriteIndex = inOther.mWriteIndex;
    mIsPending = inOther.mIsPending;
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
    mRowStride = (mSettings.mOrder - 1 + kRowAlignment) / kRowAlignment * kRowAlignment;
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
        mSettings.mTableCount = kMostRows;
        mSettings.mStep = static_cast<double>(source) * kMostRows / static_cast<double>(destination);
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
    if (rows > kMostRows) {
        mSettings.mTableCount = kMostRows;
        mSettings.mStep = static_cast<double>(inSource) * kMostRows / static_cast<double>(inDestination);
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
    mIsPending = false;
    if (mSettings.mSourceRate == mSettings.mDestRate) {
        mSettings.mTableCount = 0;
        mLatency = 0;
        return;
    }
    const double delay = (mSettings.mOrder - 1) * 0.5 * static_cast<double>(mSettings.mDestRate) /
                         static_cast<double>(mSettings.mSourceRate);
    mLatency = static_cast<std::int32_t>(delay);
    const double rows = mSettings.mTableCount;
    const double position = (delay - mLatency + kStartMargin) * mSettings.mStep + rows;
    mPhase = std::fmod(position, rows);
    mReadPosition = position / rows - 1.0;
}

void Resample::Initialize()
{
    mInitialized = 0;
    if (mSettings == mAttached) {
        if (mHistory) {
            brisken::utility::Zero(static_cast<unsigned>(2 * mRowStride), mHistory.get());
        }
    } else {
        Deinitialize(true);
        if (mSettings.mTableCount == 0) {
            mIsPending = false;
            return;
        }
        AttachTable();
    }
    mInitialized = 1;
    mIsPending = false;
}

void Resample::AttachTable()
{
    const auto historySize = static_cast<unsigned>(2 * mRowStride);
    mHistory.reset(brisken::utility::Malloc_Double(historySize));
    if (!mHistory) {
        throw std::bad_alloc();
    }
    brisken::utility::Zero(historySize, mHistory.get());
    const CoeffTableStore::Key key{static_cast<std::int32_t>(mSettings.mSourceRate),
                                   static_cast<std::int32_t>(mSettings.mDestRate),
                                   mSettings.mTableCount,
                                   mRowStride,
                                   mSettings.mOrder,
                                   mSettings.mNyquistShift,
                                   mSettings.mNoiseFloor};
    mTable = FindInCache(key);
    if (!mTable) {
        const double rows = mSettings.mTableCount;
        const double step = mSettings.mStep;
        const double width = kTransition / mSettings.mOrder;
        const double shift = mSettings.mNyquistShift;
        const double cutoffDivisor = mSettings.mSourceRate > mSettings.mDestRate
                                         ? step / (rows - (shift - 0.31) * width * step)
                                         : rows / (rows - shift * 0.6 * width * rows);
        mTable = std::make_shared<const CoeffTableStore>(key, cutoffDivisor);
        AddToCache(mTable);
    }
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

int Resample::Process(const float* inInput, float* outOutput, int inCount)
{
    return ProcessInternal(inInput, outOutput, inCount, false);
}

int Resample::Process2(const float* inInput, float* outOutput, int inCount)
{
    return ProcessInternal(inInput, outOutput, inCount, true);
}

int Resample::ProcessInternal(const float* inInput, float* outOutput, int inCount, bool inIsOutputDriven)
{
    if (inCount <= 0 || inInput == nullptr || outOutput == nullptr) {
        return 0;
    }
    if (!mInitialized) {
        Initialize();
    }
    if (mSettings.mSourceRate == mSettings.mDestRate) {
        brisken::utility::Copy(static_cast<unsigned>(inCount), inInput, outOutput);
        return inCount;
    }
    if (!mInitialized || mSettings.mTableCount == 0 || !mHistory || !mTable) {
        return 0;
    }
    int consumed = 0;
    int produced = 0;
    for (;;) {
        if (!mIsPending) {
            Push(inInput[consumed++]);
        }
        mIsPending = false;
        while (mReadPosition < 1.0) {
            outOutput[produced++] = static_cast<float>(ComputeOutput());
            const double position = mPhase + mSettings.mStep;
            mPhase = std::fmod(position, mSettings.mTableCount);
            mReadPosition = position / mSettings.mTableCount;
            if (inIsOutputDriven && produced == inCount) {
                mIsPending = mReadPosition < 1.0;
                break;
            }
        }
        if (!mIsPending) {
            AdvanceWindow();
        }
        if (inIsOutputDriven && produced == inCount) {
            break;
        }
        if (!inIsOutputDriven && consumed == inCount) {
            return produced;
        }
    }
    if (!mIsPending) {
        Push(inInput[consumed++]);
        mIsPending = true;
    }
    return consumed;
}

void Resample::Push(float inSample)
{
    mHistory[static_cast<std::size_t>(mWriteIndex + mSettings.mOrder - 1)] = static_cast<double>(inSample);
}

double Resample::ComputeOutput() const
{
    const auto order = static_cast<unsigned>(mSettings.mOrder);
    const double* window = mHistory.get() + mWriteIndex;
    const int row = static_cast<int>(mPhase);
    const double output = brisken::utility::DotProduct(order, mTable->GetRow(row), window);
    if (mSettings.mTableCount != kMostRows) {
        return output;
    }
    const bool isLast = row + 1 == kMostRows;
    const double next =
        brisken::utility::DotProduct(order, mTable->GetRow(isLast ? 0 : row + 1), window + (isLast ? 1 : 0));
    const double weight = mPhase - row;
    return next * weight + (1.0 - weight) * output;
}

void Resample::AdvanceWindow()
{
    mReadPosition -= 1.0;
    ++mWriteIndex;
    const int order = mSettings.mOrder;
    if (mWriteIndex == order) {
        brisken::utility::Copy(static_cast<unsigned>(order), mHistory.get() + order, mHistory.get());
        mWriteIndex = 0;
    }
}

} // namespace tessaro
