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
            FFTInv(in.data(), out.data(), fixture.state, fixture.work);
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
protected:
    static constexpr auto kForward = true;

    void ForEachTarget(const std::function<void()>& inTest)
    {
        for (const auto& target : GetSupportedTargets()) {
            SCOPED_TRACE(target);
            ASSERT_TRUE(SetActiveTarget(target));
            inTest();
        }
        ResetActiveTarget();
    }
};

TYPED_TEST_SUITE(FFTTest, Forms);

TYPED_TEST(FFTTest, MatchesTheDefiningSumInBothDirections)
{
    this->ForEachTarget([] {
        for (unsigned order = 0; order <= 16; ++order) {
            const auto size = std::size_t{1} << order;
            const auto signal = Noise<TypeParam>(size, order);
            const auto exact = order <= 8 ? Definition : Reference;
            const auto spectrum = exact(signal, -1);
            for (auto rows : {Rows::Apart, Rows::InPlace, Rows::Crossed}) {
                ExpectNear<TypeParam>(spectrum, TypeParam::Run(order, signal, true, rows), order);
            }
            auto backward = TypeParam::kReal ? spectrum : signal;
            // Single precision sees the rounded spectrum.
            for (auto& value : backward) {
                using T = typename TypeParam::Value;
                value = Exact(static_cast<T>(value.real()), static_cast<T>(value.imag()));
            }
            auto samples = exact(backward, +1);
            for (auto& value : samples) {
                value /= double(size);
                value = TypeParam::kReal ? value.real() : value;
            }
            for (auto rows : {Rows::Apart, Rows::InPlace, Rows::Crossed}) {
                ExpectNear<TypeParam>(samples, TypeParam::Run(order, backward, false, rows), order);
            }
        }
    });
}

} // namespace
