// The complex transform of one plan: passes over lines of vectors, and the two steps that they make up.

#if defined(BRISKEN_TRANSFORM_COMPLEX_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_TRANSFORM_COMPLEX_INL_H_
#undef BRISKEN_TRANSFORM_COMPLEX_INL_H_
#else
#define BRISKEN_TRANSFORM_COMPLEX_INL_H_
#endif

#include "transform/Butterflies-inl.h"
#include "transform/Plan.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::transform {
namespace HWY_NAMESPACE {

// Sources and sinks of complex vectors. A "line" is work memory with the real and the imaginary vector of
// each element side by side.

template <class D>
struct LineSource
{
    using T = hn::TFromD<D>;
    const T* line;

    HWY_INLINE void Load(D d, std::size_t inIndex, hn::Vec<D>& outRe, hn::Vec<D>& outIm) const
    {
        outRe = hn::Load(d, line + inIndex * 2 * kLanes<D>);
        outIm = hn::Load(d, line + inIndex * 2 * kLanes<D> + kLanes<D>);
    }
};

template <class D>
struct LineSink
{
    using T = hn::TFromD<D>;
    T* line;

    HWY_INLINE void Store(D d, std::size_t inIndex, hn::Vec<D> inRe, hn::Vec<D> inIm) const
    {
        hn::Store(inRe, d, line + inIndex * 2 * kLanes<D>);
        hn::Store(inIm, d, line + inIndex * 2 * kLanes<D> + kLanes<D>);
    }
};

/// Rows of separate real and imaginary parts.
template <class T>
struct SplitInput
{
    using Value = T;
    const T* re;
    const T* im;

    SplitInput From(std::size_t inOffset) const { return {re + inOffset, im + inOffset}; }

    template <class D>
    HWY_INLINE void Load(D d, std::size_t inOffset, hn::Vec<D>& outRe, hn::Vec<D>& outIm) const
    {
        outRe = hn::LoadU(d, re + inOffset);
        outIm = hn::LoadU(d, im + inOffset);
    }
};

template <class T>
struct SplitOutput
{
    T* re;
    T* im;
    T scale;

    SplitOutput From(std::size_t inOffset) const { return {re + inOffset, im + inOffset, scale}; }

    template <class D>
    HWY_INLINE void Store(D d, std::size_t inOffset, hn::Vec<D> inRe, hn::Vec<D> inIm) const
    {
        hn::StoreU(hn::Mul(inRe, hn::Set(d, scale)), d, re + inOffset);
        hn::StoreU(hn::Mul(inIm, hn::Set(d, scale)), d, im + inOffset);
    }
};

/// Pairs of real and imaginary part; the imaginary parts are multiplied by `sign`.
template <class T>
struct PairInput
{
    using Value = T;
    const T* pairs;
    T sign;

    PairInput From(std::size_t inOffset) const { return {pairs + 2 * inOffset, sign}; }

    template <class D>
    HWY_INLINE void Load(D d, std::size_t inOffset, hn::Vec<D>& outRe, hn::Vec<D>& outIm) const
    {
        LoadPairs(d, pairs + 2 * inOffset, outRe, outIm);
        outIm = hn::Mul(outIm, hn::Set(d, sign));
    }
};

template <class T>
struct PairOutput
{
    T* pairs;
    T scaleRe;
    T scaleIm;

    PairOutput From(std::size_t inOffset) const { return {pairs + 2 * inOffset, scaleRe, scaleIm}; }

    template <class D>
    HWY_INLINE void Store(D d, std::size_t inOffset, hn::Vec<D> inRe, hn::Vec<D> inIm) const
    {
        StorePairs(d, hn::Mul(inRe, hn::Set(d, scaleRe)), hn::Mul(inIm, hn::Set(d, scaleIm)),
                   pairs + 2 * inOffset);
    }
};

/// Elements of a matrix column: each a row apart.
template <class D, class Input>
struct ColumnSource
{
    Input input;
    std::size_t stride;

    HWY_INLINE void Load(D d, std::size_t inIndex, hn::Vec<D>& outRe, hn::Vec<D>& outIm) const
    {
        input.Load(d, inIndex * stride, outRe, outIm);
    }
};

template <class D, class Output>
struct ColumnSink
{
    Output output;
    std::size_t stride;

    HWY_INLINE void Store(D d, std::size_t inIndex, hn::Vec<D> inRe, hn::Vec<D> inIm) const
    {
        output.Store(d, inIndex * stride, inRe, inIm);
    }
};

/// Multiplies by the rotation between the steps on the way into a line: that of the first block's columns,
/// turned on to those of the block.
template <class D>
struct RotatingSink
{
    using T = hn::TFromD<D>;
    LineSink<D> sink;
    const T* rotation;
    const T* blockRotation;
    std::size_t rotationLanes;

