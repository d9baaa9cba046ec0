#include <brisken/transform/FFT.h>
#include <brisken/transform/FFTImpl.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

#include <support/Targets.h>

namespace {

using namespace brisken;
using namespace brisken::transform;
using Exact = std::complex<double>;
using Signal = std::vector<Exact>;

/// What the forms have in common: `Run` takes and gives N complex numbers through guarded, misaligned rows.
enum class Rows
{
    Apart,
    InPlace,
    Crossed
};

template <class T>
constexpr T kGuard = T(12345.5);

/// A row that starts off every vector's boundary and notices writes behind its end.
template <class T>
class Row
{
public:
    explicit Row(std::size_t inCount) : mStorage(inCount + 1 + kGuards, kGuard<T>), mCount(inCount) {}

    T* data() { return mStorage.data() + 1; }
    T& operator[](std::size_t inIndex) { return mStorage[inIndex + 1]; }

    bool IsIntact() const
    {
        const auto isGuard = [](T inValue) { return inValue == kGuard<T>; };
        return isGuard(mStorage[0]) && std::all_of(mStorage.begin() + 1 + mCount, mStorage.end(), isGuard);
    }

private:
    static constexpr std::size_t kGuards = 33;
    std::vector<T> mStorage;
    std::size_t mCount;
};

template <class State>
class Fixture
{
public:
    explicit Fixture(unsigned inOrder) : size(std::size_t{1} << inOrder)
    {
        FFTInit(&state, inOrder);
        unsigned bytes = 0;
        FFTGetBufSize(state, &bytes);
        mWork.assign(bytes + 1 + kGuards, kFill);
        work = bytes == 0 ? nullptr : mWork.data() + 1;
        mBytes = bytes;
    }
    ~Fixture()
    {
        EXPECT_TRUE(std::all_of(mWork.begin() + 1 + mBytes, mWork.end(), [](auto inByte) {
            return inByte == kFill;
        })) << "write behind the work buffer";
        FFTFree(state);
    }
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;

    std::size_t size;
    State* state = nullptr;
    unsigned char* work = nullptr;

private:
    static constexpr unsigned char kFill = 0xA5;
    static constexpr std::size_t kGuards = 64;
    std::vector<unsigned char> mWork;
    std::size_t mBytes = 0;
};

template <class T, class State>
struct Split
{
    using Value = T;
    static constexpr bool kReal = false;

    static Signal Run(unsigned inOrder, const Signal& inSignal, bool inForward, Rows inRows)
    {
        Fixture<State> fixture(inOrder);
        Row<T> re(fixture.size), im(fixture.size), otherRe(fixture.size), otherIm(fixture.size);
        for (std::size_t i = 0; i < fixture.size; ++i) {
            re[i] = static_cast<T>(inSignal[i].real());
            im[i] = static_cast<T>(inSignal[i].imag());
        }
        auto& outRe = inRows == Rows::Apart ? otherRe : inRows == Rows::InPlace ? re : im;
        auto& outIm = inRows == Rows::Apart ? otherIm : inRows == Rows::InPlace ? im : re;
        void (*transform)(const T*, const T*, T*, T*, const State*, unsigned char*) = FFTFwd;
        if (!inForward) {
            transform = FFTInv;
        }
        transform(re.data(), im.data(), outRe.data(), outIm.data(), fixture.state, fixture.work);
        EXPECT_TRUE(re.IsIntact() && im.IsIntact() && otherRe.IsIntact() && otherIm.IsIntact());
        Signal result(fixture.size);
        for (std::size_t i = 0; i < fixture.size; ++i) {
            result[i] = Exact(outRe[i], outIm[i]);
        }
        return result;
    }
};

struct Interleaved
{
    using Value = double;
    static constexpr bool kReal = false;

