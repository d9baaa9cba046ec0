// The loops under all element-wise kernels. Included once for each target, from inside a kernel file, after
// hwy/foreach_target.h.

#if defined(BRISKEN_UTILITY_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_UTILITY_ROWS_INL_H_
#undef BRISKEN_UTILITY_ROWS_INL_H_
#else
#define BRISKEN_UTILITY_ROWS_INL_H_
#endif

#include <cstddef>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A step says what happens to one vector of elements that begins at an index of the row:
//
//     auto Compute(d, i) const;            reads the sources and returns the result
//     void Store(d, i, result) const;      writes it
//     static constexpr size_t kMinLanes;   the smallest vector that it can do, a power of two
//
// The row length is a multiple of kMinLanes. The two halves are apart so that a row which is no multiple of
// the vector can end in a vector that overlaps its neighbour: it is computed before anything is stored, so
// that a destination may equal a source. That needs no masks, reads nothing beyond the row and is the same
// code for every target.

/// Steps over a row that is shorter than a vector: two overlapping vectors of the largest half, quarter, ...
/// that fits.
template <class D, class Step>
HWY_INLINE void RunShortRow(D d, std::size_t inCount, const Step& inStep)
{
    if constexpr (hn::MaxLanes(d) > Step::kMinLanes) {
        const hn::Half<D> half;
        if (inCount < hn::Lanes(half)) {
            RunShortRow(half, inCount, inStep);
            return;
        }
        const std::size_t lastStart = inCount - hn::Lanes(half);
        const auto first = inStep.Compute(half, 0);
        const auto last = inStep.Compute(half, lastStart);
        inStep.Store(half, 0, first);
        inStep.Store(half, lastStart, last);
    }
}

// The loops take four vectors a round, or one where `kUnroll` is false, which is right for long steps. Each
// result is stored as soon as it is there: rows in place would lose a tenth of their speed if four were held
// back.

/// Steps over whole vectors from front to back.
template <bool kUnroll, class D, class Step>
HWY_INLINE void RunWholeVectors(D d, std::size_t inCount, const Step& inStep)
{
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    if constexpr (kUnroll) {
        for (; i + 4 * lanes <= inCount; i += 4 * lanes) {
            inStep.Store(d, i, inStep.Compute(d, i));
            inStep.Store(d, i + lanes, inStep.Compute(d, i + lanes));
            inStep.Store(d, i + 2 * lanes, inStep.Compute(d, i + 2 * lanes));
            inStep.Store(d, i + 3 * lanes, inStep.Compute(d, i + 3 * lanes));
        }
    }
    for (; i < inCount; i += lanes) {
        inStep.Store(d, i, inStep.Compute(d, i));
    }
}

/// Steps over a row from front to back. The destination may equal a source whose elements are of the same
/// size or larger.
template <bool kUnroll = true, class D, class Step>
HWY_INLINE void RunRow(D d, std::size_t inCount, const Step& inStep)
{
    const std::size_t lanes = hn::Lanes(d);
    if (HWY_UNLIKELY(inCount < lanes)) {
        RunShortRow(d, inCount, inStep);
        return;
    }
    const std::size_t rest = inCount % lanes;
    if (rest == 0) {
        RunWholeVectors<kUnroll>(d, inCount, inStep);
    } else {
        const auto last = inStep.Compute(d, inCount - lanes);
        RunWholeVectors<kUnroll>(d, inCount - rest, inStep);
        inStep.Store(d, inCount - lanes, last);
    }
}

/// Steps over a row from back to front: for steps that write more bytes than they read, so that the
/// destination may begin where a source begins.
template <bool kUnroll = true, class D, class Step>
HWY_INLINE void RunRowBackwards(D d, std::size_t inCount, const Step& inStep)
{
    const std::size_t lanes = hn::Lanes(d);
    if (HWY_UNLIKELY(inCount < lanes)) {
        RunShortRow(d, inCount, inStep);
        return;
    }
    const auto first = inStep.Compute(d, 0);
    std::size_t i = inCount;
    if constexpr (kUnroll) {
        for (; i >= 4 * lanes; i -= 4 * lanes) {
            inStep.Store(d, i - lanes, inStep.Compute(d, i - lanes));
            inStep.Store(d, i - 2 * lanes, inStep.Compute(d, i - 2 * lanes));
            inStep.Store(d, i - 3 * lanes, inStep.Compute(d, i - 3 * lanes));
            inStep.Store(d, i - 4 * lanes, inStep.Compute(d, i - 4 * lanes));
        }
    }
    for (; i > lanes; i -= lanes) {
        inStep.Store(d, i - lanes, inStep.Compute(d, i - lanes));
    }
    if (i > 0) {
        inStep.Store(d, 0, first);
    }
}

/// Doubles to floats, rounded to the nearest, to infinity beyond the range of float; the scalar target's own
/// conversion would stop at the largest float.
template <class D, class V>
HWY_INLINE auto Narrow(D inTag, V inValues)
{
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(inTag, static_cast<float>(hn::GetLane(inValues)));
#else
    return hn::DemoteTo(inTag, inValues);
#endif
}

/// out = op(a)
template <class Op, class T>
struct UnaryStep
{
    static constexpr std::size_t kMinLanes = Op::kMinLanes;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Op()(hn::LoadU(d, inA + i));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const T* inA;
    T* out;
};

/// out = op(a, b)
template <class Op, class T>
struct BinaryStep
{
    static constexpr std::size_t kMinLanes = Op::kMinLanes;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Op()(hn::LoadU(d, inA + i), hn::LoadU(d, inB + i));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const T* inA;
    const T* inB;
    T* out;
};

/// out = op(a, constant)
template <class Op, class T>
struct ConstantStep
{
    static constexpr std::size_t kMinLanes = Op::kMinLanes;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Op()(hn::LoadU(d, inA + i), hn::Set(d, inConstant));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const T* inA;
    T inConstant;
    T* out;
};

/// What all operations on single elements have in common.
struct ElementOp
{
    static constexpr std::size_t kMinLanes = 1;
    static constexpr bool kUnroll = true;
};

// The kernels of those three shapes.

template <class Op, class T>
void UnaryRow(unsigned inCount, const T* inA, T* out)
{
    RunRow<Op::kUnroll>(hn::ScalableTag<T>(), inCount, UnaryStep<Op, T>{inA, out});
}

template <class Op, class T>
void BinaryRow(unsigned inCount, const T* inA, const T* inB, T* out)
{
    RunRow(hn::ScalableTag<T>(), inCount, BinaryStep<Op, T>{inA, inB, out});
}

template <class Op, class T>
void ConstantRow(unsigned inCount, const T* inA, T inConstant, T* out)
{
    RunRow(hn::ScalableTag<T>(), inCount, ConstantStep<Op, T>{inA, inConstant, out});
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif // per-target include guard
