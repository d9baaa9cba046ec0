// The real transform around the complex one of half its length.

#if defined(BRISKEN_TRANSFORM_REAL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_TRANSFORM_REAL_INL_H_
#undef BRISKEN_TRANSFORM_REAL_INL_H_
#else
#define BRISKEN_TRANSFORM_REAL_INL_H_
#endif

#include "transform/Complex-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::transform {
namespace HWY_NAMESPACE {

/// For bins in ascending lanes, their mirror images: lane l of the result is element (lanes - l) of inRow,
/// where the element after the row's last is the first of inRowAbove.
template <class D, class Indices, class V = hn::Vec<D>>
HWY_INLINE V Mirror(D d, Indices inMirrored, V inRow, V inRowAbove)
{
    return hn::IfThenElse(hn::FirstN(d, 1), inRowAbove, hn::TableLookupLanes(inRow, inMirrored));
}

template <class D>
HWY_INLINE auto MirroredLanes(D d)
{
    using Index = hwy::MakeSigned<hn::TFromD<D>>;
    const hn::RebindToSigned<D> indices;
    const auto reversed = hn::Sub(hn::Set(indices, static_cast<Index>(kLanes<D>)), hn::Iota(indices, 0));
    return hn::IndicesFromVec(d, hn::And(reversed, hn::Set(indices, static_cast<Index>(kLanes<D> - 1))));
}

/// Spectrum bins [0, half] from half the transform Z of the sample pairs: with E and O the spectra of the
/// even and the odd samples, Z = E + iO, and X[k] = E[k] + w^k O[k], X[half - k] = conj(E[k] - w^k O[k]).
template <class D, class T>
HWY_INLINE void SeparateSpectra(D d, const details::RealPlan<T>& inPlan, std::size_t inHalf, const T* inRe,
                                const T* inIm, T* outBins)
{
    const auto mirrored = MirroredLanes(d);
    // Bin `inHalf` of Z is its bin 0.
    auto aboveRe = hn::Set(d, inRe[0]);
    auto aboveIm = hn::Set(d, inIm[0]);
    for (std::size_t bin = 0; bin < inHalf / 2; bin += kLanes<D>) {
        const auto below = inHalf - bin - kLanes<D>;
        const auto belowRe = hn::LoadU(d, inRe + below);
        const auto belowIm = hn::LoadU(d, inIm + below);
        const auto mirrorRe = Mirror(d, mirrored, belowRe, aboveRe);
        const auto mirrorIm = Mirror(d, mirrored, belowIm, aboveIm);
        aboveRe = belowRe;
        aboveIm = belowIm;
        const auto re = hn::LoadU(d, inRe + bin);
        const auto im = hn::LoadU(d, inIm + bin);
        const auto evenRe = hn::Add(re, mirrorRe);
        const auto evenIm = hn::Sub(im, mirrorIm);
        const auto oddRe = hn::Add(im, mirrorIm);
        const auto oddIm = hn::Sub(mirrorRe, re);
        const auto cosine = hn::LoadU(d, inPlan.cosine + bin);
        const auto sine = hn::LoadU(d, inPlan.sine + bin);
        const auto turnedRe = hn::MulAdd(cosine, oddRe, hn::Mul(sine, oddIm));
        const auto turnedIm = hn::NegMulAdd(sine, oddRe, hn::Mul(cosine, oddIm));
        StorePairs(d, hn::Add(evenRe, turnedRe), hn::Add(evenIm, turnedIm), outBins + 2 * bin);
        StorePairs(d, hn::Reverse(d, hn::Sub(evenRe, turnedRe)), hn::Reverse(d, hn::Sub(turnedIm, evenIm)),
                   outBins + 2 * (below + 1));
    }
    outBins[1] = 0;
    outBins[inHalf] = 2 * inRe[inHalf / 2];
    outBins[inHalf + 1] = -2 * inIm[inHalf / 2];
    outBins[2 * inHalf + 1] = 0;
}

/// The way back: the conjugate of twice Z from bins [0, half].
template <class D, class T>
HWY_INLINE void JoinSpectra(D d, const details::RealPlan<T>& inPlan, std::size_t inHalf, const T* inBins,
                            T* outRe, T* outIm)
{
    const auto mirrored = MirroredLanes(d);
    auto lastRe = hn::Zero(d);
    auto lastIm = hn::Zero(d);
    for (std::size_t bin = 0; bin < inHalf / 2; bin += kLanes<D>) {
        const auto above = inHalf - bin;
        hn::Vec<D> re, im, mirrorRe, mirrorIm;
        LoadPairs(d, inBins + 2 * bin, re, im);
        LoadPairs(d, inBins + 2 * (above - kLanes<D> + 1), mirrorRe, mirrorIm);
        mirrorRe = hn::Reverse(d, mirrorRe);
        mirrorIm = hn::Reverse(d, mirrorIm);
        if (bin == 0) {
            // The imaginary parts of the first and the last bin do not count.
            im = hn::IfThenZeroElse(hn::FirstN(d, 1), im);
            mirrorIm = hn::IfThenZeroElse(hn::FirstN(d, 1), mirrorIm);
        }
        const auto evenRe = hn::Add(re, mirrorRe);
        const auto evenIm = hn::Sub(im, mirrorIm);
        const auto turnedRe = hn::Sub(re, mirrorRe);
        const auto turnedIm = hn::Add(im, mirrorIm);
        const auto cosine = hn::LoadU(d, inPlan.cosine + bin);
        const auto sine = hn::LoadU(d, inPlan.sine + bin);
        const auto oddRe = hn::NegMulAdd(sine, turnedIm, hn::Mul(cosine, turnedRe));
        const auto oddIm = hn::MulAdd(cosine, turnedIm, hn::Mul(sine, turnedRe));
        hn::StoreU(hn::Sub(evenRe, oddIm), d, outRe + bin);
        hn::StoreU(hn::Neg(hn::Add(evenIm, oddRe)), d, outIm + bin);
        const auto upperRe = hn::Add(evenRe, oddIm);
        const auto upperIm = hn::Sub(evenIm, oddRe);
        // The row of the mirror images needs one more, which comes with the next bins.
        if (bin > 0) {
            hn::StoreU(Mirror(d, mirrored, lastRe, upperRe), d, outRe + above);
            hn::StoreU(Mirror(d, mirrored, lastIm, upperIm), d, outIm + above);
        }
        lastRe = upperRe;
        lastIm = upperIm;
    }
    const auto middleRe = hn::Set(d, 2 * inBins[inHalf]);
    const auto middleIm = hn::Set(d, 2 * inBins[inHalf + 1]);
    hn::StoreU(Mirror(d, mirrored, lastRe, middleRe), d, outRe + inHalf / 2);
    hn::StoreU(Mirror(d, mirrored, lastIm, middleIm), d, outIm + inHalf / 2);
}

/// The shortest transforms, one number at a time.
template <std::size_t kHalf, class T>
HWY_INLINE void SamplesToBinsScalar(const details::RealPlan<T>& inPlan, const T* inSamples, T* outBins)
{
    T re[kHalf];
    T im[kHalf];
    TransformCodelet<kHalf>(PairInput<T>{inSamples, 1}, SplitOutput<T>{re, im, T(0.5)});
    SeparateSpectra(hn::CappedTag<T, 1>(), inPlan, kHalf, re, im, outBins);
}

template <std::size_t kHalf, class T>
HWY_INLINE void BinsToSamplesScalar(const details::RealPlan<T>& inPlan, const T* inBins, T* outSamples)
{
    T re[kHalf];
    T im[kHalf];
    JoinSpectra(hn::CappedTag<T, 1>(), inPlan, kHalf, inBins, re, im);
    const auto scale = T(1) / static_cast<T>(2 * kHalf);
    TransformCodelet<kHalf>(SplitInput<T>{re, im}, PairOutput<T>{outSamples, scale, -scale});
}

/// Short transforms whose parts stay in registers all the way where vectors hold kColumnSize lanes.
template <std::size_t kColumnSize, std::size_t kRowSize, class T>
HWY_NOINLINE void SamplesToBinsShort(const details::RealPlan<T>& inPlan, const T* inSamples, T* outBins,
                                     T* ioWork)
{
    using Tag = hn::CappedTag<T, kColumnSize>;
    constexpr auto kHalf = kColumnSize * kRowSize;
    const PairInput<T> input{inSamples, 1};
    if constexpr (kLanes<Tag> == kColumnSize) {
        alignas(details::kAlignment) T re[kHalf];
        alignas(details::kAlignment) T im[kHalf];
        TransformInRegisters<kColumnSize, kRowSize>(Tag(), inPlan.half.rotation, input,
                                                    SplitOutput<T>{re, im, T(0.5)});
        SeparateSpectra(Tag(), inPlan, kHalf, re, im, outBins);
    } else {
        T* const re = ioWork + inPlan.half.GetWorkElements();
        TransformMatrix<kColumnSize>(inPlan.half, input, SplitOutput<T>{re, re + kHalf, T(0.5)}, ioWork);
        SeparateSpectra(Tag(), inPlan, kHalf, re, re + kHalf, outBins);
    }
}

template <std::size_t kColumnSize, std::size_t kRowSize, class T>
HWY_NOINLINE void BinsToSamplesShort(const details::RealPlan<T>& inPlan, const T* inBins, T* outSamples,
                                     T* ioWork)
{
    using Tag = hn::CappedTag<T, kColumnSize>;
    constexpr auto kHalf = kColumnSize * kRowSize;
    const auto scale = T(1) / static_cast<T>(2 * kHalf);
    const PairOutput<T> output{outSamples, scale, -scale};
    if constexpr (kLanes<Tag> == kColumnSize) {
        alignas(details::kAlignment) T re[kHalf];
        alignas(details::kAlignment) T im[kHalf];
        JoinSpectra(Tag(), inPlan, kHalf, inBins, re, im);
        TransformInRegisters<kColumnSize, kRowSize>(Tag(), inPlan.half.rotation, SplitInput<T>{re, im},
                                                    output);
    } else {
        T* const re = ioWork + inPlan.half.GetWorkElements();
        JoinSpectra(Tag(), inPlan, kHalf, inBins, re, re + kHalf);
        TransformMatrix<kColumnSize>(inPlan.half, SplitInput<T>{re, re + kHalf}, output, ioWork);
    }
}

/// Longer ones use the lanes of the half transform: its rows are then read as they were written.
template <std::size_t kMaxLanes, class T>
HWY_NOINLINE void SamplesToBinsLong(const details::RealPlan<T>& inPlan, const T* inSamples, T* outBins,
                                    T* ioWork)
{
    T* const re = ioWork + inPlan.half.GetWorkElements();
    T* const im = re + inPlan.GetPartStride();
    Transform(inPlan.half, PairInput<T>{inSamples, 1}, SplitOutput<T>{re, im, T(0.5)}, ioWork);
    SeparateSpectra(hn::CappedTag<T, kMaxLanes>(), inPlan, inPlan.half.size, re, im, outBins);
}

template <std::size_t kMaxLanes, class T>
HWY_NOINLINE void BinsToSamplesLong(const details::RealPlan<T>& inPlan, const T* inBins, T* outSamples,
                                    T* ioWork)
{
    T* const re = ioWork + inPlan.half.GetWorkElements();
    T* const im = re + inPlan.GetPartStride();
    JoinSpectra(hn::CappedTag<T, kMaxLanes>(), inPlan, inPlan.half.size, inBins, re, im);
    const auto scale = T(1) / static_cast<T>(inPlan.size);
    Transform(inPlan.half, SplitInput<T>{re, im}, PairOutput<T>{outSamples, scale, -scale}, ioWork);
}

template <class T>
HWY_INLINE void SamplesToBins(const details::RealPlan<T>& inPlan, const T* inSamples, T* outBins, T* ioWork)
{
    switch (inPlan.size) {
    case 1:
        outBins[0] = inSamples[0];
        outBins[1] = 0;
        return;
    case 2: {
        const auto first = inSamples[0], second = inSamples[1];
        outBins[0] = first + second;
        outBins[2] = first - second;
        outBins[1] = outBins[3] = 0;
        return;
    }
    case 4:
        return SamplesToBinsScalar<2>(inPlan, inSamples, outBins);
    case 8:
        return SamplesToBinsScalar<4>(inPlan, inSamples, outBins);
    case 16:
        return SamplesToBinsScalar<8>(inPlan, inSamples, outBins);
    case 32:
        return SamplesToBinsShort<4, 4>(inPlan, inSamples, outBins, ioWork);
    case 64:
        return SamplesToBinsShort<4, 8>(inPlan, inSamples, outBins, ioWork);
    case 128:
    case 256:
        return SamplesToBinsLong<8>(inPlan, inSamples, outBins, ioWork);
    default:
        return SamplesToBinsLong<details::kAlignment / sizeof(T)>(inPlan, inSamples, outBins, ioWork);
    }
}

template <class T>
HWY_INLINE void BinsToSamples(const details::RealPlan<T>& inPlan, const T* inBins, T* outSamples, T* ioWork)
{
    switch (inPlan.size) {
    case 1:
        outSamples[0] = inBins[0];
        return;
    case 2: {
        const auto first = inBins[0], last = inBins[2];
        outSamples[0] = (first + last) / 2;
        outSamples[1] = (first - last) / 2;
        return;
    }
    case 4:
        return BinsToSamplesScalar<2>(inPlan, inBins, outSamples);
    case 8:
        return BinsToSamplesScalar<4>(inPlan, inBins, outSamples);
    case 16:
        return BinsToSamplesScalar<8>(inPlan, inBins, outSamples);
    case 32:
        return BinsToSamplesShort<4, 4>(inPlan, inBins, outSamples, ioWork);
    case 64:
        return BinsToSamplesShort<4, 8>(inPlan, inBins, outSamples, ioWork);
    case 128:
    case 256:
        return BinsToSamplesLong<8>(inPlan, inBins, outSamples, ioWork);
    default:
        return BinsToSamplesLong<details::kAlignment / sizeof(T)>(inPlan, inBins, outSamples, ioWork);
    }
}

} // namespace HWY_NAMESPACE
} // namespace brisken::transform
HWY_AFTER_NAMESPACE();

#endif
