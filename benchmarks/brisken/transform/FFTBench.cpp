#include <brisken/transform/FFT.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
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
///
/// Measured plans of long transforms take long to make. With TESSARO_BENCH_PATIENT=1 in the environment they
/// are given the time, and the lengths go up to 2^20; without, each plan has a second, and the
/// lengths end at 2^14.
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

bool IsPatient()
{
    const char* value = std::getenv("TESSARO_BENCH_PATIENT");
    return value != nullptr && *value == '1';
}

#ifdef TESSARO_HAVE_FFTW
constexpr bool kHavePeer = true;
constexpr double kPlanningSeconds = 1.0;

unsigned PlanningFlags()
{
    if (!IsPatient()) {
        fftw_set_timelimit(kPlanningSeconds);
        fftwf_set_timelimit(kPlanningSeconds);
    }
    return FFTW_MEASURE;
}
#else
constexpr bool kHavePeer = false;
#endif

struct RealForward
{
    static constexpr double kFlops = 2.5;

    explicit RealForward(unsigned inOrder) : size(std::size_t{1} << inOrder), ours(inOrder) {}

    void RunOurs() { FFTFwd(in.data(), out.data(), ours.state, ours.work.data()); }

    std::size_t size;
    Owned<FFTState_Float> ours;
    Row<float> in{size}, out{size + 2};
#ifdef TESSARO_HAVE_FFTW
    void RunPeer()
    {
        fftwf_execute(plan.get());
    }

    Row<float> peerOut{size + 2};
    std::unique_ptr<std::remove_pointer_t<fftwf_plan>, decltype(&fftwf_destroy_plan)> plan{
        fftwf_plan_dft_r2c_1d(int(size), in.data(), reinterpret_cast<fftwf_complex*>(peerOut.data()),
                              PlanningFlags() | FFTW_PRESERVE_INPUT),
        fftwf_destroy_plan};
#endif
};

struct RealInverse
{
    static constexpr double kFlops = 2.5;

    explicit RealInverse(unsigned inOrder) : size(std::size_t{1} << inOrder), ours(inOrder) {}

    void RunOurs() { FFTInv(in.data(), out.data(), ours.state, ours.work.data()); }

    std::size_t size;
    Owned<FFTState_Float> ours;
    Row<float> in{size + 2}, out{size};
#ifdef TESSARO_HAVE_FFTW
    void RunPeer()
    {
        fftwf_execute(plan.get());
    }

    Row<float> peerIn{size + 2}, peerOut{size};
    std::unique_ptr<std::remove_pointer_t<fftwf_plan>, decltype(&fftwf_destroy_plan)> plan{
        fftwf_plan_dft_c2r_1d(int(size), reinterpret_cast<fftwf_complex*>(peerIn.data()), peerOut.data(),
                              PlanningFlags()),
        fftwf_destroy_plan};
#endif
};

struct SplitDouble
{
    static constexpr double kFlops = 5.0;

    explicit SplitDouble(unsigned inOrder) : size(std::size_t{1} << inOrder), ours(inOrder) {}

    void RunOurs() { FFTFwd(re.data(), im.data(), outRe.data(), outIm.data(), ours.state, ours.work.data()); }

    std::size_t size;
    Owned<FFTState_Complex_Double_Deinterleaved> ours;
    Row<double> re{size}, im{size}, outRe{size}, outIm{size};
#ifdef TESSARO_HAVE_FFTW
    void RunPeer()
    {
        fftw_execute(plan.get());
    }

    Row<double> peerRe{size}, peerIm{size};
    fftw_iodim dimension{int(size), 1, 1};
    std::unique_ptr<std::remove_pointer_t<fftw_plan>, decltype(&fftw_destroy_plan)> plan{
        fftw_plan_guru_split_dft(1, &dimension, 0, nullptr, re.data(), im.data(), peerRe.data(),
                                 peerIm.data(), PlanningFlags() | FFTW_PRESERVE_INPUT),
        fftw_destroy_plan};
#endif
};

template <class Case>
void Compare(benchmark::State& ioState)
{
    const auto order = static_cast<unsigned>(ioState.range(0));
    // A benchmark is called several times until it has run long enough; its plan is kept meanwhile.
    static std::unique_ptr<Case> kept;
    if (kept == nullptr || kept->size != std::size_t{1} << order) {
        kept.reset();
        kept = std::make_unique<Case>(order);
    }
    const auto batch = std::max<std::size_t>(1, 40000 / (kept->size * std::max(1u, order)));
    Stopwatch ours, peer;
    for (auto _ : ioState) {
        ours.Run(batch, [] { kept->RunOurs(); });
        if constexpr (kHavePeer) {
            peer.Run(batch, [] { kept->RunPeer(); });
        }
    }
    const auto giga = Case::kFlops * double(kept->size) * order * 1e-9;
    ioState.counters["ns"] = ours.GetBest() * 1e9;
    ioState.counters["GFLOPS"] = giga / ours.GetBest();
    if constexpr (kHavePeer) {
        ioState.counters["fftwGFLOPS"] = giga / peer.GetBest();
        ioState.counters["ratio"] = peer.GetBest() / ours.GetBest();
    }
}

void Lengths(benchmark::internal::Benchmark* outBenchmark)
{
    outBenchmark->DenseRange(1, IsPatient() ? 20 : 14);
}

BENCHMARK_TEMPLATE(Compare, RealForward)->Apply(Lengths);
BENCHMARK_TEMPLATE(Compare, RealInverse)->Apply(Lengths);
BENCHMARK_TEMPLATE(Compare, SplitDouble)->Apply(Lengths);

} // namespace
