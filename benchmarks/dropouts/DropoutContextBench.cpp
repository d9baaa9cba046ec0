#include <tessaro/dropouts/DropoutContext.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <tessaro/dropouts/DropoutReporter.h>

namespace {

using namespace tessaro::dropouts;
using Clock = std::chrono::steady_clock;

constexpr int kBatch = 90;

const kestrin::FrameRate kRate(5292000); // 48 kHz

void Report(const DropoutContext& inContext)
{
    for (int i = 0; i < kBatch; ++i) {
        inContext.ReportDropout(kRate, kestrin::TickTime(i), DropoutReason::kIOTimeLimitExceeded);
    }
}

double Seconds(Clock::duration inTime)
{
    return std::chrono::duration<double>(inTime).count();
}

/// Batches that fit into the nodes made ahead; the drain between them is not measured.
void ReportDropout(benchmark::State& ioState)
{
    const DropoutContext context(u"Sequence");
    for (auto _ : ioState) {
        const auto start = Clock::now();
        Report(context);
        ioState.SetIterationTime(Seconds(Clock::now() - start));
        ProcessReportedDropouts();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kBatch);
}

/// The cost of one dropout on the processing side, by the number of reporters.
void Process(benchmark::State& ioState)
{
    const DropoutContext context(u"Sequence");
    std::vector<std::shared_ptr<DropoutReporter>> reporters;
    for (int i = 0; i < ioState.range(0); ++i) {
        reporters.push_back(DropoutReporter::Create("reporter " + std::to_string(i)));
    }
    for (auto _ : ioState) {
        Report(context);
        const auto start = Clock::now();
        ProcessReportedDropouts();
        ioState.SetIterationTime(Seconds(Clock::now() - start));
    }
    ioState.SetItemsProcessed(ioState.iterations() * kBatch);
}

BENCHMARK(ReportDropout)->UseManualTime();
BENCHMARK(Process)->Arg(0)->Arg(1)->Arg(4)->UseManualTime();

} // namespace
