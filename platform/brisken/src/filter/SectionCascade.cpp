#include <brisken/filter/SectionCascade.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/SectionCascade.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// What the sections of some rows need; the memories and taps of a row lie `rowPitch` sections behind those
/// of the row before.
template <typename Sample>
struct Work
{
    Sample* const* rows;
    unsigned numRows;
    unsigned count;
    unsigned stride;
    const SectionTaps* taps;
    SectionMemory* memories;
    unsigned numSections;
    unsigned rowPitch;
};

/// Sections of a row that run in one pass
constexpr unsigned kMostSections = 8;

#if HWY_TARGET == HWY_SCALAR

constexpr unsigned kRowsAtATime = 1;

template <typename Sample>
void RunPass(const Work<Sample>& inWork)
{
    for (unsigned section = 0; section < inWork.numSections; ++section) {
        const SectionTaps taps = inWork.taps[section];
        SectionMemory past = inWork.memories[section];
        Sample* sample = inWork.rows[0];
        for (unsigned i = 0; i < inWork.count; ++i, sample += inWork.stride) {
            const double x = *sample;
            const double y = ((taps.b2 * past.x2 + taps.b1 * past.x1 + taps.b0 * x) - taps.a2 * past.y2) -
                             taps.a1 * past.y1;
            past = {x, past.x1, y, past.y1};
            *sample = static_cast<Sample>(y);
        }
        inWork.memories[section] = past;
    }
}

#else

// Each block of two lanes belongs to one row and to two sections that follow each other. A section's input is
// what the lane before it gave two steps ago, which is also the older half of that lane's memory.
constexpr unsigned kSkew = 2;
constexpr unsigned kChunk = 128;
using Wide = hn::CappedTag<double, 4>;
using Vector = hn::Vec<Wide>;
constexpr unsigned kLanes = hn::MaxLanes(Wide());
constexpr unsigned kRowsAtATime = kLanes / 2;

struct Taps
{
    Vector b0, b1, b2, a1, a2;
};

struct Past
{
    Vector x1, x2, y1, y2;
};

HWY_INLINE Vector Output(const Taps& inTaps, const Past& inPast, Vector inX)
{
    auto sum = hn::MulAdd(inTaps.b1, inPast.x1, hn::Mul(inTaps.b2, inPast.x2));
    sum = hn::NegMulAdd(inTaps.a2, inPast.y2, hn::MulAdd(inTaps.b0, inX, sum));
    return hn::NegMulAdd(inTaps.a1, inPast.y1, sum);
}

/// Input of the sections, of which the even ones follow on the odd ones of `inBefore`, the odd ones on the
/// even ones of `inOwn`.
template <typename Sample>
HWY_INLINE Vector HandOn(Vector inBefore, Vector inOwn)
{
    const auto x = hn::CombineShiftRightBytes<sizeof(double)>(Wide(), inOwn, inBefore);
    if constexpr (std::is_same_v<Sample, float>) {
        return hn::PromoteTo(Wide(), hn::DemoteTo(hn::Rebind<float, Wide>(), x));
    } else {
        return x;
    }
}

template <typename Sample, unsigned kVectors>
class Pipeline
{
public:
    explicit Pipeline(const Work<Sample>& inWork) : mWork(inWork), mLag(kSkew * (inWork.numSections - 1)) {}

    void Run()
    {
        LoadSections();
        for (unsigned step = 0; step < mLag; ++step) {
            RunEdge(step);
        }
        for (unsigned begin = mLag; begin < mWork.count; begin += kChunk) {
            RunChunk(begin, std::min(kChunk, mWork.count - begin));
        }
        for (unsigned step = std::max(mLag, mWork.count); step < mWork.count + mLag; ++step) {
            RunEdge(step);
        }
        StoreMemories();
    }

private:
    static constexpr unsigned kWidth = kVectors * kLanes;

    static unsigned LaneOf(unsigned inRow, unsigned inSection)
    {
        return inSection / 2 * kLanes + 2 * inRow + inSection % 2;
    }

    /// Puts one value of each section's record in the lanes of one vector of each group.
    template <typename Group, typename Record>
    void Gather(Group* outGroups, Vector Group::*inVector, const Record* inRecords, double Record::*inValue)
    {
        HWY_ALIGN double lanes[kWidth] = {};
        for (unsigned row = 0; row < mWork.numRows; ++row) {
            for (unsigned section = 0; section < mWork.numSections; ++section) {
                lanes[LaneOf(row, section)] = inRecords[row * mWork.rowPitch + section].*inValue;
            }
        }
        for (unsigned v = 0; v < kVectors; ++v) {
            outGroups[v].*inVector = hn::Load(Wide(), lanes + v * kLanes);
        }
    }

