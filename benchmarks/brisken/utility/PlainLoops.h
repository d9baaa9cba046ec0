#pragma once

#include <cmath>
#include <complex>
#include <cstring>

/// What a kernel is given, and the rows that it works on. `one` is a constant that the compiler must not
/// know, which lets a row be multiplied again and again without leaving the range of numbers.
struct Rows
{
    unsigned n;
    const float *a, *b, *ones;
    float* d;
    const double* wide;
    double* wideResult;
    const std::complex<float>*pairsA, *pairsB;
    std::complex<float>* pairsResult;
    const short* shorts;
    const unsigned* words;
    unsigned* wordsResult;
    float* planar[6];
    float* frames;
    float one, result, secondResult;
    unsigned index, secondIndex;
    unsigned two, six; // channels, which the compiler must not know either
};

/// The loops that anyone would write in place of the kernels, each under the kernel's name. Compiled twice:
/// with the benchmark's own flags, inlined into the measurement, and in UtilityNative.cpp for the machine at
/// hand.
namespace TESSARO_PLAIN_NAMESPACE {

#define TESSARO_PLAIN_LOOP(NAME, STATEMENT)                                                                  \
    inline void NAME(Rows& r)                                                                                \
    {                                                                                                        \
        for (unsigned i = 0; i < r.n; ++i) {                                                                 \
            STATEMENT;                                                                                       \
        }                                                                                                    \
    }

TESSARO_PLAIN_LOOP(Add, r.d[i] = r.a[i] + r.b[i])
TESSARO_PLAIN_LOOP(Add_InPlace, r.d[i] += r.a[i])
TESSARO_PLAIN_LOOP(Sub, r.d[i] = r.b[i] - r.a[i])
TESSARO_PLAIN_LOOP(AddConstant, r.d[i] = r.a[i] + r.one)
TESSARO_PLAIN_LOOP(Mul, r.d[i] = r.a[i] * r.b[i])
TESSARO_PLAIN_LOOP(Mul_InPlace, r.d[i] *= r.ones[i])
TESSARO_PLAIN_LOOP(MulConstant, r.d[i] = r.a[i] * r.one)
TESSARO_PLAIN_LOOP(MulConstant_InPlace, r.d[i] *= r.one)
TESSARO_PLAIN_LOOP(Div_InPlace, r.d[i] /= r.ones[i])
TESSARO_PLAIN_LOOP(DivConstant_InPlace, r.d[i] /= r.one)
TESSARO_PLAIN_LOOP(AddProduct, r.d[i] += r.a[i] * r.b[i])
TESSARO_PLAIN_LOOP(AddConstantProduct, r.d[i] += r.a[i] * r.one)
TESSARO_PLAIN_LOOP(Sqr, r.d[i] = r.a[i] * r.a[i])
TESSARO_PLAIN_LOOP(Sqrt_InPlace, r.d[i] = std::sqrt(r.d[i]))
TESSARO_PLAIN_LOOP(Abs, r.d[i] = std::abs(r.a[i]))
TESSARO_PLAIN_LOOP(Ln, r.wideResult[i] = std::log(r.wide[i]))
TESSARO_PLAIN_LOOP(MaxEvery_InPlace, r.d[i] = r.a[i] > r.d[i] ? r.a[i] : r.d[i])
TESSARO_PLAIN_LOOP(Threshold_LT_InPlace, r.d[i] = r.d[i] < r.one ? r.one : r.d[i])
TESSARO_PLAIN_LOOP(Threshold_GT_InPlace, r.d[i] = r.d[i] > r.one ? r.one : r.d[i])
TESSARO_PLAIN_LOOP(Trim, r.d[i] = r.d[i] < -r.one ? -r.one : (r.d[i] > r.one ? r.one : r.d[i]))
TESSARO_PLAIN_LOOP(Zero, r.d[i] = 0)
TESSARO_PLAIN_LOOP(Set, r.d[i] = r.one)
TESSARO_PLAIN_LOOP(Copy, r.d[i] = r.a[i])
TESSARO_PLAIN_LOOP(Flip, r.d[i] = r.a[r.n - 1 - i])
TESSARO_PLAIN_LOOP(SwapBytes, r.wordsResult[i] = __builtin_bswap32(r.words[i]))
TESSARO_PLAIN_LOOP(ConvertToFloat, r.d[i] = static_cast<float>(r.wide[i]))
TESSARO_PLAIN_LOOP(ConvertToDouble, r.wideResult[i] = r.a[i])
TESSARO_PLAIN_LOOP(ConvertFromShort, r.d[i] = r.shorts[i] * 0x1p-15f)
TESSARO_PLAIN_LOOP(MulComplex, const auto a = r.pairsA[i]; const auto b = r.pairsB[i];
                   r.pairsResult[i] = std::complex<float>(a.real() * b.real() - a.imag() * b.imag(),
                                                          a.real() * b.imag() + a.imag() * b.real()))
TESSARO_PLAIN_LOOP(Magnitude, const auto a = r.pairsA[i];
                   r.d[i] = std::sqrt(a.real() * a.real() + a.imag() * a.imag()))
TESSARO_PLAIN_LOOP(PowerSpectr, const auto a = r.pairsA[i];
                   r.d[i] = a.real() * a.real() + a.imag() * a.imag())
TESSARO_PLAIN_LOOP(CartToPolar, r.planar[0][i] = std::sqrt(r.a[i] * r.a[i] + r.b[i] * r.b[i]);
                   r.planar[1][i] = std::atan2(r.b[i], r.a[i]))
TESSARO_PLAIN_LOOP(PolarToCart, r.pairsResult[i] = std::complex<float>(r.a[i] * std::cos(r.b[i]),
                                                                       r.a[i] * std::sin(r.b[i])))
TESSARO_PLAIN_LOOP(WindowHann, const float x = static_cast<float>(i) / static_cast<float>(r.n - 1);
                   r.d[i] = r.a[i] * (0.5f - 0.5f * std::cos(6.2831853f * x)))

inline void Interleave(Rows& r, unsigned inChannels)
{
    for (unsigned i = 0; i < r.n; ++i) {
        for (unsigned c = 0; c < inChannels; ++c) {
            r.frames[i * inChannels + c] = r.planar[c][i];
        }
    }
}

inline void Deinterleave(Rows& r, unsigned inChannels)
{
    for (unsigned i = 0; i < r.n; ++i) {
        for (unsigned c = 0; c < inChannels; ++c) {
            r.planar[c][i] = r.frames[i * inChannels + c];
        }
    }
}

inline void InterleaveStereo(Rows& r)
{
    Interleave(r, r.two);
}

inline void InterleaveSurround(Rows& r)
{
    Interleave(r, r.six);
}

inline void DeinterleaveStereo(Rows& r)
{
    Deinterleave(r, r.two);
}

inline void DeinterleaveSurround(Rows& r)
{
    Deinterleave(r, r.six);
}

constexpr unsigned kConvolutionTaps = 64;

/// The row by 64 taps, as the row is long enough for them.
inline void Convolve(Rows& r)
{
    const unsigned taps = r.n < kConvolutionTaps ? r.n : kConvolutionTaps;
    for (unsigned i = 0; i < r.n - taps + 1; ++i) {
        r.wideResult[i] = 0;
    }
    for (unsigned k = 0; k < taps; ++k) {
        for (unsigned i = 0; i < r.n - taps + 1; ++i) {
            r.wideResult[i + k] += r.wide[k] * r.wide[i];
        }
    }
}

#define TESSARO_PLAIN_REDUCTION(NAME, START, STATEMENT, FINISH)                                              \
    inline void NAME(Rows& r)                                                                                \
    {                                                                                                        \
        float found = START;                                                                                 \
        for (unsigned i = 0; i < r.n; ++i) {                                                                 \
            STATEMENT;                                                                                       \
        }                                                                                                    \
        r.result = FINISH;                                                                                   \
    }

TESSARO_PLAIN_REDUCTION(Sum, 0, found += r.a[i], found)
TESSARO_PLAIN_REDUCTION(DotProduct, 0, found += r.a[i] * r.b[i], found)
TESSARO_PLAIN_REDUCTION(NormL2, 0, found += r.a[i] * r.a[i], std::sqrt(found))
TESSARO_PLAIN_REDUCTION(MaxAbs, 0, found = std::abs(r.a[i]) > found ? std::abs(r.a[i]) : found, found)
TESSARO_PLAIN_REDUCTION(Min, r.a[0], found = r.a[i] < found ? r.a[i] : found, found)
TESSARO_PLAIN_REDUCTION(Max, r.a[0], found = r.a[i] > found ? r.a[i] : found, found)

inline void MinMax(Rows& r)
{
    float min = r.a[0];
    float max = r.a[0];
    for (unsigned i = 1; i < r.n; ++i) {
        min = r.a[i] < min ? r.a[i] : min;
        max = r.a[i] > max ? r.a[i] : max;
    }
    r.result = min;
    r.secondResult = max;
}

inline void MinMaxIndex(Rows& r)
{
    unsigned min = 0;
    unsigned max = 0;
    for (unsigned i = 1; i < r.n; ++i) {
        min = r.a[i] < r.a[min] ? i : min;
        max = r.a[i] > r.a[max] ? i : max;
    }
    r.index = min;
    r.secondIndex = max;
}

inline void StandardDeviation(Rows& r)
{
    float sum = 0;
    for (unsigned i = 0; i < r.n; ++i) {
        sum += r.a[i];
    }
    const float mean = sum / static_cast<float>(r.n);
    float squares = 0;
    for (unsigned i = 0; i < r.n; ++i) {
        squares += (r.a[i] - mean) * (r.a[i] - mean);
    }
    r.result = std::sqrt(squares / static_cast<float>(r.n - 1));
}

#undef TESSARO_PLAIN_LOOP
#undef TESSARO_PLAIN_REDUCTION

} // namespace TESSARO_PLAIN_NAMESPACE

