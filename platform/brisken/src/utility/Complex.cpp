#include <brisken/utility/Complex.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Complex.cpp"
#include <hwy/foreach_target.h>

#include "utility/Polar-inl.h"
#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void MulComplexRow(unsigned inCount, const float* inA, const float* inB, float* out)
{
    for (std::size_t i = 0; i < 2 * std::size_t(inCount); i += 2) {
        const float real = inA[i] * inB[i] - inA[i + 1] * inB[i + 1];
        const float imaginary = inA[i] * inB[i + 1] + inA[i + 1] * inB[i];
        out[i] = real;
        out[i + 1] = imaginary;
    }
}

#else

/// On interleaved pairs: re = a.re b.re - a.im b.im and im = a.re b.im + a.im b.re.
struct ComplexTimes
{
    static constexpr std::size_t kMinLanes = 2;

    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        const hn::DFromV<V> d;
        const auto minusOnReal = hn::OddEven(hn::Zero(d), hn::Set(d, -0.0f));
        const auto cross = hn::Mul(hn::DupOdd(inA), hn::Reverse2(d, inB));
        return hn::MulAdd(hn::DupEven(inA), inB, hn::Xor(cross, minusOnReal));
    }
};

void MulComplexRow(unsigned inCount, const float* inA, const float* inB, float* out)
{
    RunRow(hn::ScalableTag<float>(), 2 * std::size_t(inCount),
           BinaryStep<ComplexTimes, float>{inA, inB, out});
}

#endif

struct SumOfSquares : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inReal, V inImaginary) const
    {
        return hn::MulAdd(inReal, inReal, hn::Mul(inImaginary, inImaginary));
    }
};

struct Hypotenuse : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inReal, V inImaginary) const
    {
        return hn::Sqrt(SumOfSquares()(inReal, inImaginary));
    }
};

/// out = op(real, imaginary) of interleaved pairs
template <class Op>
struct PairsStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        hn::Vec<D> real, imaginary;
        hn::LoadInterleaved2(d, inA + 2 * i, real, imaginary);
        return Op()(real, imaginary);
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const float* inA;
    float* out;
};

template <class Op>
void PairsRow(unsigned inCount, const float* inA, float* out)
{
    RunRow(hn::ScalableTag<float>(), inCount, PairsStep<Op>{inA, out});
}

template <class V>
struct Polar
{
    V magnitude;
    V phase;
};

struct CartToPolarStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        const auto real = hn::LoadU(d, inReal + i);
        const auto imaginary = hn::LoadU(d, inImaginary + i);
        const auto isNaN = hn::Or(hn::IsNaN(real), hn::IsNaN(imaginary));
        const auto angle = Angle(d, imaginary, real);
        return Polar<hn::Vec<D>>{Hypotenuse()(real, imaginary), hn::IfThenElse(isNaN, hn::NaN(d), angle)};
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, Polar<V> inResult) const
    {
        hn::StoreU(inResult.magnitude, d, outMagnitude + i);
        hn::StoreU(inResult.phase, d, outPhase + i);
    }

    const float* inReal;
    const float* inImaginary;
    float* outMagnitude;
    float* outPhase;
};

struct PolarToCartStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        const auto magnitude = hn::LoadU(d, inMagnitude + i);
        const auto phase = hn::LoadU(d, inPhase + i);
        const auto near = hn::Le(hn::Abs(phase), hn::Set(d, kMaxSinCos));
        auto [sine, cosine] = SinCos(d, hn::IfThenElseZero(near, phase));
        if (HWY_UNLIKELY(!hn::AllTrue(d, near))) {
            float sines[hn::MaxLanes(d)], cosines[hn::MaxLanes(d)];
            SinCosOfFarAngles(d, inPhase + i, sines, cosines);
            sine = hn::LoadU(d, sines);
            cosine = hn::LoadU(d, cosines);
        }
        return SineAndCosine<hn::Vec<D>>{hn::Mul(magnitude, sine), hn::Mul(magnitude, cosine)};
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, SineAndCosine<V> inResult) const
    {
        hn::StoreInterleaved2(inResult.cosine, inResult.sine, d, out + 2 * i);
    }

    const float* inMagnitude;
    const float* inPhase;
    float* out;
};

void CartToPolarRow(unsigned inCount, const float* inReal, const float* inImaginary, float* outMagnitude,
                    float* outPhase)
{
    RunRow<false>(hn::ScalableTag<float>(), inCount,
                  CartToPolarStep{inReal, inImaginary, outMagnitude, outPhase});
}

void PolarToCartRow(unsigned inCount, const float* inMagnitude, const float* inPhase, float* out)
{
    RunRowBackwards<false>(hn::ScalableTag<float>(), inCount, PolarToCartStep{inMagnitude, inPhase, out});
}

constexpr auto& MagnitudeF32 = BinaryRow<Hypotenuse, float>;
constexpr auto& MagnitudeF64 = BinaryRow<Hypotenuse, double>;
constexpr auto& MagnitudeOfPairs = PairsRow<Hypotenuse>;
constexpr auto& PowerOfPairs = PairsRow<SumOfSquares>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(MulComplexRow);
HWY_EXPORT(MagnitudeF32);
HWY_EXPORT(MagnitudeF64);
HWY_EXPORT(MagnitudeOfPairs);
HWY_EXPORT(PowerOfPairs);
HWY_EXPORT(CartToPolarRow);
HWY_EXPORT(PolarToCartRow);

namespace {

// std::complex guarantees this view of its array.
const float* AsPairs(const std::complex<float>* inA)
{
    return reinterpret_cast<const float*>(inA);
}

float* AsPairs(std::complex<float>* inA)
{
    return reinterpret_cast<float*>(inA);
}

} // namespace

void Mul(unsigned inCount, const std::complex<float>* inA, const std::complex<float>* inB,
         std::complex<float>* outProduct)
{
    BRISKEN_DISPATCH(MulComplexRow)(inCount, AsPairs(inA), AsPairs(inB), AsPairs(outProduct));
}

void Mul_InPlace(unsigned inCount, const std::complex<float>* inA, std::complex<float>* ioProduct)
{
    BRISKEN_DISPATCH(MulComplexRow)(inCount, AsPairs(inA), AsPairs(ioProduct), AsPairs(ioProduct));
}

BRISKEN_BINARY(Magnitude, float, MagnitudeF32)
BRISKEN_BINARY(Magnitude, double, MagnitudeF64)

void Magnitude(unsigned inCount, const std::complex<float>* inA, float* out)
{
    BRISKEN_DISPATCH(MagnitudeOfPairs)(inCount, AsPairs(inA), out);
}

void PowerSpectr(unsigned inCount, const std::complex<float>* inA, float* out)
{
    BRISKEN_DISPATCH(PowerOfPairs)(inCount, AsPairs(inA), out);
}

void CartToPolar(unsigned inCount, const float* inReal, const float* inImaginary, float* outMagnitude,
                 float* outPhase)
{
    BRISKEN_DISPATCH(CartToPolarRow)(inCount, inReal, inImaginary, outMagnitude, outPhase);
}

void PolarToCart(unsigned inCount, const float* inMagnitude, const float* inPhase, std::complex<float>* out)
{
    PolarToCart(inCount, inMagnitude, inPhase, AsPairs(out));
}

void PolarToCart(unsigned inCount, const float* inMagnitude, const float* inPhase, float* out)
{
    BRISKEN_DISPATCH(PolarToCartRow)(inCount, inMagnitude, inPhase, out);
}

} // namespace brisken::utility

#endif // HWY_ONCE
