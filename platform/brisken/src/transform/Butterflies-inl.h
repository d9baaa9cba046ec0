// Short transforms whose elements are whole vectors, and the moves between memory and vectors around them.

#if defined(BRISKEN_TRANSFORM_BUTTERFLIES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_TRANSFORM_BUTTERFLIES_INL_H_
#undef BRISKEN_TRANSFORM_BUTTERFLIES_INL_H_
#else
#define BRISKEN_TRANSFORM_BUTTERFLIES_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::transform {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class D>
constexpr std::size_t kLanes = hn::MaxLanes(D());

/// kRadix complex vectors.
template <class D, std::size_t kRadix>
struct Legs
{
    hn::Vec<D> re[kRadix];
    hn::Vec<D> im[kRadix];
};

/// (ioRe, ioIm) times (inRe, inIm).
template <class V>
HWY_INLINE void Rotate(V& ioRe, V& ioIm, V inRe, V inIm)
{
    const auto re = hn::NegMulAdd(ioIm, inIm, hn::Mul(ioRe, inRe));
    ioIm = hn::MulAdd(ioIm, inRe, hn::Mul(ioRe, inIm));
    ioRe = re;
}

/// The four-point transform of legs a, b, c, d in place.
template <class V>
HWY_INLINE void Dft4(V& ioARe, V& ioAIm, V& ioBRe, V& ioBIm, V& ioCRe, V& ioCIm, V& ioDRe, V& ioDIm)
{
    const auto sumRe = hn::Add(ioARe, ioCRe);
    const auto sumIm = hn::Add(ioAIm, ioCIm);
    const auto diffRe = hn::Sub(ioARe, ioCRe);
    const auto diffIm = hn::Sub(ioAIm, ioCIm);
    const auto oddSumRe = hn::Add(ioBRe, ioDRe);
    const auto oddSumIm = hn::Add(ioBIm, ioDIm);
    const auto oddDiffRe = hn::Sub(ioBRe, ioDRe);
    const auto oddDiffIm = hn::Sub(ioBIm, ioDIm);
    ioARe = hn::Add(sumRe, oddSumRe);
    ioAIm = hn::Add(sumIm, oddSumIm);
    ioBRe = hn::Add(diffRe, oddDiffIm);
    ioBIm = hn::Sub(diffIm, oddDiffRe);
    ioCRe = hn::Sub(sumRe, oddSumRe);
    ioCIm = hn::Sub(sumIm, oddSumIm);
    ioDRe = hn::Sub(diffRe, oddDiffIm);
    ioDIm = hn::Add(diffIm, oddDiffRe);
}

template <class D>
HWY_INLINE void Dft(D, Legs<D, 1>&)
{
}

template <class D>
HWY_INLINE void Dft(D, Legs<D, 2>& io)
{
    const auto re = hn::Sub(io.re[0], io.re[1]);
    const auto im = hn::Sub(io.im[0], io.im[1]);
    io.re[0] = hn::Add(io.re[0], io.re[1]);
    io.im[0] = hn::Add(io.im[0], io.im[1]);
    io.re[1] = re;
    io.im[1] = im;
}

template <class D>
HWY_INLINE void Dft(D, Legs<D, 4>& io)
{
    Dft4(io.re[0], io.im[0], io.re[1], io.im[1], io.re[2], io.im[2], io.re[3], io.im[3]);
}

