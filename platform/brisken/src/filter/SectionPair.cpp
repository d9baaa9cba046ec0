#include <brisken/filter/SectionPair.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/SectionPair.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Steps that are laid out in lanes at a time
constexpr unsigned kChunk = 128;

#if HWY_TARGET == HWY_SCALAR

struct PlainSection
{
    float Step(float inX)
    {
        const double w = (inX - taps.a2 * past[1]) - taps.a1 * past[0];
        const double y = taps.b0 * w + (taps.b1 * past[0] + taps.b2 * past[1]);
        past[1] = past[0];
        past[0] = static_cast<float>(w);
        return static_cast<float>(y);
    }

    const SectionTaps& taps;
    double* past;
};

void RunPairs(unsigned inNumRows, unsigned inCount, const float* const* inInput, float* const* outOutput,
              const SectionTaps* inTaps, SectionPairState* ioStates)
{
    for (unsigned row = 0; row < inNumRows; ++row) {
        PlainSection first{inTaps[0], ioStates[row].past};
        PlainSection second{inTaps[1], ioStates[row].past + 2};
        for (unsigned i = 0; i < inCount; ++i) {
            outOutput[row][i] = second.Step(first.Step(inInput[row][i]));
        }
    }
}

#else

// Two lanes a row: the first section in the even one, the second, some steps behind, in the odd one. A step's
// output takes three steps to get through its sum and its rounding; sooner nothing may wait for it.
constexpr unsigned kSkew = 3;
using Wide = hn::CappedTag<double, 4>;
using Narrow = hn::Rebind<float, Wide>;
using Vector = hn::Vec<Wide>;
constexpr std::size_t kLanes = hn::MaxLanes(Wide());
constexpr unsigned kRowsPerVector = kLanes / 2;

/// To single precision and back
HWY_INLINE Vector RoundToFloat(Vector inValue)
{
    return hn::PromoteTo(Wide(), hn::DemoteTo(Narrow(), inValue));
}

/// The same in integer steps, for the recursion waits for it and these take half the time: rounds to the 24
/// bits of a float's significand, to even where it is halfway. Infinities and NaN are kept. The exponent is
/// not limited to a float's, so that a state beyond its range, or below it, is not cut off.
HWY_INLINE Vector RoundToFloatBits(Vector inValue)
{
    const hn::RebindToUnsigned<Wide> bits;
    constexpr int kDropped = 29;
    constexpr std::uint64_t kBelowHalf = (std::uint64_t{1} << (kDropped - 1)) - 1;
    const auto value = hn::BitCast(bits, inValue);
    const auto isOdd = hn::And(hn::ShiftRight<kDropped>(value), hn::Set(bits, 1));
    const auto rounded = hn::Add(hn::Add(value, hn::Set(bits, kBelowHalf)), isOdd);
    return hn::BitCast(Wide(), hn::And(rounded, hn::Set(bits, ~((std::uint64_t{1} << kDropped) - 1))));
}

HWY_INLINE Vector LoadPair(double inEven, double inOdd)
{
    return hn::OddEven(hn::Set(Wide(), inOdd), hn::Set(Wide(), inEven));
}

struct Taps
{
    explicit Taps(const SectionTaps* inTaps)
        : a1(LoadPair(inTaps[0].a1, inTaps[1].a1)),
          a2(LoadPair(inTaps[0].a2, inTaps[1].a2)),
          b0(LoadPair(inTaps[0].b0, inTaps[1].b0)),
          b1(LoadPair(inTaps[0].b1, inTaps[1].b1)),
          b2(LoadPair(inTaps[0].b2, inTaps[1].b2))
    {
    }

    Vector a1, a2, b0, b1, b2;
};