    HWY_INLINE void Store(D d, std::size_t inIndex, hn::Vec<D> inRe, hn::Vec<D> inIm) const
    {
        const T* factors = rotation + inIndex * 2 * rotationLanes;
        Rotate(inRe, inIm, hn::LoadU(d, factors), hn::LoadU(d, factors + rotationLanes));
        Rotate(inRe, inIm, hn::Set(d, blockRotation[2 * inIndex]),
               hn::Set(d, blockRotation[2 * inIndex + 1]));
        sink.Store(d, inIndex, inRe, inIm);
    }
};

/// One pass of a Stockham transform that more passes follow: `inGroups` groups of `inStride` butterflies.
template <std::size_t kRadix, class D, class Source>
HWY_INLINE void InnerPass(D d, const Source& inSource, const LineSink<D>& inSink, std::size_t inGroups,
                          std::size_t inStride, const hn::TFromD<D>* inTwiddles)
{
    for (std::size_t group = 0; group < inGroups; ++group, inTwiddles += 2 * (kRadix - 1)) {
        for (std::size_t lead = 0; lead < inStride; ++lead) {
            Legs<D, kRadix> legs;
#pragma GCC unroll 16
            for (std::size_t leg = 0; leg < kRadix; ++leg) {
                inSource.Load(d, lead + inStride * (group + inGroups * leg), legs.re[leg], legs.im[leg]);
            }
            Dft(d, legs);
            const auto first = lead + inStride * kRadix * group;
            inSink.Store(d, first, legs.re[0], legs.im[0]);
#pragma GCC unroll 16
            for (std::size_t leg = 1; leg < kRadix; ++leg) {
                Rotate(legs.re[leg], legs.im[leg], hn::Set(d, inTwiddles[2 * leg - 2]),
                       hn::Set(d, inTwiddles[2 * leg - 1]));
                inSink.Store(d, first + inStride * leg, legs.re[leg], legs.im[leg]);
            }
        }
    }
}

/// The pass that ends a transform, or is all of it: no twiddle factors, results in natural order.
template <std::size_t kRadix, class D, class Source, class Sink>
HWY_INLINE void LastPass(D d, const Source& inSource, const Sink& inSink, std::size_t inStride)
{
    for (std::size_t lead = 0; lead < inStride; ++lead) {
        Legs<D, kRadix> legs;
#pragma GCC unroll 16
        for (std::size_t leg = 0; leg < kRadix; ++leg) {
            inSource.Load(d, lead + inStride * leg, legs.re[leg], legs.im[leg]);
        }
        Dft(d, legs);
#pragma GCC unroll 16
        for (std::size_t leg = 0; leg < kRadix; ++leg) {
            inSink.Store(d, lead + inStride * leg, legs.re[leg], legs.im[leg]);
        }
    }
}

template <class D, class Source>
HWY_NOINLINE void RunInnerPass(D d, std::size_t inRadix, const Source& inSource, const LineSink<D>& inSink,
                               std::size_t inGroups, std::size_t inStride, const hn::TFromD<D>* inTwiddles)
{
    switch (inRadix) {
    case 4:
        return InnerPass<4>(d, inSource, inSink, inGroups, inStride, inTwiddles);
    case 8:
        return InnerPass<8>(d, inSource, inSink, inGroups, inStride, inTwiddles);
    default:
        return InnerPass<16>(d, inSource, inSink, inGroups, inStride, inTwiddles);
    }
}

template <class D, class Source, class Sink>
HWY_NOINLINE void RunLastPass(D d, std::size_t inRadix, const Source& inSource, const Sink& inSink,
                              std::size_t inStride)
{
    switch (inRadix) {
    case 4:
        return LastPass<4>(d, inSource, inSink, inStride);
    case 8:
        return LastPass<8>(d, inSource, inSink, inStride);
    default:
        return LastPass<16>(d, inSource, inSink, inStride);
    }
}

/// One transform of at least two passes in each lane. `ioLines` are two lines of work memory.
template <class D, class Source, class Sink, class T = hn::TFromD<D>>
HWY_INLINE void RunPasses(D d, const details::Passes<T>& inPasses, const Source& inSource, const Sink& inSink,
                          T* const (&ioLines)[2])
{
    const auto last = inPasses.count - 1;
    auto stride = inPasses.radix[0];
    auto groups = inPasses.size / stride;
    RunInnerPass(d, stride, inSource, LineSink<D>{ioLines[0]}, groups, 1, inPasses.twiddles[0]);
    for (std::size_t pass = 1; pass < last; ++pass) {
        const auto radix = inPasses.radix[pass];
        groups /= radix;
        RunInnerPass(d, radix, LineSource<D>{ioLines[(pass + 1) % 2]}, LineSink<D>{ioLines[pass % 2]}, groups,
                     stride, inPasses.twiddles[pass]);
        stride *= radix;
    }
    RunLastPass(d, inPasses.radix[last], LineSource<D>{ioLines[(last + 1) % 2]}, inSink, stride);
}

/// Stores a rotated tile of lanes x lanes elements transposed: `outTile` receives one element of the line of
/// each row.
template <class D>
HWY_INLINE void StoreTile(D d, hn::Vec<D>* ioRe, hn::Vec<D>* ioIm, hn::TFromD<D>* outTile)
{
    Transpose(d, ioRe);
    Transpose(d, ioIm);
    const LineSink<D> sink{outTile};
#pragma GCC unroll 16
    for (std::size_t lane = 0; lane < kLanes<D>; ++lane) {
        sink.Store(d, lane, ioRe[lane], ioIm[lane]);
    }
}

/// Transforms the columns of kRadix elements that inSource gives, and rotates them.
template <std::size_t kRadix, class D, class Source, class T = hn::TFromD<D>>
HWY_INLINE void LoadColumns(D d, const Source& inSource, const T* inRotation, Legs<D, kRadix>& outLegs)
{
#pragma GCC unroll 16
    for (std::size_t row = 0; row < kRadix; ++row) {
        inSource.Load(d, row, outLegs.re[row], outLegs.im[row]);
    }
    Dft(d, outLegs);
#pragma GCC unroll 16
    for (std::size_t row = 1; row < kRadix; ++row) {
        Rotate(outLegs.re[row], outLegs.im[row], hn::LoadU(d, inRotation + row * 2 * kRadix),
               hn::LoadU(d, inRotation + row * 2 * kRadix + kRadix));
    }
}

/// First step where a column is one codelet.
template <std::size_t kRadix, class D, class Input, class T = hn::TFromD<D>>
HWY_NOINLINE void TransformShortColumns(D d, const details::Plan<T>& inPlan, const Input& inInput, T* outGrid)
{
    const auto rowSize = inPlan.rows.size;
    for (std::size_t column = 0; column < rowSize; column += kLanes<D>) {
        Legs<D, kRadix> legs;
        const T* rotation = inPlan.rotation + column / kRadix * kRadix * 2 * kRadix + column % kRadix;
        LoadColumns(d, ColumnSource<D, Input>{inInput.From(column), rowSize}, rotation, legs);
#pragma GCC unroll 16
        for (std::size_t row = 0; row < kRadix; row += kLanes<D>) {
            StoreTile(d, legs.re + row, legs.im + row, outGrid + 2 * (row * rowSize + column * kLanes<D>));
        }
    }
}

/// First step where columns take several passes.
template <class D, class Input, class T = hn::TFromD<D>>
HWY_NOINLINE void TransformLongColumns(D d, const details::Plan<T>& inPlan, const Input& inInput, T* outGrid,
                                       T* const (&ioLines)[2])
{
    constexpr auto kLaneCount = kLanes<D>;
    const auto rowSize = inPlan.rows.size;
    const auto columnSize = inPlan.columns.size;
    const auto blockLanes = inPlan.lanes;
    // The last pass may read one line and write the other, or the same element of the same line.
    T* const rotated = ioLines[inPlan.columns.count % 2];
    for (std::size_t column = 0; column < rowSize; column += kLaneCount) {
        const RotatingSink<D> sink{{rotated},
                                   inPlan.rotation + column % blockLanes,
                                   inPlan.blockRotation + column / blockLanes * 2 * columnSize,
                                   blockLanes};
        const ColumnSource<D, Input> source{inInput.From(column), rowSize};
        RunPasses(d, inPlan.columns, source, sink, ioLines);
        const LineSource<D> rows{rotated};
        for (std::size_t row = 0; row < columnSize; row += kLaneCount) {
            Legs<D, kLaneCount> tile;
#pragma GCC unroll 16
            for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
                rows.Load(d, row + lane, tile.re[lane], tile.im[lane]);
            }
            StoreTile(d, tile.re, tile.im, outGrid + 2 * (row * rowSize + column * kLaneCount));
        }
    }
}