template <class D>
HWY_INLINE void Dft(D d, Legs<D, 8>& io)
{
    auto& re = io.re;
    auto& im = io.im;
    Dft4(re[0], im[0], re[2], im[2], re[4], im[4], re[6], im[6]);
    Dft4(re[1], im[1], re[3], im[3], re[5], im[5], re[7], im[7]);
    // Leg 2j now holds bin j of the even inputs and leg 2j + 1 bin j of the odd ones. The rotations of the
    // latter by odd multiples of 1/8 turn keep their common factor for the last addition.
    const auto root = hn::Set(d, static_cast<hn::TFromD<D>>(0.70710678118654752440));
    const auto diagonal1Re = hn::Add(re[3], im[3]);
    const auto diagonal1Im = hn::Sub(im[3], re[3]);
    const auto diagonal3Re = hn::Sub(im[7], re[7]);
    const auto diagonal3Im = hn::Add(re[7], im[7]); // to be subtracted
    const auto even0Re = re[0], even0Im = im[0], even1Re = re[2], even1Im = im[2];
    const auto even2Re = re[4], even2Im = im[4], even3Re = re[6], even3Im = im[6];
    const auto odd0Re = re[1], odd0Im = im[1], odd2Re = re[5], odd2Im = im[5];
    re[0] = hn::Add(even0Re, odd0Re);
    im[0] = hn::Add(even0Im, odd0Im);
    re[4] = hn::Sub(even0Re, odd0Re);
    im[4] = hn::Sub(even0Im, odd0Im);
    re[1] = hn::MulAdd(root, diagonal1Re, even1Re);
    im[1] = hn::MulAdd(root, diagonal1Im, even1Im);
    re[5] = hn::NegMulAdd(root, diagonal1Re, even1Re);
    im[5] = hn::NegMulAdd(root, diagonal1Im, even1Im);
    re[2] = hn::Add(even2Re, odd2Im);
    im[2] = hn::Sub(even2Im, odd2Re);
    re[6] = hn::Sub(even2Re, odd2Im);
    im[6] = hn::Add(even2Im, odd2Re);
    re[3] = hn::MulAdd(root, diagonal3Re, even3Re);
    im[3] = hn::NegMulAdd(root, diagonal3Im, even3Im);
    re[7] = hn::NegMulAdd(root, diagonal3Re, even3Re);
    im[7] = hn::MulAdd(root, diagonal3Im, even3Im);
}

/// Rotates a leg by exp(-2 pi i k / 16), given the factor's parts.
template <class D>
HWY_INLINE void RotateLeg(D d, Legs<D, 16>& io, std::size_t inLeg, double inRe, double inIm)
{
    using T = hn::TFromD<D>;
    Rotate(io.re[inLeg], io.im[inLeg], hn::Set(d, static_cast<T>(inRe)), hn::Set(d, static_cast<T>(inIm)));
}

template <class D>
HWY_INLINE void Dft(D d, Legs<D, 16>& io)
{
    auto& re = io.re;
    auto& im = io.im;
    constexpr double kCos = 0.92387953251128675613; // of 1/16 turn
    constexpr double kSin = 0.38268343236508977173;
    constexpr double kRoot = 0.70710678118654752440;
#define BRISKEN_DFT4(A, B, C, D_) Dft4(re[A], im[A], re[B], im[B], re[C], im[C], re[D_], im[D_])
    BRISKEN_DFT4(0, 4, 8, 12);
    BRISKEN_DFT4(1, 5, 9, 13);
    BRISKEN_DFT4(2, 6, 10, 14);
    BRISKEN_DFT4(3, 7, 11, 15);
    RotateLeg(d, io, 5, kCos, -kSin);
    RotateLeg(d, io, 6, kRoot, -kRoot);
    RotateLeg(d, io, 7, kSin, -kCos);
    RotateLeg(d, io, 9, kRoot, -kRoot);
    const auto turned = re[10];
    re[10] = im[10];
    im[10] = hn::Neg(turned);
    RotateLeg(d, io, 11, -kRoot, -kRoot);
    RotateLeg(d, io, 13, kSin, -kCos);
    RotateLeg(d, io, 14, -kRoot, -kRoot);
    RotateLeg(d, io, 15, -kCos, kSin);
    BRISKEN_DFT4(0, 1, 2, 3);
    BRISKEN_DFT4(4, 5, 6, 7);
    BRISKEN_DFT4(8, 9, 10, 11);
    BRISKEN_DFT4(12, 13, 14, 15);
#undef BRISKEN_DFT4
    // Leg 4a + b holds bin a + 4b.
    const Legs<D, 16> bins = io;
#pragma GCC unroll 16
    for (std::size_t bin = 0; bin < 16; ++bin) {
        re[bin] = bins.re[bin % 4 * 4 + bin / 4];
        im[bin] = bins.im[bin % 4 * 4 + bin / 4];
    }
}