struct Sections
{
    /// `inX` is in the even lanes; the odd ones take what the first section gave `kSkew` steps ago.
    HWY_INLINE void Step(const Taps& inTaps, Vector inX)
    {
        const auto x = hn::OddEven(hn::DupEven(oldestY), inX);
        oldestY = olderY;
        olderY = y;
        const auto w = hn::NegMulAdd(inTaps.a1, s1, hn::NegMulAdd(inTaps.a2, s2, x));
        y = RoundToFloat(hn::MulAdd(inTaps.b0, w, hn::MulAdd(inTaps.b1, s1, hn::Mul(inTaps.b2, s2))));
        s2 = s1;
        s1 = RoundToFloatBits(w);
    }

    Vector s1, s2, y, olderY, oldestY;
};

/// Several vectors of rows. Rows beyond the last are computed as zeros and dropped.
template <unsigned kVectors>
class Group
{
public:
    Group(unsigned inNumRows, const float* const* inInput, float* const* outOutput, const SectionTaps* inTaps,
          SectionPairState* ioStates)
        : mNumRows(inNumRows), mInput(inInput), mOutput(outOutput), mStates(ioStates), mTaps(inTaps)
    {
    }

    void Run(unsigned inCount)
    {
        LoadStates();
        for (unsigned step = 0; step < kSkew; ++step) {
            RunEdge(step, step < inCount, false);
        }
        for (unsigned begin = kSkew; begin < inCount; begin += kChunk) {
            RunChunk(begin, std::min(kChunk, inCount - begin));
        }
        for (unsigned step = std::max(inCount, kSkew); step < inCount + kSkew; ++step) {
            RunEdge(step, false, true);
        }
        StoreStates();
    }

private:
    static constexpr unsigned kWidth = kVectors * static_cast<unsigned>(kLanes);

    void LoadStates()
    {
        HWY_ALIGN double s1[kWidth] = {};
        HWY_ALIGN double s2[kWidth] = {};
        for (unsigned row = 0; row < mNumRows; ++row) {
            for (unsigned section = 0; section < 2; ++section) {
                s1[2 * row + section] = mStates[row].past[2 * section];
                s2[2 * row + section] = mStates[row].past[2 * section + 1];
            }
        }
        for (unsigned v = 0; v < kVectors; ++v) {
            mSections[v] = {hn::Load(Wide(), s1 + v * kLanes), hn::Load(Wide(), s2 + v * kLanes),
                            hn::Zero(Wide()), hn::Zero(Wide()), hn::Zero(Wide())};
        }
    }

    void StoreStates()
    {
        HWY_ALIGN double s1[kWidth];
        HWY_ALIGN double s2[kWidth];
        for (unsigned v = 0; v < kVectors; ++v) {
            hn::Store(mSections[v].s1, Wide(), s1 + v * kLanes);
            hn::Store(mSections[v].s2, Wide(), s2 + v * kLanes);
        }
        for (unsigned row = 0; row < mNumRows; ++row) {
            for (unsigned section = 0; section < 2; ++section) {
                mStates[row].past[2 * section] = s1[2 * row + section];
                mStates[row].past[2 * section + 1] = s2[2 * row + section];
            }
        }
    }

    /// A step for the first sections alone, for the second ones alone, which are `kSkew` samples behind, or
    /// for neither.
    void RunEdge(unsigned inStep, bool inFirst, bool inSecond)
    {
        const hn::Rebind<std::uint64_t, Wide> bits;
        const auto isFirst = hn::OddEven(hn::Zero(bits), hn::Set(bits, inFirst ? ~std::uint64_t{0} : 0));
        const auto isSecond = hn::OddEven(hn::Set(bits, inSecond ? ~std::uint64_t{0} : 0), hn::Zero(bits));
        const auto isActive = hn::MaskFromVec(hn::BitCast(Wide(), hn::Or(isFirst, isSecond)));
        for (unsigned v = 0; v < kVectors; ++v) {
            HWY_ALIGN double lanes[kLanes] = {};
            const auto rows = RowsOf(v);
            for (unsigned row = 0; row < rows && inFirst; ++row) {
                lanes[2 * row] = mInput[v * kRowsPerVector + row][inStep];
            }
            Sections& sections = mSections[v];
            const Vector s1 = sections.s1;
            const Vector s2 = sections.s2;
            sections.Step(mTaps, hn::Load(Wide(), lanes));
            sections.s1 = hn::IfThenElse(isActive, sections.s1, s1);
            sections.s2 = hn::IfThenElse(isActive, sections.s2, s2);
            hn::Store(sections.y, Wide(), lanes);
            for (unsigned row = 0; row < rows && inSecond; ++row) {
                mOutput[v * kRowsPerVector + row][inStep - kSkew] = static_cast<float>(lanes[2 * row + 1]);
            }
        }
    }