/// Both steps with at most kMaxLanes lanes.
template <std::size_t kMaxLanes, class Input, class Output, class T>
HWY_NOINLINE void TransformMatrix(const details::Plan<T>& inPlan, const Input& inInput,
                                  const Output& inOutput, T* ioWork)
{
    using Tag = hn::CappedTag<T, kMaxLanes>;
    const Tag d;
    T* const grid = ioWork;
    T* const lines[2] = {grid + inPlan.gridElements, grid + inPlan.gridElements + inPlan.lineElements};
    if (inPlan.columns.size == kMaxLanes) {
        TransformShortColumns<kMaxLanes>(d, inPlan, inInput, grid);
    } else {
        TransformLongColumns(d, inPlan, inInput, grid, lines);
    }
    const auto rowSize = inPlan.rows.size;
    const auto columnSize = inPlan.columns.size;
    for (std::size_t row = 0; row < columnSize; row += kLanes<Tag>) {
        const ColumnSink<Tag, Output> sink{inOutput.From(row), columnSize};
        const LineSource<Tag> source{grid + 2 * row * rowSize};
        if (inPlan.rows.count == 1) {
            RunLastPass(d, inPlan.rows.radix[0], source, sink, 1);
        } else {
            RunPasses(d, inPlan.rows, source, sink, lines);
        }
    }
}

