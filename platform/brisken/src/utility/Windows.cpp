#include <brisken/utility/Windows.h>

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Windows.cpp"
#include <hwy/foreach_target.h>

#include "utility/BesselSeries.h"
#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

// A shape gives the weights for distances from the nearer edge, as fractions of the length: 0 at the edge,
// 0.5 in the middle. Going by the edge makes the windows symmetric to the last bit and keeps full accuracy
// where they vanish.

/// sin(pi x)^2 for x in 0 to 0.5, by the series of the sine. All windows of cosines are polynomials in it.
template <class D>
HWY_INLINE hn::Vec<D> SquaredSine(D d, hn::Vec<D> inX)
{
    constexpr double kPi = 3.14159265358979323846;
    constexpr int kLastTerm = 23; // the power of the first term that is below double's epsilon at pi / 2
    const auto angle = hn::Mul(inX, hn::Set(d, kPi));
    const auto square = hn::Mul(angle, angle);
    const auto one = hn::Set(d, 1.0);
    auto series = one;
    for (int power = kLastTerm; power > 1; power -= 2) {
        const double factor = -1.0 / (power * (power - 1));
        series = hn::MulAdd(hn::Mul(square, hn::Set(d, factor)), series, one);
    }
    const auto sine = hn::Mul(angle, series);
    return hn::Mul(sine, sine);
}

struct BartlettShape
{
    template <class D>
    HWY_INLINE hn::Vec<D> operator()(D, hn::Vec<D> inX) const
    {
        return hn::Add(inX, inX);
    }
};

/// edge + (1 - edge) sin^2: Hann with an edge of 0, Hamming with one of 0.08.
struct RaisedCosineShape
{
    template <class D>
    HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> inX) const
    {
        return hn::MulAdd(SquaredSine(d, inX), hn::Set(d, 1.0 - edge), hn::Set(d, edge));
    }

    double edge;
};

/// With s = sin^2, the cosine of the single angle is 1 - 2 s, that of the double angle 1 - 8 s + 8 s^2; so
/// the window is s (1 - 4 alpha + 4 alpha s).
struct BlackmanShape
{
    template <class D>
    HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> inX) const
    {
        const auto s = SquaredSine(d, inX);
        return hn::Mul(s, hn::MulAdd(s, hn::Set(d, 4.0 * alpha), hn::Set(d, 1.0 - 4.0 * alpha)));
    }

    double alpha;
};

/// The argument of the Bessel function is alpha sqrt(4 x (1 - x)); its series needs a quarter of the square.
struct KaiserShape
{
    template <class D>
    HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> inX) const
    {
        const auto one = hn::Set(d, 1.0);
        const auto fraction = hn::Mul(inX, hn::Sub(one, inX));
        const auto quarterSquare = hn::Mul(fraction, hn::Set(d, series.alphaSquared));
        auto sum = one;
        for (std::size_t k = series.terms; k > 0; --k) {
            sum = hn::MulAdd(hn::Mul(quarterSquare, hn::Set(d, series.factors[k])), sum, one);
        }
        return hn::Mul(sum, hn::Set(d, series.scale));
    }

    const BesselSeries& series;
};

/// Loops over vectors of double; the row's type is T.
template <class Shape, class T>
struct WindowStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        const auto place = hn::Iota(d, static_cast<double>(i));
        const auto fromEdge = hn::Min(place, hn::Sub(hn::Set(d, last), place));
        const auto weight = shape(d, hn::Mul(fromEdge, hn::Set(d, step)));
        const hn::Rebind<T, D> dt;
        if constexpr (sizeof(T) == sizeof(double)) {
            return hn::Mul(hn::LoadU(d, inA + i), weight);
        } else {
            return hn::Mul(hn::LoadU(dt, inA + i), hn::DemoteTo(dt, weight));
        }
    }

    template <class D, class V>
    HWY_INLINE void Store(D, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, hn::Rebind<T, D>(), out + i);
    }

    Shape shape;
    const T* inA;
    T* out;
    double last; // index of the last element
    double step; // 1 / last
};