    static Signal Run(unsigned inOrder, const Signal& inSignal, bool inForward, Rows inRows)
    {
        Fixture<FFTState_Complex_Double_Interleaved> fixture(inOrder);
        Row<Exact> in(fixture.size), other(fixture.size);
        std::copy(inSignal.begin(), inSignal.end(), in.data());
        auto& out = inRows == Rows::Apart ? other : in;
        if (inForward) {
            FFTFwd(in.data(), out.data(), fixture.state, fixture.work);
        } else {
            FFTInv(in.data(), out.data(), fixture.state, fixture.work);
        }
        EXPECT_TRUE(in.IsIntact() && other.IsIntact());
        return Signal(out.data(), out.data() + fixture.size);
    }
};

/// Real signals, shown as complex ones: the forward result is completed by symmetry.
template <class T, class State>
struct Real
{
    using Value = T;
    static constexpr bool kReal = true;

    static Signal Run(unsigned inOrder, const Signal& inSignal, bool inForward, Rows inRows)
    {
        Fixture<State> fixture(inOrder);
        const auto size = fixture.size;
        const auto bins = size / 2 + 1;
        Row<T> samples(inRows == Rows::Apart && !inForward ? size : 2 * bins), spectrum(2 * bins);
        auto& in = inForward || inRows != Rows::Apart ? samples : spectrum;
        auto& out = inRows != Rows::Apart ? samples : inForward ? spectrum : samples;
        Signal result(size);
        if (inForward) {
            for (std::size_t i = 0; i < size; ++i) {
                in[i] = static_cast<T>(inSignal[i].real());
            }
            FFTFwd(in.data(), out.data(), fixture.state, fixture.work);
            EXPECT_EQ(0, out[1]);
            EXPECT_EQ(0, out[2 * bins - 1]);
            for (std::size_t i = 0; i < size; ++i) {
                const auto bin = std::min(i, size - i);
                result[i] = Exact(out[2 * bin], i <= size / 2 ? out[2 * bin + 1] : -out[2 * bin + 1]);
            }
        } else {
            for (std::size_t i = 0; i < bins; ++i) {
                in[2 * i] = static_cast<T>(inSignal[i].real());
                in[2 * i + 1] = static_cast<T>(inSignal[i].imag());
            }
            in[1] = in[2 * bins - 1] = std::numeric_limits<T>::quiet_NaN(); // not looked at
            const auto behind = in[size];
            FFTInv(in.data(), out.data(), fixture.state, fixture.work);
            EXPECT_TRUE(size == 1 || in[size] == behind) << "write behind the samples";
            for (std::size_t i = 0; i < size; ++i) {
                result[i] = out[i];
            }
        }
        EXPECT_TRUE(samples.IsIntact() && spectrum.IsIntact());
        return result;
    }
};

using Forms = ::testing::Types<Real<float, FFTState_Float>, Real<double, FFTState_Double>, Interleaved,
                               Split<float, FFTState_Complex_Float_Deinterleaved>,
                               Split<double, FFTState_Complex_Double_Deinterleaved>>;

template <class Form>
Signal Noise(std::size_t inSize, unsigned inSeed)
{
    std::mt19937 random(inSeed);
    std::uniform_real_distribution<float> distribution(-1.0f, 1.0f); // exact in both precisions
    Signal signal(inSize);
    for (auto& value : signal) {
        const auto re = distribution(random);
        value = Exact(re, Form::kReal ? 0.0f : distribution(random));
    }
    return signal;
}

/// Textbook recursion in double precision on exact-angle factors.
Signal Reference(const Signal& inSignal, double inSign)
{
    const auto size = inSignal.size();
    if (size == 1) {
        return inSignal;
    }
    Signal even(size / 2), odd(size / 2), result(size);
    for (std::size_t i = 0; i < size / 2; ++i) {
        even[i] = inSignal[2 * i];
        odd[i] = inSignal[2 * i + 1];
    }
    even = Reference(even, inSign);
    odd = Reference(odd, inSign);
    for (std::size_t i = 0; i < size / 2; ++i) {
        const auto turned =
            odd[i] * std::polar(1.0, inSign * 2.0 * std::numbers::pi * double(i) / double(size));
        result[i] = even[i] + turned;
        result[i + size / 2] = even[i] - turned;
    }
    return result;
}

/// The sum itself, for lengths where it is quick.
Signal Definition(const Signal& inSignal, double inSign)
{
    const auto size = inSignal.size();
    Signal result(size);
    for (std::size_t k = 0; k < size; ++k) {
        std::complex<long double> sum = 0;
        for (std::size_t n = 0; n < size; ++n) {
            const auto angle = inSign * 2.0L * std::numbers::pi_v<long double> *
                               static_cast<long double>(k * n % size) / static_cast<long double>(size);
            sum += std::complex<long double>(inSignal[n]) *
                   std::complex<long double>(std::cos(angle), std::sin(angle));
        }
        result[k] = Exact(sum);
    }
    return result;
}

double Rms(const Signal& inSignal)
{
    double sum = 0;
    for (const auto& value : inSignal) {
        sum += std::norm(value);
    }
    return std::sqrt(sum / double(inSignal.size()));
}

template <class Form>
void ExpectNear(const Signal& inExpected, const Signal& inActual, unsigned inOrder)
{
    Signal error(inExpected.size());
    std::transform(inExpected.begin(), inExpected.end(), inActual.begin(), error.begin(), std::minus<>());
    const auto bound = 0.5 * std::numeric_limits<typename Form::Value>::epsilon() * (1 + inOrder);
    EXPECT_LE(Rms(error) / Rms(inExpected), bound) << "order " << inOrder;
}

template <class Form>
class FFTTest : public ::testing::Test
{
};

TYPED_TEST_SUITE(FFTTest, Forms);

TYPED_TEST(FFTTest, MatchesTheDefiningSumInBothDirectionsOnEveryTarget)
{
    using T = typename TypeParam::Value;
    for (unsigned order = 0; order <= 16; ++order) {
        const auto size = std::size_t{1} << order;
        const auto signal = Noise<TypeParam>(size, order);
        const auto exact = order <= 7 ? Definition : Reference;
        const auto spectrum = exact(signal, -1);
        auto backward = TypeParam::kReal ? spectrum : signal;
        for (auto& value : backward) {
            value = Exact(static_cast<T>(value.real()), static_cast<T>(value.imag()));
        }
        auto samples = exact(backward, +1);
        for (auto& value : samples) {
            value = (TypeParam::kReal ? value.real() : value) / double(size);
        }
        for (const auto& target : GetSupportedTargets()) {
            SCOPED_TRACE(target);
            ASSERT_TRUE(SetActiveTarget(target));
            for (auto rows : {Rows::Apart, Rows::InPlace, Rows::Crossed}) {
                ExpectNear<TypeParam>(spectrum, TypeParam::Run(order, signal, true, rows), order);
                ExpectNear<TypeParam>(samples, TypeParam::Run(order, backward, false, rows), order);
            }
        }
        ResetActiveTarget();
    }
}

/// Where the sums would take too long: the transform of a complex exponential is an impulse, and inverse
/// after forward gives the input back.
TYPED_TEST(FFTTest, IsExactOnExponentialsAndRoundTripsAtGreatLengths)
{
    for (unsigned order : {17u, 18u, 22u}) {
        const auto size = std::size_t{1} << order;
        const auto frequency = size / 3;
        Signal wave(size), impulse(size);
        for (std::size_t i = 0; i < size; ++i) {
            const auto turn = double(i * frequency % size) / double(size);
            const auto value = std::polar(1.0, 2.0 * std::numbers::pi * turn);
            wave[i] = TypeParam::kReal ? value.real() : value;
        }
        impulse[frequency] = TypeParam::kReal ? double(size) / 2 : double(size);
        if (TypeParam::kReal) {
            impulse[size - frequency] = impulse[frequency];
        }
        ExpectNear<TypeParam>(impulse, TypeParam::Run(order, wave, true, Rows::Apart), order);
        ExpectNear<TypeParam>(wave, TypeParam::Run(order, impulse, false, Rows::InPlace), order);
    }
    const auto signal = Noise<TypeParam>(std::size_t{1} << 18, 1);
    const auto spectrum = TypeParam::Run(18, signal, true, Rows::Apart);
    ExpectNear<TypeParam>(signal, TypeParam::Run(18, spectrum, false, Rows::Apart), 2 * 18);
    EXPECT_NEAR(1.0, Rms(spectrum) / Rms(signal) / std::ldexp(1.0, 9), 1e-6) << "energy is conserved";
}

template <class State>
void ExpectRefusal(unsigned inOrder)
{
    auto* state = reinterpret_cast<State*>(&inOrder);
    EXPECT_THROW(FFTInit(&state, inOrder), std::length_error);
    EXPECT_EQ(nullptr, state);
    FFTFree(state);
}

TEST(FFTInitTest, RefusesOrdersAboveTheHighestAndLeavesTheStateNull)
{
    for (auto order : {kMaxFFTOrder + 1, 31u, 32u, 0xFFFFFFFFu}) {
        ExpectRefusal<FFTState_Float>(order);
        ExpectRefusal<FFTState_Double>(order);
        ExpectRefusal<FFTState_Complex_Double_Interleaved>(order);
        ExpectRefusal<FFTState_Complex_Float_Deinterleaved>(order);
        ExpectRefusal<FFTState_Complex_Double_Deinterleaved>(order);
    }
}

TEST(FFTStateTest, ServesSeveralThreadsAndEveryTarget)
{
    constexpr unsigned kOrder = 11;
    FFTState_Float* state = nullptr;
    FFTInit(&state, kOrder);
    unsigned bytes = 0;
    FFTGetBufSize(state, &bytes);
    std::vector<float> samples(1 << kOrder);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::sin(0.1f * float(i));
    }
    std::vector<std::vector<float>> spectra(4, std::vector<float>(samples.size() + 2));
    std::vector<std::thread> threads;
    for (auto& spectrum : spectra) {
        threads.emplace_back([&] {
            std::vector<unsigned char> work(bytes);
            for (int repeat = 0; repeat < 20; ++repeat) {
                FFTFwd(samples.data(), spectrum.data(), state, work.data());
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& spectrum : spectra) {
        EXPECT_EQ(spectra.front(), spectrum);
    }
    // The tables are those of every target.
    for (const auto& target : GetSupportedTargets()) {
        ASSERT_TRUE(SetActiveTarget(target));
        std::vector<unsigned char> work(bytes);
        FFTInv(spectra[0].data(), spectra[1].data(), state, work.data());
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_NEAR(samples[i], spectra[1][i], 1e-6) << target;
        }
    }
    ResetActiveTarget();
    FFTFree(state);
}

template <class Impl>
class FFTImplTest : public ::testing::Test
{
};

using Impls = ::testing::Types<FFTImpl<FFTState_Complex_Float_Deinterleaved>,
                               FFTImpl<FFTState_Complex_Double_Deinterleaved>>;
TYPED_TEST_SUITE(FFTImplTest, Impls);

TYPED_TEST(FFTImplTest, TransformsAtTheLengthSetLast)
{
    using Impl = TypeParam;
    using T = typename Impl::T;
    static_assert(!std::is_copy_constructible_v<Impl> && std::is_nothrow_move_constructible_v<Impl>);
    Impl impl;
    EXPECT_EQ(0u, impl.GetFFTSize());
    T untouched = 7;
    impl.ProcessFwd(&untouched, &untouched, &untouched, &untouched);
    EXPECT_EQ(T(7), untouched);

    for (unsigned order : {9u, 3u, 12u, 12u, 0u}) {
        impl.SetFFTSize(order);
        EXPECT_THROW(impl.SetFFTSize(kMaxFFTOrder + 1), std::length_error);
        Impl moved = std::move(impl);
        impl = std::move(moved);
        ASSERT_EQ(1u << order, impl.GetFFTSize());
        // A delayed impulse turns once around the circle for each sample of delay.
        const auto size = impl.GetFFTSize();
        const auto delay = size / 4;
        std::vector<T> re(size), im(size);
        re[delay] = 1;
        impl.ProcessFwd(re.data(), im.data(), re.data(), im.data());
        for (std::size_t k = 0; k < size; ++k) {
            const auto turn = -2.0 * std::numbers::pi * double(k * delay % size) / double(size);
            EXPECT_NEAR(std::cos(turn), re[k], 1e-6);
            EXPECT_NEAR(std::sin(turn), im[k], 1e-6);
        }
        impl.ProcessInv(re.data(), im.data(), re.data(), im.data());
        for (std::size_t i = 0; i < size; ++i) {
            EXPECT_NEAR(i == delay ? 1.0 : 0.0, re[i], 1e-6);
            EXPECT_NEAR(0.0, im[i], 1e-6);
        }
    }
}

} // namespace
