#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <brisken/filter/RowBank.h>
#include <brisken/utility/Memory.h>
#include <brisken/utility/Reductions.h>

/// Banks of rows beside a dot product for each sum; the argument is the number of stretches a row meets. The
/// rows are those of 44100 to 48000 Hz, which no first-level cache holds; compare items a second.
namespace brisken {
namespace {

constexpr unsigned kLength = 264;
constexpr unsigned kRows = 160;
constexpr unsigned kHop = 147;
constexpr unsigned kMostStretches = 16;

class Rows
{
public:
    Rows() : mRows(utility::Malloc_Double(kRows * kLength)), mSignal(kLength + kHop * kMostStretches + kRows)
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> value(-1.0, 1.0);
        for (unsigned i = 0; i < kRows * kLength; ++i) {
            mRows[i] = value(random);
        }
        for (auto& sample : mSignal) {
            sample = value(random);
        }
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows() { utility::Free(mRows); }

    const double* Get(unsigned inRow) const { return mRows + std::size_t{inRow} * kLength; }
    const double* GetSignal() const { return mSignal.data(); }

private:
    double* mRows;
    std::vector<double> mSignal;
};

void BM_RowBank(benchmark::State& ioState)
{
    const Rows rows;
    const auto stretches = static_cast<unsigned>(ioState.range(0));
    double sums[kMostStretches * filter::kRowBankRows];
    for (auto _ : ioState) {
        for (unsigned row = 0; row < kRows; row += filter::kRowBankRows) {
            filter::RowBankSums(rows.Get(row), kLength, rows.GetSignal() + row, kHop, stretches, sums);
            benchmark::DoNotOptimize(sums);
        }
    }
    ioState.SetItemsProcessed(ioState.iterations() * kRows * stretches);
}

void BM_RowBank_DotProducts(benchmark::State& ioState)
{
    const Rows rows;
    const auto stretches = static_cast<unsigned>(ioState.range(0));
    for (auto _ : ioState) {
        for (unsigned row = 0; row < kRows; ++row) {
            for (unsigned stretch = 0; stretch < stretches; ++stretch) {
                const double* signal = rows.GetSignal() + row + stretch * kHop;
                benchmark::DoNotOptimize(utility::DotProduct(kLength, rows.Get(row), signal));
            }
        }
    }
    ioState.SetItemsProcessed(ioState.iterations() * kRows * stretches);
}

BENCHMARK(BM_RowBank)->Arg(1)->Arg(2)->Arg(4)->Arg(14);
BENCHMARK(BM_RowBank_DotProducts)->Arg(1)->Arg(2)->Arg(4)->Arg(14);

} // namespace
} // namespace brisken
