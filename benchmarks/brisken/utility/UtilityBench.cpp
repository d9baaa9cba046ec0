// Every kernel against the plain loop in its place, in one run:
//
//     ours    the kernel, ns a call
//     plain   the loop compiled as the rest of the program, inlined
//     native  the loop compiled for this machine
//     ratio   how many times the kernel is faster than the loop that the bar names
//     bar     the least ratio: element-wise kernels against the native loop from 512 elements on, reductions
//     likewise;
//             all kernels against the inlined loop at 16 elements, where the call itself counts
//
// Each figure is the best of many short turns taken by the three in alternation, so that a busy machine
// spoils all three alike.

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <brisken/Utility.h>

#define TESSARO_PLAIN_NAMESPACE plain
#include "UtilityNative.h"

namespace ours {

namespace utility = brisken::utility;

#define TESSARO_KERNEL(NAME, CALL)                                                                           \
    inline void NAME(Rows& r)                                                                                \
    {                                                                                                        \
        CALL;                                                                                                \
    }

TESSARO_KERNEL(Add, utility::Add(r.n, r.a, r.b, r.d))
TESSARO_KERNEL(Add_InPlace, utility::Add_InPlace(r.n, r.a, r.d))
TESSARO_KERNEL(Sub, utility::Sub(r.n, r.a, r.b, r.d))
TESSARO_KERNEL(AddConstant, utility::AddConstant(r.n, r.a, r.one, r.d))
TESSARO_KERNEL(Mul, utility::Mul(r.n, r.a, r.b, r.d))
TESSARO_KERNEL(Mul_InPlace, utility::Mul_InPlace(r.n, r.ones, r.d))
TESSARO_KERNEL(MulConstant, utility::MulConstant(r.n, r.a, r.d, r.one))
TESSARO_KERNEL(MulConstant_InPlace, utility::MulConstant_InPlace(r.n, r.d, r.one))
TESSARO_KERNEL(Div_InPlace, utility::Div_InPlace(r.n, r.ones, r.d))
TESSARO_KERNEL(DivConstant_InPlace, utility::DivConstant_InPlace(r.n, r.d, r.one))
TESSARO_KERNEL(AddProduct, utility::AddProduct(r.n, r.a, r.b, r.d))
TESSARO_KERNEL(AddConstantProduct, utility::AddConstantProduct(r.n, r.a, r.d, r.one))
TESSARO_KERNEL(Sqr, utility::Sqr(r.n, r.a, r.d))
TESSARO_KERNEL(Sqrt_InPlace, utility::Sqrt_InPlace(r.n, r.d))
TESSARO_KERNEL(Abs, utility::Abs(r.n, r.a, r.d))
TESSARO_KERNEL(Ln, utility::Ln(r.n, r.wide, r.wideResult))
TESSARO_KERNEL(MaxEvery_InPlace, utility::MaxEvery_InPlace(r.n, r.a, r.d))
TESSARO_KERNEL(Threshold_LT_InPlace, utility::Threshold_LT_InPlace(r.n, r.d, r.one))
TESSARO_KERNEL(Threshold_GT_InPlace, utility::Threshold_GT_InPlace(r.n, r.d, r.one))
TESSARO_KERNEL(Trim, utility::Trim(r.n, r.d, -r.one, r.one))
TESSARO_KERNEL(Zero, utility::Zero(r.n, r.d))
TESSARO_KERNEL(Set, utility::Set(r.n, r.d, r.one))
TESSARO_KERNEL(Copy, utility::Copy(r.n, r.a, r.d))
TESSARO_KERNEL(Flip, utility::Flip(r.n, r.a, r.d))
TESSARO_KERNEL(SwapBytes, utility::SwapBytes(r.n, r.words, r.wordsResult))
TESSARO_KERNEL(ConvertToFloat, utility::Convert(r.n, r.wide, r.d))
TESSARO_KERNEL(ConvertToDouble, utility::Convert(r.n, r.a, r.wideResult))
TESSARO_KERNEL(ConvertFromShort, utility::Convert(r.n, r.shorts, r.d, 15))
TESSARO_KERNEL(MulComplex, utility::Mul(r.n, r.pairsA, r.pairsB, r.pairsResult))
TESSARO_KERNEL(Magnitude, utility::Magnitude(r.n, r.pairsA, r.d))
TESSARO_KERNEL(PowerSpectr, utility::PowerSpectr(r.n, r.pairsA, r.d))
TESSARO_KERNEL(CartToPolar, utility::CartToPolar(r.n, r.a, r.b, r.planar[0], r.planar[1]))
TESSARO_KERNEL(PolarToCart, utility::PolarToCart(r.n, r.a, r.b, r.pairsResult))
TESSARO_KERNEL(WindowHann, utility::WindowHann(r.n, r.a, r.d))
TESSARO_KERNEL(InterleaveStereo, utility::Interleave(r.n, r.two, r.planar, r.frames))
TESSARO_KERNEL(InterleaveSurround, utility::Interleave(r.n, r.six, r.planar, r.frames))
TESSARO_KERNEL(DeinterleaveStereo, utility::Deinterleave(r.n, r.two, r.frames, r.planar))
TESSARO_KERNEL(DeinterleaveSurround, utility::Deinterleave(r.n, r.six, r.frames, r.planar))
TESSARO_KERNEL(Sum, r.result = utility::Sum(r.n, r.a))
TESSARO_KERNEL(DotProduct, r.result = utility::DotProduct(r.n, r.a, r.b))
TESSARO_KERNEL(NormL2, r.result = utility::NormL2(r.n, r.a))
TESSARO_KERNEL(MaxAbs, r.result = utility::MaxAbs(r.a, r.n))
TESSARO_KERNEL(Min, r.result = utility::Min(r.n, r.a))
TESSARO_KERNEL(Max, r.result = utility::Max(r.n, r.a))
TESSARO_KERNEL(MinMax, utility::MinMax(r.n, r.a, r.result, r.secondResult))
TESSARO_KERNEL(MinMaxIndex, utility::MinMaxIndex(r.n, r.a, r.result, r.secondResult, r.index, r.secondIndex))
TESSARO_KERNEL(StandardDeviation, utility::StandardDeviation(r.n, r.a, r.result))
#undef TESSARO_KERNEL

inline void Convolve(Rows& r)
{
    const unsigned taps = std::min(r.n, plain::kConvolutionTaps);
    utility::Convolve(r.n - taps + 1, r.wide, taps, r.wide, r.wideResult, nullptr);
}

} // namespace ours

