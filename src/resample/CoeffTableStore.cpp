#include "CoeffTableStore.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <new>
#include <numbers>
#include <numeric>
#include <utility>

#include <brisken/Utility.h>
#include <ombrel/threads/RecursiveMutex.h>

namespace tessaro {

namespace {

constexpr int kBankRows = brisken::filter::kRowBankRows;
constexpr std::size_t kCacheSize = 64;
constexpr double kSameSetting = 1e-5;
/// From here on, in dB, a Kaiser window reaches the noise floor.
constexpr double kLowestKaiserFloor = 60.0;

/// Cycles below this many outputs are taken several times rather than leave a bank short of rows.
constexpr int kShortCycle = 16;

/// Modified Bessel function of order 0, by 19 terms of its series
double BesselI0(double inX)
{
    constexpr int kNumTerms = 19;
    double sum = 1.0;
    double root = 1.0; // (x / 2)^k / k!
    for (int k = 1; k <= kNumTerms; ++k) {
        root *= 0.5 * inX / k;
        sum += root * root;
    }
    return sum;
}

double Sinc(double inX)
{
    return inX == 0.0 ? 1.0 : std::sin(inX) / inX;
}

/// Over the distance from the middle of the filter, in input samples
class Window
{
public:
    Window(int inOrder, double inNoiseFloor)
        : mIsKaiser(inNoiseFloor >= kLowestKaiserFloor),
          mBeta((inNoiseFloor - 8.7) * 0.1102),
          mPeak(BesselI0(mBeta)),
          mHalfLength(mIsKaiser ? (inOrder + 1) / 2 : std::max((inOrder - 1) / 2, 1))
    {
    }