/// Splits 2 x lanes interleaved numbers.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void LoadPairs(D d, const hn::TFromD<D>* inPairs, V& outRe, V& outIm)
{
    if constexpr (kLanes<D> == 1) {
        outRe = hn::LoadU(d, inPairs);
        outIm = hn::LoadU(d, inPairs + 1);
    } else {
        hn::LoadInterleaved2(d, inPairs, outRe, outIm);
    }
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE void StorePairs(D d, V inRe, V inIm, hn::TFromD<D>* outPairs)
{
    if constexpr (kLanes<D> == 1) {
        hn::StoreU(inRe, d, outPairs);
        hn::StoreU(inIm, d, outPairs + 1);
    } else {
        hn::StoreInterleaved2(inRe, inIm, d, outPairs);
    }
}

#if HWY_TARGET != HWY_SCALAR

/// 128-bit blocks 0 and 2 of inA, then those of inB; with two blocks a vector, block 0 of each.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V EvenBlocks(D d, V inA, V inB)
{
#if HWY_TARGET <= HWY_AVX3
    if constexpr (sizeof(hn::TFromD<D>) * kLanes<D> == 64) {
        const hn::Repartition<float, D> f;
        const auto a = hn::BitCast(f, inA);
        const auto b = hn::BitCast(f, inB);
        return hn::BitCast(d, hn::Vec<decltype(f)>{_mm512_shuffle_f32x4(a.raw, b.raw, 0x88)});
    } else
#endif
        return hn::ConcatLowerLower(d, inB, inA);
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE V OddBlocks(D d, V inA, V inB)
{
#if HWY_TARGET <= HWY_AVX3
    if constexpr (sizeof(hn::TFromD<D>) * kLanes<D> == 64) {
        const hn::Repartition<float, D> f;
        const auto a = hn::BitCast(f, inA);
        const auto b = hn::BitCast(f, inB);
        return hn::BitCast(d, hn::Vec<decltype(f)>{_mm512_shuffle_f32x4(a.raw, b.raw, 0xDD)});
    } else
#endif
        return hn::ConcatUpperUpper(d, inB, inA);
}

/// Transposes the elements of kInBlock rows within each 128-bit block.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void TransposeWithinBlocks(D d, V* ioRows)
{
    if constexpr (sizeof(hn::TFromD<D>) == 8 || kLanes<D> == 2) {
        const auto first = ioRows[0];
        ioRows[0] = hn::InterleaveLower(d, first, ioRows[1]);
        ioRows[1] = hn::InterleaveUpper(d, first, ioRows[1]);
    } else {
        const auto evenLower = hn::InterleaveLower(d, ioRows[0], ioRows[2]);
        const auto evenUpper = hn::InterleaveUpper(d, ioRows[0], ioRows[2]);
        const auto oddLower = hn::InterleaveLower(d, ioRows[1], ioRows[3]);
        const auto oddUpper = hn::InterleaveUpper(d, ioRows[1], ioRows[3]);
        ioRows[0] = hn::InterleaveLower(d, evenLower, oddLower);
        ioRows[1] = hn::InterleaveUpper(d, evenLower, oddLower);
        ioRows[2] = hn::InterleaveLower(d, evenUpper, oddUpper);
        ioRows[3] = hn::InterleaveUpper(d, evenUpper, oddUpper);
    }
}

#endif

/// Transposes a square of lanes x lanes elements.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void Transpose(D d, V* ioRows)
{
    constexpr std::size_t kLaneCount = kLanes<D>;
    if constexpr (kLaneCount > 1) {
        constexpr std::size_t kInBlock = std::min(kLaneCount, 16 / sizeof(hn::TFromD<D>));
        constexpr std::size_t kBlocks = kLaneCount / kInBlock;
#pragma GCC unroll 16
        for (std::size_t group = 0; group < kLaneCount; group += kInBlock) {
            TransposeWithinBlocks(d, ioRows + group);
        }
        if constexpr (kBlocks == 2) {
#pragma GCC unroll 16
            for (std::size_t i = 0; i < kInBlock; ++i) {
                const auto first = ioRows[i];
                ioRows[i] = EvenBlocks(d, first, ioRows[i + kInBlock]);
                ioRows[i + kInBlock] = OddBlocks(d, first, ioRows[i + kInBlock]);
            }
        } else if constexpr (kBlocks == 4) {
#pragma GCC unroll 16
            for (std::size_t i = 0; i < kInBlock; ++i) {
                auto& a = ioRows[i];
                auto& b = ioRows[i + kInBlock];
                auto& c = ioRows[i + 2 * kInBlock];
                auto& e = ioRows[i + 3 * kInBlock];
                const auto evenFirst = EvenBlocks(d, a, b);
                const auto oddFirst = OddBlocks(d, a, b);
                const auto evenLast = EvenBlocks(d, c, e);
                const auto oddLast = OddBlocks(d, c, e);
                a = EvenBlocks(d, evenFirst, evenLast);
                b = EvenBlocks(d, oddFirst, oddLast);
                c = OddBlocks(d, evenFirst, evenLast);
                e = OddBlocks(d, oddFirst, oddLast);
            }
        }
    }
}

} // namespace HWY_NAMESPACE
} // namespace brisken::transform
HWY_AFTER_NAMESPACE();

#endif