    void LoadSections()
    {
        Gather(mTaps, &Taps::b0, mWork.taps, &SectionTaps::b0);
        Gather(mTaps, &Taps::b1, mWork.taps, &SectionTaps::b1);
        Gather(mTaps, &Taps::b2, mWork.taps, &SectionTaps::b2);
        Gather(mTaps, &Taps::a1, mWork.taps, &SectionTaps::a1);
        Gather(mTaps, &Taps::a2, mWork.taps, &SectionTaps::a2);
        const SectionMemory* const memories = mWork.memories;
        Gather(mPast, &Past::x1, memories, &SectionMemory::x1);
        Gather(mPast, &Past::x2, memories, &SectionMemory::x2);
        Gather(mPast, &Past::y1, memories, &SectionMemory::y1);
        Gather(mPast, &Past::y2, memories, &SectionMemory::y2);
        TakeHandedOn();
    }

    void StoreMemories() const
    {
        HWY_ALIGN double lanes[4][kWidth];
        for (unsigned v = 0; v < kVectors; ++v) {
            hn::Store(mPast[v].x1, Wide(), lanes[0] + v * kLanes);
            hn::Store(mPast[v].x2, Wide(), lanes[1] + v * kLanes);
            hn::Store(mPast[v].y1, Wide(), lanes[2] + v * kLanes);
            hn::Store(mPast[v].y2, Wide(), lanes[3] + v * kLanes);
        }
        for (unsigned row = 0; row < mWork.numRows; ++row) {
            for (unsigned section = 0; section < mWork.numSections; ++section) {
                const auto lane = LaneOf(row, section);
                mWork.memories[row * mWork.rowPitch + section] = {lanes[0][lane], lanes[1][lane],
                                                                  lanes[2][lane], lanes[3][lane]};
            }
        }
    }

    /// While all sections run, what they hand on is in their memories.
    void TakeHandedOn()
    {
        for (unsigned v = 0; v < kVectors; ++v) {
            mNewer[v] = mPast[v].y1;
            mOlder[v] = mPast[v].y2;
        }
    }

    /// Lanes whose section has a sample to work on
    HWY_INLINE auto ActiveLanes(unsigned inStep, unsigned inVector) const
    {
        const auto step = hn::Set(Wide(), static_cast<double>(inStep));
        const auto delay = hn::OddEven(hn::Set(Wide(), kSkew * (2.0 * inVector + 1.0)),
                                       hn::Set(Wide(), kSkew * (2.0 * inVector)));
        const auto end = hn::Add(delay, hn::Set(Wide(), static_cast<double>(mWork.count)));
        return hn::And(hn::Le(delay, step), hn::Lt(step, end));
    }

    /// The samples of all rows, each in the lanes of its row
    HWY_INLINE Vector LoadInput(unsigned inSample) const
    {
        const auto index = inSample * mWork.stride;
        const auto first = hn::Set(Wide(), static_cast<double>(mWork.rows[0][index]));
        if constexpr (kLanes == 2) {
            return first;
        } else {
            // Without a second row its lanes repeat the first.
            const auto* const second = mWork.rows[mWork.numRows - 1];
            return hn::ConcatUpperLower(Wide(), hn::Set(Wide(), static_cast<double>(second[index])), first);
        }
    }

    /// A step in which some sections have not begun or are done: their memory stays as it is.
    void RunEdge(unsigned inStep)
    {
        auto before = inStep < mWork.count ? LoadInput(inStep) : hn::Zero(Wide());
        for (unsigned v = 0; v < kVectors; ++v) {
            const auto isActive = ActiveLanes(inStep, v);
            auto& past = mPast[v];
            const auto x = HandOn<Sample>(before, mOlder[v]);
            const auto y = Output(mTaps[v], past, x);
            before = mOlder[v];
            mOlder[v] = mNewer[v];
            mNewer[v] = y;
            past = {hn::IfThenElse(isActive, x, past.x1), hn::IfThenElse(isActive, past.x1, past.x2),
                    hn::IfThenElse(isActive, y, past.y1), hn::IfThenElse(isActive, past.y1, past.y2)};
        }
        HWY_ALIGN double lanes[kLanes];
        hn::Store(mNewer[kVectors - 1], Wide(), lanes);
        for (unsigned row = 0; row < mWork.numRows && inStep >= mLag; ++row) {
            mWork.rows[row][(inStep - mLag) * mWork.stride] = static_cast<Sample>(lanes[OutputLane(row)]);
        }
    }