/// A matrix of kColumnSize rows and kRowSize columns without leaving the registers: a vector holds
/// kColumnSize lanes.
template <std::size_t kColumnSize, std::size_t kRowSize, class D, class Input, class Output,
          class T = hn::TFromD<D>>
HWY_INLINE void TransformInRegisters(D d, const T* inRotation, const Input& inInput, const Output& inOutput)
{
    static_assert(kLanes<D> == kColumnSize);
    Legs<D, kRowSize> rows;
#pragma GCC unroll 16
    for (std::size_t column = 0; column < kRowSize; column += kColumnSize) {
        Legs<D, kColumnSize> legs;
        LoadColumns<kColumnSize>(d, ColumnSource<D, Input>{inInput.From(column), kRowSize},
                                 inRotation + column * 2 * kColumnSize, legs);
        Transpose(d, legs.re);
        Transpose(d, legs.im);
#pragma GCC unroll 16
        for (std::size_t lane = 0; lane < kColumnSize; ++lane) {
            rows.re[column + lane] = legs.re[lane];
            rows.im[column + lane] = legs.im[lane];
        }
    }
    Dft(d, rows);
#pragma GCC unroll 16
    for (std::size_t leg = 0; leg < kRowSize; ++leg) {
        inOutput.Store(d, leg * kColumnSize, rows.re[leg], rows.im[leg]);
    }
}

/// A short transform: in registers where vectors are wide enough.
template <std::size_t kColumnSize, std::size_t kRowSize, class Input, class Output, class T>
HWY_NOINLINE void TransformShort(const details::Plan<T>& inPlan, const Input& inInput, const Output& inOutput,
                                 T* ioWork)
{
    const hn::CappedTag<T, kColumnSize> d;
    if constexpr (kLanes<hn::CappedTag<T, kColumnSize>> == kColumnSize) {
        TransformInRegisters<kColumnSize, kRowSize>(d, inPlan.rotation, inInput, inOutput);
    } else {
        TransformMatrix<kColumnSize>(inPlan, inInput, inOutput, ioWork);
    }
}

template <std::size_t kSize, class Input, class Output, class T = typename Input::Value>
HWY_INLINE void TransformCodelet(const Input& inInput, const Output& inOutput)
{
    const hn::CappedTag<T, 1> d;
    Legs<hn::CappedTag<T, 1>, kSize> legs;
#pragma GCC unroll 16
    for (std::size_t i = 0; i < kSize; ++i) {
        inInput.Load(d, i, legs.re[i], legs.im[i]);
    }
    Dft(d, legs);
#pragma GCC unroll 16
    for (std::size_t i = 0; i < kSize; ++i) {
        inOutput.Store(d, i, legs.re[i], legs.im[i]);
    }
}

/// The complex transform. Everything is read before the first result is stored, so input and output may be
/// the same memory in any arrangement.
template <class Input, class Output, class T>
HWY_INLINE void Transform(const details::Plan<T>& inPlan, const Input& inInput, const Output& inOutput,
                          T* ioWork)
{
    switch (inPlan.size) {
    case 1:
        return TransformCodelet<1>(inInput, inOutput);
    case 2:
        return TransformCodelet<2>(inInput, inOutput);
    case 4:
        return TransformCodelet<4>(inInput, inOutput);
    case 8:
        return TransformShort<2, 4>(inPlan, inInput, inOutput, ioWork);
    case 16:
        return TransformShort<4, 4>(inPlan, inInput, inOutput, ioWork);
    case 32:
        return TransformShort<4, 8>(inPlan, inInput, inOutput, ioWork);
    case 64:
        return TransformShort<8, 8>(inPlan, inInput, inOutput, ioWork);
    case 128:
        return TransformShort<8, 16>(inPlan, inInput, inOutput, ioWork);
    default:
        return TransformMatrix<details::kAlignment / sizeof(T)>(inPlan, inInput, inOutput, ioWork);
    }
}

} // namespace HWY_NAMESPACE
} // namespace brisken::transform
HWY_AFTER_NAMESPACE();

#endif