namespace {

constexpr unsigned kLargest = 65536;
constexpr unsigned kStride = kLargest + 272; // rows at other places of a page each, as in life
constexpr double kElementwiseBar = 0.9;
constexpr double kReductionBar = 10.0;
constexpr double kShortRowBar = 0.5;

/// Rows of random numbers, aligned as the library's own memory is.
class Material
{
public:
    explicit Material(unsigned inCount) : mSources(8 * kStride + 64), mResults(20 * kStride + 64)
    {
        std::mt19937 generator(1);
        std::uniform_real_distribution<float> uniform(0.5f, 1.5f);
        for (auto& value : mSources) {
            value = uniform(generator);
        }
        float* source = Align(mSources.data());
        float* result = Align(mResults.data());
        mRows = {};
        mRows.n = inCount;
        mRows.a = source;
        mRows.b = source + kStride;
        mRows.ones = source + 2 * kStride;
        std::fill_n(source + 2 * kStride, kStride, 1.0f);
        mRows.pairsA = reinterpret_cast<const std::complex<float>*>(source);
        mRows.pairsB = reinterpret_cast<const std::complex<float>*>(source + kStride);
        mRows.words = reinterpret_cast<const unsigned*>(source);
        mRows.shorts = reinterpret_cast<const short*>(source);
        double* wide = reinterpret_cast<double*>(source + 4 * kStride);
        std::copy_n(source, kLargest, wide);
        mRows.wide = wide;
        mRows.d = result;
        mRows.frames = result + 14 * kStride;
        mRows.pairsResult = reinterpret_cast<std::complex<float>*>(result + 2 * kStride);
        mRows.wideResult = reinterpret_cast<double*>(result + 4 * kStride);
        mRows.wordsResult = reinterpret_cast<unsigned*>(result + 6 * kStride);
        for (unsigned c = 0; c < 6; ++c) {
            mRows.planar[c] = result + (8 + c) * kStride;
        }
        std::fill_n(result, 20 * kStride, 1.0f);
        mRows.one = 1.0f;
        mRows.two = 2;
        mRows.six = 6;
        benchmark::DoNotOptimize(mRows);
    }

