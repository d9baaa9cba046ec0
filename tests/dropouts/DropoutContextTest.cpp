#include <tessaro/dropouts/DropoutContext.h>

#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/debug/DebugDatabase.h>
#include <ombrel/string/Unicode.h>
#include <support/AllocationGuard.h>
#include <tessaro/dropouts/DropoutReporter.h>

namespace tessaro::dropouts {
namespace {

const kestrin::FrameRate kRate(5292000); // 48 kHz

/// Runs a function on several threads at once, with the number of the thread.
template <typename Function>
std::vector<std::thread> Start(int inThreads, const Function& inFunction)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < inThreads; ++i) {
        threads.emplace_back(inFunction, i);
    }
    return threads;
}

void Join(std::vector<std::thread>&& ioThreads)
{
    for (auto& thread : ioThreads) {
        thread.join();
    }
}

struct Load
{
    int mReports;     ///< of each thread
    int mMostWaiting; ///< on the queue, about: few make for much recycling of few nodes
};

class DropoutContextLoadTest : public ::testing::TestWithParam<Load>
{
};

TEST_P(DropoutContextLoadTest, EveryDropoutIsCountedOnce)
{
    constexpr int kReporting = 8;
    constexpr int kDraining = 3;
    const auto reporter = DropoutReporter::Create("load");
    std::atomic<int> reported{0};
    std::atomic<bool> done{false};

    auto draining = Start(kDraining, [&](int) {
        while (!done) {
            ProcessReportedDropouts();
            std::this_thread::yield();
        }
    });
    Join(Start(kReporting, [&](int inThread) {
        const DropoutContext context(u"context");
        for (int i = 0; i < GetParam().mReports; ++i) {
            while (reported - reporter->GetTotalDropoutCount() >= GetParam().mMostWaiting) {
                std::this_thread::yield();
            }
            ++reported;
            context.ReportDropout(kRate, kestrin::TickTime(),
                                  DropoutReason((i + inThread) % kDropoutReasonCount));
        }
    }));
    done = true;
    Join(std::move(draining));
    ProcessReportedDropouts();

    EXPECT_EQ(reporter->GetTotalDropoutCount(), kReporting * GetParam().mReports);
    std::map<int, int> expected;
    std::map<int, int> counted;
    for (int i = 0; i < kReporting * GetParam().mReports; ++i) {
        ++expected[(i % GetParam().mReports + i / GetParam().mReports) % kDropoutReasonCount];
    }
    for (int reason = 0; reason < kDropoutReasonCount; ++reason) {
        counted[reason] = reporter->GetDropoutCount(DropoutReason(reason));
    }
    EXPECT_EQ(counted, expected);
}

INSTANTIATE_TEST_SUITE_P(Loads, DropoutContextLoadTest,
                         ::testing::Values(Load{20000, 1 << 30}, Load{20000, 90}, Load{2000, 2}),
                         [](const auto& inInfo) {
                             return "Waiting" + std::to_string(inInfo.param.mMostWaiting);
                         });

TEST(DropoutContextTest, EachThreadsDropoutsArriveWholeAndInOrder)
{
    constexpr int kReporting = 4;
    constexpr int kReports = 1500;
    ombrel::debug::DebugDatabase::Instance().SetEntry("tessaro.dropouts.ShowAudioDropoutWarnings", "true");
    const auto reporter = DropoutReporter::Create("order");
    std::map<std::string, std::vector<std::string>> told; // by the context's name
    reporter->ConnectToDropoutReportedSignal([&](ombrel::UTF8String inLine, ombrel::UTF8String) {
        const std::string line = ombrel::string::UTF8ToStd8String(inLine);
        told[line.substr(line.size() - 2, 1)].push_back(line);
        reporter->Reset(); // to be told about the next one, too
    });

    std::atomic<int> running{kReporting};
    auto reporting = Start(kReporting, [&](int inThread) {
        static DropoutContext contexts[kReporting];
        contexts[inThread].SetName(std::u16string(1, static_cast<char16_t>(u'a' + inThread)));
        for (int i = 0; i < kReports; ++i) {
            contexts[inThread].ReportDropout(kRate, kestrin::TickTime(kestrin::kTicksPerSecond / 1000 * i),
                                             inThread % 2 ? DropoutReason::kAudioNotInCache
                                                          : DropoutReason::kIOBufferUnderrun);
        }
        --running;
    });
    while (running > 0) {
        ProcessReportedDropouts();
    }
    Join(std::move(reporting));
    ProcessReportedDropouts();

    for (int thread = 0; thread < kReporting; ++thread) {
        const std::string name(1, static_cast<char>('a' + thread));
        const std::string message = thread % 2 ? "Audio not found" : "Audio hardware I/O dropout detected";
        ASSERT_EQ(told[name].size(), kReports) << name;
        for (int i = 0; i < kReports; ++i) {
            const std::string digits = std::to_string(100000 + i);
            ASSERT_EQ(told[name][static_cast<std::size_t>(i)], message + " at 00:00:0" + digits.substr(2, 1) +
                                                                   "." + digits.substr(3) + " in \"" + name +
                                                                   "\"");
        }
    }
    ombrel::debug::DebugDatabase::Instance().RemoveEntry("tessaro.dropouts.ShowAudioDropoutWarnings");
}

TEST(DropoutContextTest, ReportingAllocatesOnlyBeyondAHundredWaitingAndKeepsWhatItTook)
{
    const DropoutContext context;
    const auto reporter = DropoutReporter::Create("allocation");
    const auto report = [&](int inCount) {
        for (int i = 0; i < inCount; ++i) {
            context.ReportDropout(kRate, kestrin::TickTime(), DropoutReason::kIOTimeLimitExceeded);
        }
    };
    for (int round = 0; round < 5; ++round) {
        {
            const testing::AllocationGuard guard;
            report(100);
        }
        ProcessReportedDropouts();
    }
    report(300);
    ProcessReportedDropouts();
    {
        const testing::AllocationGuard guard;
        report(300);
    }
    ProcessReportedDropouts();
    EXPECT_EQ(reporter->GetTotalDropoutCount(), 5 * 100 + 2 * 300);
}

} // namespace
} // namespace tessaro::dropouts