    double operator()(double inDistance) const
    {
        const double u = inDistance / mHalfLength;
        if (mIsKaiser) {
            return BesselI0(mBeta * std::sqrt(1.0 - u * u)) / mPeak;
        }
        return 0.42 + 0.5 * std::cos(std::numbers::pi * u) + 0.08 * std::cos(2.0 * std::numbers::pi * u);
    }

private:
    bool mIsKaiser;
    double mBeta;
    double mPeak;
    int mHalfLength;
};

/// `inFraction` is how far behind an input sample the row's output lies, in input samples.
void BuildTable(int inOrder, double inFraction, double inCutoffDivisor, const Window& inWindow,
                double* outRow)
{
    const int half = (inOrder - 1) / 2;
    for (int tap = 0; tap < inOrder; ++tap) {
        const double distance = (tap - half) - inFraction;
        outRow[tap] =
            inWindow(distance) * Sinc(std::numbers::pi * distance / inCutoffDivisor) / inCutoffDivisor;
    }
}

/// The tables made last, newest first. Only additions order it: a table found does not move.
struct Cache
{
    ombrel::threads::RecursiveMutex mMutex{"tessaro::Resample coefficient cache"};
    std::deque<std::shared_ptr<const CoeffTableStore>> mStores{kCacheSize};
};

Cache gCache;

} // namespace

bool CoeffTableStore::Key::Matches(const Key& inOther) const
{
    return mSourceRate == inOther.mSourceRate && mDestRate == inOther.mDestRate &&
           mTableCount == inOther.mTableCount && mRowStride == inOther.mRowStride &&
           mOrder == inOther.mOrder && std::fabs(mNyquistShift - inOther.mNyquistShift) < kSameSetting &&
           std::fabs(mNoiseFloor - inOther.mNoiseFloor) < kSameSetting;
}

void CoeffTableStore::FreeTable::operator()(double* inTable) const
{
    brisken::utility::Free(inTable);
}

CoeffTableStore::CoeffTableStore(const Key& inKey, double inStep, double inCutoffDivisor) : mKey(inKey)
{
    LayOut(inStep);
    if (IsPlain()) {
        FillPlain(inCutoffDivisor);
    } else {
        FillBanks(inCutoffDivisor);
    }
}

void CoeffTableStore::LayOut(double inStep)
{
    constexpr int kBlock = brisken::filter::kRowBankBlock;
    const int rows = mKey.mTableCount;
    // Banks whose rows are more zeros than taps are not worth it.
    if (rows >= kMostTableRows || inStep * kBankRows > static_cast<double>(rows) * mKey.mOrder) {
        return;
    }
    mCycle.mNumRows = rows;
    mCycle.mStep = static_cast<std::int64_t>(inStep);
    while (mCycle.mInverseStep * mCycle.mStep % rows != 1 % rows) { // rows and step share no divisor
        ++mCycle.mInverseStep;
    }
    const int rounds = rows < kShortCycle ? kBankRows / std::gcd(rows, kBankRows) : 1;
    mCycle.mLength = rows * rounds;
    mCycle.mAdvance = static_cast<int>(mCycle.mStep) * rounds;
    for (int index = 0; index < mCycle.mLength; ++index) {
        const int offset = static_cast<int>(mCycle.GetOffset(index));
        if (index % kBankRows == 0) {
            mCycle.mBankOffsets.push_back(offset);
        }
        mCycle.mMostZeros = std::max(mCycle.mMostZeros, offset - mCycle.mBankOffsets.back());
    }
    mCycle.mRowLength = (mKey.mOrder + mCycle.mMostZeros + kBlock - 1) / kBlock * kBlock;
}

void CoeffTableStore::Allocate(std::uint64_t inSize)
{
    if (inSize <= std::numeric_limits<unsigned>::max()) {
        mTable.reset(brisken::utility::Malloc_Double(static_cast<unsigned>(inSize)));
    }
    if (!mTable) {
        throw std::bad_alloc();
    }
    brisken::utility::Zero(static_cast<unsigned>(inSize), mTable.get());
}

void CoeffTableStore::FillPlain(double inCutoffDivisor)
{
    const int rows = mKey.mTableCount;
    Allocate(static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(mKey.mRowStride));
    const Window window(mKey.mOrder, mKey.mNoiseFloor);
    for (int row = 0; row < rows; ++row) {
        BuildTable(mKey.mOrder, static_cast<double>(row) / rows, inCutoffDivisor, window,
                   mTable.get() + static_cast<std::ptrdiff_t>(row) * mKey.mRowStride);
    }
}

void CoeffTableStore::FillBanks(double inCutoffDivisor)
{
    const int rows = mKey.mTableCount;
    Allocate(static_cast<std::uint64_t>(mCycle.GetNumBanks()) *
             static_cast<std::uint64_t>(mCycle.mRowLength) * brisken::filter::kRowBankRows);
    const Window window(mKey.mOrder, mKey.mNoiseFloor);
    std::vector<double> taps(static_cast<std::size_t>(mKey.mOrder));
    for (int row = 0; row < rows; ++row) {
        BuildTable(mKey.mOrder, static_cast<double>(row) / rows, inCutoffDivisor, window, taps.data());
        for (auto index = static_cast<unsigned>(mCycle.GetIndex(row));
             index < static_cast<unsigned>(mCycle.mLength); index += static_cast<unsigned>(rows)) {
            const unsigned zeros = GetNumZeros(static_cast<int>(index));
            double* const bank = mTable.get() + GetBankStart(static_cast<int>(index / kBankRows));
            for (unsigned tap = 0; tap < taps.size(); ++tap) {
                bank[brisken::filter::GetRowBankIndex(index % kBankRows, zeros + tap)] = taps[tap];
            }
        }
    }
}

unsigned CoeffTableStore::GetNumZeros(int inIndex) const
{
    const auto bank = static_cast<std::size_t>(inIndex / kBankRows);
    return static_cast<unsigned>(mCycle.GetOffset(inIndex) - mCycle.mBankOffsets[bank]);
}

double CoeffTableStore::SumTaps(int inIndex, const double* inWindow) const
{
    const unsigned zeros = GetNumZeros(inIndex);
    const double* const bank = GetBank(inIndex / kBankRows);
    double sum = 0.0;
    for (unsigned tap = 0; tap < static_cast<unsigned>(mKey.mOrder); ++tap) {
        sum += bank[brisken::filter::GetRowBankIndex(inIndex % kBankRows, zeros + tap)] * inWindow[tap];
    }
    return sum;
}

std::shared_ptr<const CoeffTableStore> FindInCache(const CoeffTableStore::Key& inKey)
{
    const ombrel::threads::RecursiveMutex::ScopedLock lock(gCache.mMutex,
                                                           "tessaro::Resample FindInCache(...)");
    for (const auto& store : gCache.mStores) {
        if (store && store->GetKey().Matches(inKey)) {
            return store;
        }
    }
    return nullptr;
}

void AddToCache(std::shared_ptr<const CoeffTableStore> inStore)
{
    const ombrel::threads::RecursiveMutex::ScopedLock lock(gCache.mMutex,
                                                           "tessaro::Resampled AddToCache(...)");
    gCache.mStores.pop_back();
    gCache.mStores.push_front(std::move(inStore));
}

} // namespace tessaro