    Rows& Get() { return mRows; }

private:
    static float* Align(float* inPointer)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(inPointer);
        return reinterpret_cast<float*>((address + 63) / 64 * 64);
    }

    std::vector<float> mSources;
    std::vector<float> mResults;
    Rows mRows;
};

/// Time of a number of calls, in ns a call.
template <void (*kFunction)(Rows&)>
double Measure(Rows& ioRows, unsigned inCalls)
{
    const auto start = std::chrono::steady_clock::now();
    for (unsigned call = 0; call < inCalls; ++call) {
        kFunction(ioRows);
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / inCalls;
}

struct Best
{
    double ours = std::numeric_limits<double>::max();
    double plain = std::numeric_limits<double>::max();
    double native = std::numeric_limits<double>::max();
};

void Report(benchmark::State& ioState, const Best& inBest, double inLongRowBar)
{
    const bool isShort = ioState.range(0) <= 16;
    const double bar = isShort ? kShortRowBar : inLongRowBar;
    const double ratio = (isShort ? inBest.plain : inBest.native) / inBest.ours;
    ioState.counters["ours"] = inBest.ours;
    ioState.counters["plain"] = inBest.plain;
    ioState.counters["native"] = inBest.native;
    ioState.counters["ratio"] = ratio;
    ioState.counters["bar"] = bar;
    ioState.SetLabel(ratio >= bar ? "ok" : "MISS");
}

template <void (*kOurs)(Rows&), void (*kPlain)(Rows&), void (*kNative)(Rows&)>
void Compare(benchmark::State& ioState, double inLongRowBar)
{
    constexpr double kTurn = 20000; // ns, about, for each of the three
    Material material(static_cast<unsigned>(ioState.range(0)));
    Rows& rows = material.Get();
    const double estimate = std::max(1.0, Measure<kPlain>(rows, 3));
    const auto calls = static_cast<unsigned>(std::clamp(kTurn / estimate, 1.0, 5000.0));
    Best best;
    for (auto _ : ioState) {
        const double ours = Measure<kOurs>(rows, calls);
        best.ours = std::min(best.ours, ours);
        best.plain = std::min(best.plain, Measure<kPlain>(rows, calls));
        best.native = std::min(best.native, Measure<kNative>(rows, calls));
        ioState.SetIterationTime(ours * calls * 1e-9);
    }
    Report(ioState, best, inLongRowBar);
}

template <void (*kOurs)(Rows&), void (*kPlain)(Rows&), void (*kNative)(Rows&)>
void Register(const char* inName, double inLongRowBar)
{
    benchmark::RegisterBenchmark(inName, Compare<kOurs, kPlain, kNative>, inLongRowBar)
        ->Arg(16)
        ->Arg(512)
        ->Arg(kLargest)
        ->UseManualTime();
}

const bool gRegistered = [] {
#define TESSARO_REGISTER(NAME) Register<ours::NAME, plain::NAME, native::NAME>("Utility/" #NAME, bar);
    double bar = kElementwiseBar;
    TESSARO_ELEMENTWISE_KERNELS(TESSARO_REGISTER)
    bar = kReductionBar;
    TESSARO_REDUCTION_KERNELS(TESSARO_REGISTER)
#undef TESSARO_REGISTER
    return true;
}();

} // namespace