/// All of them, for tables.
// clang-format off
#define TESSARO_ELEMENTWISE_KERNELS(X)                                                                \
    X(Add) X(Add_InPlace) X(Sub) X(AddConstant) X(Mul) X(Mul_InPlace) X(MulConstant)                  \
    X(MulConstant_InPlace) X(Div_InPlace) X(DivConstant_InPlace) X(AddProduct) X(AddConstantProduct)  \
    X(Sqr) X(Sqrt_InPlace) X(Abs) X(Ln) X(MaxEvery_InPlace) X(Threshold_LT_InPlace)                   \
    X(Threshold_GT_InPlace) X(Trim) X(Zero) X(Set) X(Copy) X(Flip) X(SwapBytes) X(ConvertToFloat)     \
    X(ConvertToDouble) X(ConvertFromShort) X(MulComplex) X(Magnitude) X(PowerSpectr) X(CartToPolar)   \
    X(PolarToCart) X(WindowHann) X(InterleaveStereo) X(InterleaveSurround) X(DeinterleaveStereo)      \
    X(DeinterleaveSurround) X(Convolve)
#define TESSARO_REDUCTION_KERNELS(X)                                                                  \
    X(Sum) X(DotProduct) X(NormL2) X(MaxAbs) X(Min) X(Max) X(MinMax) X(MinMaxIndex)                   \
    X(StandardDeviation)
// clang-format on
