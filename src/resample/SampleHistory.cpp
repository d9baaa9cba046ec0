#include "SampleHistory.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <new>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

/// By their exponents, which compilers vectorise.
bool AreAllFinite(const float* inSamples, int inCount)
{
    constexpr std::uint32_t kExponent = 0x7f800000;
    std::uint32_t found = 0;
    for (int i = 0; i < inCount; ++i) {
        found |= (std::bit_cast<std::uint32_t>(inSamples[i]) & kExponent) == kExponent ? 1 : 0;
    }
    return found == 0;
}

} // namespace

void SampleHistory::FreeSamples::operator()(double* inSamples) const
{
    brisken::utility::Free(inSamples);
}

SampleHistory::Samples SampleHistory::Allocate(int inSize)
{
    Samples samples(brisken::utility::Malloc_Double(static_cast<unsigned>(inSize)));
    if (!samples) {
        throw std::bad_alloc();
    }
    return samples;
}

SampleHistory::SampleHistory(int inWindow, int inBefore, int inBehind)
    : mWindow(inWindow),
      mBefore(inBefore),
      // Moves are rare beside the samples between them, for long windows too.
      mRoom(inBefore + std::max(2 * kMostSteps, inWindow)),
      mSize(mRoom + inWindow + inBehind),
      mSamples(Allocate(mSize)),
      mPosition(inBefore)
{
    Clear();
}

SampleHistory::SampleHistory(const SampleHistory& inOther)
    : mWindow(inOther.mWindow),
      mBefore(inOther.mBefore),
      mRoom(inOther.mRoom),
      mSize(inOther.mSize),
      mSamples(Allocate(mSize)),
      mPosition(inOther.mPosition),
      mNumAhead(inOther.mNumAhead),
      mIsFinite(inOther.mIsFinite)
{
    brisken::utility::Copy(static_cast<unsigned>(mSize), inOther.mSamples.get(), mSamples.get());
}

void SampleHistory::Clear()
{
    brisken::utility::Zero(static_cast<unsigned>(mSize), mSamples.get());
    mNumAhead = 0;
    mIsFinite = true;
}

void SampleHistory::MakeRoom(int inSteps)
{
    if (mPosition + inSteps > mRoom) {
        MoveToFront();
    }
}

void SampleHistory::MoveToFront()
{
    double* const front = mSamples.get();
    const double* const kept = front + mPosition - mBefore;
    const double* const keptEnd = front + mPosition + mWindow - 1 + mNumAhead;
    double* const end = std::copy(kept, keptEnd, front);
    mPosition = mBefore;
    if (!mIsFinite && std::all_of(front, end, [](double inX) { return std::isfinite(inX); })) {
        std::fill(end, front + mSize, 0.0);
        mIsFinite = true;
    }
}

void SampleHistory::Append(const float* inSamples, int inCount)
{
    brisken::utility::Convert(static_cast<unsigned>(inCount), inSamples,
                              mSamples.get() + mPosition + mWindow - 1 + mNumAhead);
    mNumAhead += inCount;
    mIsFinite = mIsFinite && AreAllFinite(inSamples, inCount);
}

void SampleHistory::Advance(int inSteps)
{
    mPosition += inSteps;
    mNumAhead -= inSteps;
}

} // namespace tessaro
