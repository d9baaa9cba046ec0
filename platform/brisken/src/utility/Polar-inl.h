// Angle of a vector of points, and sine and cosine of a vector of angles, in float. Included once for each
// target.

#if defined(BRISKEN_UTILITY_POLAR_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_UTILITY_POLAR_INL_H_
#undef BRISKEN_UTILITY_POLAR_INL_H_
#else
#define BRISKEN_UTILITY_POLAR_INL_H_
#endif

#include <cmath>
#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// c[0] + c[1] x + c[2] x^2 + ..., by Horner's rule
template <class D, std::size_t kTerms>
HWY_INLINE hn::Vec<D> Polynomial(D d, hn::Vec<D> inX, const float (&inCoefficients)[kTerms])
{
    auto sum = hn::Set(d, inCoefficients[kTerms - 1]);
    for (std::size_t k = kTerms - 1; k-- > 0;) {
        sum = hn::MulAdd(sum, inX, hn::Set(d, inCoefficients[k]));
    }
    return sum;
}

/// atan2(y, x). The quotient of the smaller magnitude by the larger lies in 0 to 1; the octant decides the
/// rest.
template <class D>
HWY_INLINE hn::Vec<D> Angle(D d, hn::Vec<D> inY, hn::Vec<D> inX)
{
    using V = hn::Vec<D>;
    // Interpolates atan(sqrt(u)) / sqrt(u) at the Chebyshev nodes of 0 to 1; relative error 3e-9.
    constexpr float kArctangent[] = {1.0f,           -0.3333327629f,  0.1999807528f,  -0.1426001608f,
                                     0.109323415f,   -0.08349724968f, 0.05708955593f, -0.03035186479f,
                                     0.01048764925f, -0.001701170064f};
    constexpr float kHalfPi = 1.57079632679f;
    constexpr float kPi = 3.14159265359f;
    const V zero = hn::Zero(d);
    const V absX = hn::Abs(inX);
    const V absY = hn::Abs(inY);
    const auto steep = hn::Gt(absY, absX);
    const V smaller = hn::IfThenElse(steep, absX, absY);
    const V larger = hn::IfThenElse(steep, absY, absX);
    // Equal magnitudes are a diagonal, infinities included, but for the origin, which has the angle 0.
    const V diagonal = hn::IfThenElse(hn::Eq(larger, zero), zero, hn::Set(d, 1.0f));
    const V slope = hn::IfThenElse(hn::Eq(smaller, larger), diagonal, hn::Div(smaller, larger));
    V angle = hn::Mul(slope, Polynomial(d, hn::Mul(slope, slope), kArctangent));
    angle = hn::IfThenElse(steep, hn::Sub(hn::Set(d, kHalfPi), angle), angle);
    const V signOfX = hn::CopySign(hn::Set(d, 1.0f), inX);
    angle = hn::IfThenElse(hn::Lt(signOfX, zero), hn::Sub(hn::Set(d, kPi), angle), angle);
    return hn::CopySign(angle, inY);
}

template <class V>
struct SineAndCosine
{
    V sine;
    V cosine;
};

/// Largest angle, either way, that SinCos takes.
constexpr float kMaxSinCos = 8192.0f;

/// Reduces to -pi/4 to pi/4 by taking off multiples of pi/2 in four parts, of which the first three have so
/// few bits that their products are exact (Cody and Waite); then both series of Taylor, and the quadrant
/// decides which is which.
template <class D>
HWY_INLINE SineAndCosine<hn::Vec<D>> SinCos(D d, hn::Vec<D> inAngle)
{
    using V = hn::Vec<D>;
    constexpr float kTwoByPi = 0.636619772368f;
    constexpr float kHalfPi[] = {1.5703125f, 4.8351287841796875e-4f, 3.13855707645416259765625e-7f,
                                 6.07709993438732e-11f};
    constexpr float kSine[] = {1.0f, -1.0f / 6, 1.0f / 120, -1.0f / 5040, 1.0f / 362880};
    constexpr float kCosine[] = {1.0f, -1.0f / 2, 1.0f / 24, -1.0f / 720, 1.0f / 40320, -1.0f / 3628800};
    const hn::RebindToSigned<D> words;
    const auto quadrant = hn::NearestInt(hn::Mul(inAngle, hn::Set(d, kTwoByPi)));
    const V turns = hn::ConvertTo(d, quadrant);
    V rest = inAngle;
    for (const float part : kHalfPi) {
        rest = hn::NegMulAdd(turns, hn::Set(d, part), rest);
    }
    const V square = hn::Mul(rest, rest);
    const V sine = hn::Mul(rest, Polynomial(d, square, kSine));
    const V cosine = Polynomial(d, square, kCosine);
    // Odd quadrants swap the two; bit 1 of the quadrant is the sign of the sine, of the next one that of the
    // cosine.
    const auto one = hn::Set(words, 1);
    const auto swapped = hn::MaskFromVec(hn::BitCast(d, hn::Neg(hn::And(quadrant, one))));
    const auto signOfSine = hn::BitCast(d, hn::ShiftLeft<31>(hn::ShiftRight<1>(quadrant)));
    const auto signOfCosine = hn::BitCast(d, hn::ShiftLeft<31>(hn::ShiftRight<1>(hn::Add(quadrant, one))));
    return {hn::Xor(hn::IfThenElse(swapped, cosine, sine), signOfSine),
            hn::Xor(hn::IfThenElse(swapped, sine, cosine), signOfCosine)};
}

/// SinCos for any angles, one by one. Out of the way, as hardly any angle comes here.
template <class D>
HWY_NOINLINE void SinCosOfFarAngles(D d, const float* inAngles, float* outSines, float* outCosines)
{
    for (std::size_t k = 0; k < hn::Lanes(d); ++k) {
        outSines[k] = std::sin(inAngles[k]);
        outCosines[k] = std::cos(inAngles[k]);
    }
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif // per-target include guard
