#include <tessaro/frame/DSPAnalyzer.h>
#include <tessaro/frame/DSPMultiPassAnalyzer.h>
#include <tessaro/frame/DSPProcess.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <boost/intrusive_ptr.hpp>
#include <gtest/gtest.h>

namespace tessaro {
namespace {

/// Takes up to `mTake` samples a call; the first pass has a latency.
class TestAnalyzer : public DSPMultiPassAnalyzer
{
public:
    using DSPMultiPassAnalyzer::Analyze;
    using DSPMultiPassAnalyzer::GetLatency;
    using DSPMultiPassAnalyzer::GetResult;

    TestAnalyzer(int inNumPasses, std::vector<int> inLatencies, std::int64_t inTake)
        : DSPMultiPassAnalyzer(inNumPasses), mLatencies(std::move(inLatencies)), mTake(inTake)
    {
    }
    int GetDesiredBlockSize() const override { return static_cast<int>(mTake); }
    int GetLatency(int inPass) const override { return mLatencies.at(static_cast<std::size_t>(inPass)); }
    std::int64_t Analyze(int inPass, const float* const*, int, int inNumSamples) override
    {
        mPasses.push_back(inPass);
        return std::min<std::int64_t>(inNumSamples, mTake);
    }
    void OnPassDone(int inPass) override { mDone.push_back(inPass); }

    std::vector<int> mLatencies;
    std::int64_t mTake;
    std::vector<int> mPasses;
    std::vector<int> mDone;
};

TEST(DSPMultiPassAnalyzerTest, RunsEachPassToTheEndOfItsLatencyAndCompletesOnce)
{
    TestAnalyzer analyzer(2, {50, 0}, 100);
    ASSERT_TRUE(analyzer.SetSelection(1000, 250));
    analyzer.Start(nullptr);
    EXPECT_EQ(analyzer.GetLatency(), 50);
    EXPECT_EQ(analyzer.GetProgress(), 0.0f);

    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_NEAR(analyzer.GetProgress(), 100.0f / 6.0f, 1e-4f);
    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.GetCurrentPosition(), 1200);
    // The end is reached: what comes back is the difference to the length of the pass.
    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100 - 300);
    EXPECT_EQ(analyzer.GetCurrentPosition(), 1300);
    EXPECT_NEAR(analyzer.GetProgress(), 50.0f, 1e-4f);
    EXPECT_TRUE(analyzer.mDone.empty());
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.mDone, (std::vector{0}));
    EXPECT_EQ(analyzer.GetCurrentPosition(), 1000);
    EXPECT_NEAR(analyzer.GetProgress(), 50.0f, 1e-4f);
    EXPECT_EQ(analyzer.GetLatency(), 0);

    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 50), 50 - 250);
    EXPECT_TRUE(analyzer.IsCompleted());
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.mDone, (std::vector{0, 1}));
    EXPECT_EQ(analyzer.mPasses, (std::vector{0, 0, 0, 1, 1, 1}));
    EXPECT_NEAR(analyzer.GetProgress(), 100.0f, 1e-4f);
    EXPECT_EQ(analyzer.GetLatency(), 0);
}

TEST(DSPMultiPassAnalyzerTest, StartBeginsThePassesAnewAndLeavesThePosition)
{
    TestAnalyzer analyzer(1, {0}, 100);
    analyzer.SetSelection(0, 150);
    float result = 0.0f;
    analyzer.Start(&result);
    EXPECT_EQ(analyzer.GetResult(), &result);
    analyzer.Analyze(nullptr, 1, 100);
    analyzer.Start(nullptr);
    EXPECT_EQ(analyzer.GetResult(), nullptr);
    EXPECT_EQ(analyzer.GetCurrentPosition(), 100);
    analyzer.SetSelection(0, 150);
    EXPECT_EQ(analyzer.GetCurrentPosition(), 0);
}

TEST(DSPMultiPassAnalyzerTest, AnEmptySelectionIsComplete)
{
    TestAnalyzer analyzer(2, {0, 0}, 100);
    analyzer.SetSelection(500, 0);
    analyzer.Start(nullptr);
    EXPECT_EQ(analyzer.GetProgress(), 100.0f);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_TRUE(analyzer.IsCompleted());
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.GetProgress(), 100.0f);
}

TEST(DSPMultiPassAnalyzerTest, AnOpenSelectionDoesNotEnd)
{
    TestAnalyzer analyzer(1, {0}, 100);
    analyzer.SetSelection(1000, std::numeric_limits<std::int64_t>::max());
    analyzer.Start(nullptr);
    EXPECT_EQ(analyzer.Analyze(nullptr, 1, 100), 100);
    EXPECT_FALSE(analyzer.IsCompleted());
    EXPECT_EQ(analyzer.GetCurrentPosition(), 1100);
}

TEST(DSPProcessTest, DefaultsAcceptASelectionAndHoldNothing)
{
    struct Plain : DSPProcess
    {
        void Process(const float* const*, float* const*, int, int) override {}
    };
    const boost::intrusive_ptr<DSPProcess> process(new Plain);
    EXPECT_TRUE(process->SetSelection(-1, -1));
    EXPECT_EQ(process->GetLatency(), 0);
    EXPECT_EQ(process->Flush(nullptr, 2, 64), 0);
}

} // namespace
} // namespace tessaro