template <class Shape, class T>
void WindowRow(unsigned inCount, const T* inA, T* out, Shape inShape)
{
    if (inCount < 2) {
        for (unsigned i = 0; i < inCount; ++i) {
            out[i] = inA[i];
        }
        return;
    }
    const double last = inCount - 1.0;
    RunRow<false>(hn::ScalableTag<double>(), inCount,
                  WindowStep<Shape, T>{inShape, inA, out, last, 1.0 / last});
}

template <class T>
void BartlettRow(unsigned inCount, const T* inA, T* out)
{
    WindowRow(inCount, inA, out, BartlettShape());
}

template <class T>
void RaisedCosineRow(unsigned inCount, const T* inA, T* out, double inEdge)
{
    WindowRow(inCount, inA, out, RaisedCosineShape{inEdge});
}

template <class T>
void BlackmanRow(unsigned inCount, const T* inA, T* out, double inAlpha)
{
    WindowRow(inCount, inA, out, BlackmanShape{inAlpha});
}

template <class T>
void KaiserRow(unsigned inCount, const T* inA, T* out, const BesselSeries& inSeries)
{
    WindowRow(inCount, inA, out, KaiserShape{inSeries});
}

constexpr auto& BartlettF32 = BartlettRow<float>;
constexpr auto& BartlettF64 = BartlettRow<double>;
constexpr auto& RaisedCosineF32 = RaisedCosineRow<float>;
constexpr auto& RaisedCosineF64 = RaisedCosineRow<double>;
constexpr auto& BlackmanF32 = BlackmanRow<float>;
constexpr auto& BlackmanF64 = BlackmanRow<double>;
constexpr auto& KaiserF32 = KaiserRow<float>;
constexpr auto& KaiserF64 = KaiserRow<double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(BartlettF32);
HWY_EXPORT(BartlettF64);
HWY_EXPORT(RaisedCosineF32);
HWY_EXPORT(RaisedCosineF64);
HWY_EXPORT(BlackmanF32);
HWY_EXPORT(BlackmanF64);
HWY_EXPORT(KaiserF32);
HWY_EXPORT(KaiserF64);

namespace {

constexpr double kHannEdge = 0.0;
constexpr double kHammingEdge = 0.08;

} // namespace

BRISKEN_UNARY(WindowBartlett, float, BartlettF32)
BRISKEN_UNARY(WindowBartlett, double, BartlettF64)

void WindowHann(unsigned inCount, const float* inA, float* out)
{
    BRISKEN_DISPATCH(RaisedCosineF32)(inCount, inA, out, kHannEdge);
}

void WindowHann(unsigned inCount, const double* inA, double* out)
{
    BRISKEN_DISPATCH(RaisedCosineF64)(inCount, inA, out, kHannEdge);
}

void WindowHamming(unsigned inCount, const float* inA, float* out)
{
    BRISKEN_DISPATCH(RaisedCosineF32)(inCount, inA, out, kHammingEdge);
}

void WindowHamming(unsigned inCount, const double* inA, double* out)
{
    BRISKEN_DISPATCH(RaisedCosineF64)(inCount, inA, out, kHammingEdge);
}

void WindowBlackman(unsigned inCount, const float* inA, float* out, float inAlpha)
{
    BRISKEN_DISPATCH(BlackmanF32)(inCount, inA, out, inAlpha);
}

void WindowBlackman(unsigned inCount, const double* inA, double* out, double inAlpha)
{
    BRISKEN_DISPATCH(BlackmanF64)(inCount, inA, out, inAlpha);
}

void WindowKaiser(unsigned inCount, const float* inA, float* out, float inAlpha)
{
    BRISKEN_DISPATCH(KaiserF32)(inCount, inA, out, BesselSeries(inAlpha));
}

void WindowKaiser(unsigned inCount, const double* inA, double* out, double inAlpha)
{
    BRISKEN_DISPATCH(KaiserF64)(inCount, inA, out, BesselSeries(inAlpha));
}

} // namespace brisken::utility

#endif // HWY_ONCE
