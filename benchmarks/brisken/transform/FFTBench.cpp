#include <brisken/transform/FFT.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>
#ifdef TESSARO_HAVE_FFTW
#include <fftw3.h>
#endif

/// Speed of the transforms in GFLOPS by the usual count (5 N log2 N operations for a complex transform, half
/// of that for a real one), and as a ratio to FFTW at its best: aligned rows, plans made by measuring. The
/// two run in turns within one benchmark, in batches of some microseconds, and the fastest batch of each
/// counts.
namespace {

using namespace brisken;
using namespace brisken::transform;
using Clock = std::chrono::steady_clock;

/// Rows aligned as the peer likes it best.
template <class T>
class Row
{
public:
    explicit Row(std::size_t inCount)
        : mData(static_cast<T*>(::operator new (inCount * sizeof(T), std::align_val_t{64})))
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<T> distribution(-1, 1);
        std::generate_n(mData, inCount, [&] { return distribution(random); });
    }
    ~Row() { ::operator delete (mData, std::align_val_t{64}); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    T* data() { return mData; }

private:
    T* mData;
};

template <class State>
struct Owned
{
    explicit Owned(unsigned inOrder)
    {
        FFTInit(&state, inOrder);
        unsigned bytes = 0;
        FFTGetBufSize(state, &bytes);
        work.resize(bytes);
    }
    ~Owned() { FFTFree(state); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    State* state = nullptr;
    std::vector<unsigned char> work;
};

/// Seconds a call, in the fastest of the batches so far.
class Stopwatch
{
public:
    template <class Call>
    void Run(std::size_t inBatch, Call inCall)
    {
        const auto start = Clock::now();
        for (std::size_t i = 0; i < inBatch; ++i) {
            inCall();
        }
        const auto took = std::chrono::duration<double>(Clock::now() - start).count() / double(inBatch);
        mBest = std::min(mBest, took);
    }

    double GetBest() const { return mBest; }

private:
    double mBest = std::numeric_limits<double>::infinity();
};

template <class Ours, class Peer>
void Compare(benchmark::State& ioState, unsigned inOrder, double inFlopsPerPoint, Ours inOurs, Peer inPeer)
{
    const auto size = std::size_t{1} << inOrder;
    const auto batch = std::max<std::size_t>(1, 40000 / (size * std::max(1u, inOrder)));
    Stopwatch ours, peer;
    for (auto _ : ioState) {
        ours.Run(batch, inOurs);
        if constexpr (!std::is_same_v<Peer, std::nullptr_t>) {
            peer.Run(batch, inPeer);
        }
    }
    const auto giga = inFlopsPerPoint * double(size) * inOrder * 1e-9;
    ioState.counters["GFLOPS"] = giga / ours.GetBest();
    if constexpr (!std::is_same_v<Peer, std::nullptr_t>) {
        ioState.counters["fftwGFLOPS"] = giga / peer.GetBest();
        ioState.counters["ratio"] = peer.GetBest() / ours.GetBest();
    }
    ioState.counters["ns"] = ours.GetBest() * 1e9;
}

#ifdef TESSARO_HAVE_FFTW
/// Measured plans take long to make for long transforms.
unsigned PlanningRigor(unsigned inOrder)
{
    const char* quick = std::getenv("TESSARO_BENCH_QUICK");
    return quick != nullptr && *quick == '1' && inOrder > 10 ? FFTW_ESTIMATE : FFTW_MEASURE;
}
#endif

void RealFloat(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    const auto size = std::size_t{1} << order;
    Owned<FFTState_Float> ours(order);
    Row<float> in(size), out(size + 2);
    const auto run = [&] { FFTFwd(in.data(), out.data(), ours.state, ours.work.data()); };
#ifdef TESSARO_HAVE_FFTW
    Row<float> peerOut(size + 2);
    auto* plan = fftwf_plan_dft_r2c_1d(int(size), in.data(), reinterpret_cast<fftwf_complex*>(peerOut.data()),
                                       PlanningRigor(order) | FFTW_PRESERVE_INPUT);
    Compare(ioState, order, 2.5, run, [plan] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
#else
    Compare(ioState, order, 2.5, run, nullptr);
#endif
}

void RealFloatInverse(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    const auto size = std::size_t{1} << order;
    Owned<FFTState_Float> ours(order);
    Row<float> in(size + 2), out(size);
    const auto run = [&] { FFTInv(in.data(), out.data(), ours.state, ours.work.data()); };
#ifdef TESSARO_HAVE_FFTW
    Row<float> peerOut(size);
    auto* plan = fftwf_plan_dft_c2r_1d(int(size), reinterpret_cast<fftwf_complex*>(in.data()), peerOut.data(),
                                       PlanningRigor(order));
    Row<float> fresh(size + 2); // planning overwrites its arrays, and so does running this plan
    std::memcpy(in.data(), fresh.data(), (size + 2) * sizeof(float));
    Compare(ioState, order, 2.5, run, [plan] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
#else
    Compare(ioState, order, 2.5, run, nullptr);
#endif
}

void SplitDouble(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    const auto size = std::size_t{1} << order;
    Owned<FFTState_Complex_Double_Deinterleaved> ours(order);
    Row<double> re(size), im(size), outRe(size), outIm(size);
    const auto run = [&] {
        FFTFwd(re.data(), im.data(), outRe.data(), outIm.data(), ours.state, ours.work.data());
    };
#ifdef TESSARO_HAVE_FFTW
    Row<double> peerRe(size), peerIm(size);
    const fftw_iodim dimension{int(size), 1, 1};
    auto* plan = fftw_plan_guru_split_dft(1, &dimension, 0, nullptr, re.data(), im.data(), peerRe.data(),
                                          peerIm.data(), PlanningRigor(order) | FFTW_PRESERVE_INPUT);
    Compare(ioState, order, 5.0, run, [plan] { fftw_execute(plan); });
    fftw_destroy_plan(plan);
#else
    Compare(ioState, order, 5.0, run, nullptr);
#endif
}

BENCHMARK(RealFloat)->DenseRange(1, 20);
BENCHMARK(RealFloatInverse)->DenseRange(1, 20);
BENCHMARK(SplitDouble)->DenseRange(1, 20);

} // namespace