    /// All sections. Writes the output of the sample `kSkew` before each step.
    void RunChunk(unsigned inBegin, unsigned inCount)
    {
        for (unsigned row = 0; row < mNumRows; ++row) {
            const float* const input = mInput[row] + inBegin;
            for (unsigned i = 0; i < inCount; ++i) {
                mLanes[i * kWidth + 2 * row] = input[i];
            }
        }
        Sections sections[kVectors];
        std::copy_n(mSections, kVectors, sections);
        const Taps taps = mTaps;
        for (unsigned i = 0; i < inCount; ++i) {
            for (unsigned v = 0; v < kVectors; ++v) {
                double* const lanes = mLanes + i * kWidth + v * kLanes;
                sections[v].Step(taps, hn::Load(Wide(), lanes));
                hn::Store(sections[v].y, Wide(), lanes);
            }
        }
        std::copy_n(sections, kVectors, mSections);
        for (unsigned row = 0; row < mNumRows; ++row) {
            float* const output = mOutput[row] + inBegin - kSkew;
            for (unsigned i = 0; i < inCount; ++i) {
                output[i] = static_cast<float>(mLanes[i * kWidth + 2 * row + 1]);
            }
        }
    }

    unsigned RowsOf(unsigned inVector) const
    {
        return std::min(mNumRows - std::min(mNumRows, inVector * kRowsPerVector), kRowsPerVector);
    }

    unsigned mNumRows;
    const float* const* mInput;
    float* const* mOutput;
    SectionPairState* mStates;
    Taps mTaps;
    Sections mSections[kVectors];
    HWY_ALIGN double mLanes[kChunk * kWidth] = {};
};

template <unsigned kVectors>
void RunGroup(unsigned inNumRows, unsigned inCount, const float* const* inInput, float* const* outOutput,
              const SectionTaps* inTaps, SectionPairState* ioStates)
{
    Group<kVectors>(inNumRows, inInput, outOutput, inTaps, ioStates).Run(inCount);
}

void RunPairs(unsigned inNumRows, unsigned inCount, const float* const* inInput, float* const* outOutput,
              const SectionTaps* inTaps, SectionPairState* ioStates)
{
    constexpr unsigned kMostVectors = 3;
    while (inNumRows != 0) {
        const unsigned rows = std::min(inNumRows, kMostVectors * kRowsPerVector);
        const unsigned vectors = (rows + kRowsPerVector - 1) / kRowsPerVector;
        const auto run = vectors == 1 ? RunGroup<1> : vectors == 2 ? RunGroup<2> : RunGroup<3>;
        run(rows, inCount, inInput, outOutput, inTaps, ioStates);
        inNumRows -= rows;
        inInput += rows;
        outOutput += rows;
        ioStates += rows;
    }
}

#endif

} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "Dispatch.h"

namespace brisken::filter {

HWY_EXPORT(RunPairs);

void RunSectionPair(unsigned inNumRows, unsigned inCount, const float* const* inInput,
                    float* const* outOutput, const SectionTaps* inTaps, SectionPairState* ioStates)
{
    if (inCount != 0) {
        BRISKEN_DISPATCH(RunPairs)(inNumRows, inCount, inInput, outOutput, inTaps, ioStates);
    }
}

} // namespace brisken::filter

#endif // HWY_ONCE
