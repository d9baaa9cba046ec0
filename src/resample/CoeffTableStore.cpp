#include "CoeffTableStore.h"

#include <cmath>
#include <deque>
#include <limits>
#include <new>
#include <numbers>

#include <brisken/Utility.h>
#include <ombrel/threads/RecursiveMutex.h>

namespace tessaro {

namespace {

constexpr std::size_t kCacheSize = 64;
constexpr double kSameSetting = 1e-5;
/// From here on, in dB, a Kaiser window reaches the noise floor.
constexpr double kLowestKaiserFloor = 60.0;

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

CoeffTableStore::CoeffTableStore(const Key& inKey, double inCutoffDivisor) : mKey(inKey)
{
    const auto size =
        static_cast<std::uint64_t>(inKey.mRowStride) * static_cast<std::uint64_t>(inKey.mTableCount);
    if (size <= std::numeric_limits<unsigned>::max()) {
        mTable.reset(brisken::utility::Malloc_Double(static_cast<unsigned>(size)));
    }
    if (!mTable) {
        throw std::bad_alloc();
    }
    brisken::utility::Zero(static_cast<unsigned>(size), mTable.get());
    const Window window(inKey.mOrder, inKey.mNoiseFloor);
    for (int row = 0; row < inKey.mTableCount; ++row) {
        BuildTable(inKey.mOrder, static_cast<double>(row) / inKey.mTableCount, inCutoffDivisor, window,
                   mTable.get() + static_cast<std::ptrdiff_t>(row) * inKey.mRowStride);
    }
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