    /// Steps in which all sections run. Writes the samples `mLag` before.
    void RunChunk(unsigned inBegin, unsigned inCount)
    {
        RunSteps(inBegin, inCount);
        TakeHandedOn();
        for (unsigned row = 0; row < mWork.numRows; ++row) {
            Sample* dest = mWork.rows[row] + (inBegin - mLag) * mWork.stride;
            const double* lane = mLanes + OutputLane(row);
            for (unsigned i = 0; i < inCount; ++i, dest += mWork.stride, lane += kLanes) {
                *dest = static_cast<Sample>(*lane);
            }
        }
    }

    /// Taps are read where they are, since registers are few; only the recursion's own stay in them.
    void RunSteps(unsigned inBegin, unsigned inCount)
    {
        Past past[kVectors];
        std::copy_n(mPast, kVectors, past);
        for (unsigned i = 0; i < inCount; ++i) {
            auto before = LoadInput(inBegin + i);
            for (unsigned v = 0; v < kVectors; ++v) {
                const auto x = HandOn<Sample>(before, past[v].y2);
                const auto y = Output(mTaps[v], past[v], x);
                before = past[v].y2;
                past[v] = {x, past[v].x1, y, past[v].y1};
            }
            hn::Store(past[kVectors - 1].y1, Wide(), mLanes + i * kLanes);
        }
        std::copy_n(past, kVectors, mPast);
    }

    unsigned OutputLane(unsigned inRow) const { return 2 * inRow + (mWork.numSections - 1) % 2; }

    const Work<Sample> mWork;
    const unsigned mLag;
    Taps mTaps[kVectors];
    Past mPast[kVectors];
    /// What each section gave one and two steps ago
    Vector mNewer[kVectors];
    Vector mOlder[kVectors];
    /// Of the last vector, step by step
    HWY_ALIGN double mLanes[kChunk * kLanes];
};

template <typename Sample, unsigned kVectors>
void RunPipeline(const Work<Sample>& inWork)
{
    Pipeline<Sample, kVectors>(inWork).Run();
}

template <typename Sample>
void RunPass(const Work<Sample>& inWork)
{
    static_assert(kMostSections == 8);
    switch ((inWork.numSections + 1) / 2) {
    case 1:
        return RunPipeline<Sample, 1>(inWork);
    case 2:
        return RunPipeline<Sample, 2>(inWork);
    case 3:
        return RunPipeline<Sample, 3>(inWork);
    default:
        return RunPipeline<Sample, 4>(inWork);
    }
}

#endif

template <typename Sample>
void RunAll(const Work<Sample>& inWork)
{
    for (unsigned row = 0; row < inWork.numRows; row += kRowsAtATime) {
        for (unsigned section = 0; section < inWork.numSections; section += kMostSections) {
            auto pass = inWork;
            const auto first = row * inWork.rowPitch + section;
            pass.rows += row;
            pass.numRows = std::min(kRowsAtATime, inWork.numRows - row);
            pass.taps += first;
            pass.memories += first;
            pass.numSections = std::min(kMostSections, inWork.numSections - section);
            RunPass(pass);
        }
    }
}

void RunRows(unsigned inNumRows, unsigned inCount, double* const* ioRows, unsigned inNumSections,
             const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    RunAll<double>({ioRows, inNumRows, inCount, 1, inTaps, ioMemories, inNumSections, inNumSections});
}

void RunRounded(unsigned inCount, float* ioRow, unsigned inStride, unsigned inNumSections,
                const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    RunAll<float>({&ioRow, 1, inCount, inStride, inTaps, ioMemories, inNumSections, inNumSections});
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "Dispatch.h"

namespace brisken::filter {

HWY_EXPORT(RunRows);
HWY_EXPORT(RunRounded);

void RunSectionCascade(unsigned inNumRows, unsigned inCount, double* const* ioRows, unsigned inNumSections,
                       const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    if (inCount != 0) {
        BRISKEN_DISPATCH(RunRows)(inNumRows, inCount, ioRows, inNumSections, inTaps, ioMemories);
    }
}

void RunRoundedSectionCascade(unsigned inCount, float* ioRow, unsigned inStride, unsigned inNumSections,
                              const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    if (inCount != 0) {
        BRISKEN_DISPATCH(RunRounded)(inCount, ioRow, inStride, inNumSections, inTaps, ioMemories);
    }
}

} // namespace brisken::filter

#endif // HWY_ONCE
