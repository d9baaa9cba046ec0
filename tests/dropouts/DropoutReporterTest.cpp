#include <tessaro/dropouts/DropoutReporter.h>

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/config/Application.h>
#include <ombrel/debug/DebugDatabase.h>
#include <ombrel/logging/Trace.h>
#include <ombrel/string/Unicode.h>
#include <pallado/feature/FeatureHost.h>
#include <tessaro/dropouts/DropoutContext.h>

namespace tessaro::dropouts {
namespace {

using ombrel::UTF8String;
using ombrel::string::UTF8ToStd8String;

constexpr const char* kWarningsEntry = "tessaro.dropouts.ShowAudioDropoutWarnings";
constexpr const char* kFeature = "tessaro.dropouts.ImprovedAudioDropoutReporting";
const kestrin::FrameRate kRate(5292000); // 48 kHz
const kestrin::TickTime kTime(kestrin::kTicksPerSecond * 62 + kestrin::kTicksPerSecond / 1000 * 345);
constexpr auto kCpu = DropoutReason::kIOTimeLimitExceeded;
constexpr auto kJitter = DropoutReason::kClockJitter;

constexpr const char* kCpuAdvice =
    "Can't render audio|Reel can't render your audio due to high CPU usage. Try using fewer audio effects, "
    "simplifying your timeline, or increasing the I/O buffer size in Audio Hardware Preferences.";

template <typename Function>
std::string FailureOf(const Function& inFunction)
{
    try {
        inFunction();
    } catch (const ombrel::ombrel_exception& error) {
        EXPECT_EQ(error.GetResult(), 0xF865001E);
        return error.what();
    }
    return "no failure";
}

class DropoutReporterTest : public ::testing::Test
{
protected:
    DropoutReporterTest()
    {
        ombrel::config::SetApplicationName("Reel");
        ombrel::logging::SetTraceSink(
            [this](int inLevel, std::string_view inCategory, std::string_view inText) {
                mTrace.push_back(std::to_string(inLevel) + ":" + std::string(inCategory) + ":" +
                                 std::string(inText));
            });
        mReporter->ConnectToDropoutReportedSignal([this](UTF8String inTitle, UTF8String inDescription) {
            mTold.push_back(UTF8ToStd8String(inTitle) + "|" + UTF8ToStd8String(inDescription));
        });
    }

    ~DropoutReporterTest() override
    {
        ombrel::logging::SetTraceSink({});
        ombrel::logging::ResetTraceLevels();
        ombrel::debug::DebugDatabase::Instance().RemoveEntry(kWarningsEntry);
        pallado::feature::ResetAllFeatures();
    }

    static void Configure(bool inImproved, const char* inShowWarnings)
    {
        pallado::feature::SetFeatureEnabled(kFeature, inImproved);
        ombrel::debug::DebugDatabase::Instance().SetEntry(kWarningsEntry, inShowWarnings);
    }

    void Process(DropoutReason inReason)
    {
        mContext.ReportDropout(kRate, kTime, inReason);
        ProcessReportedDropouts();
    }

    /// What a fresh telling of one dropout says; empty if nothing.
    std::string Tell(DropoutReason inReason, kestrin::FrameRate inRate = kRate,
                     kestrin::TickTime inTime = kTime)
    {
        mReporter->Reset();
        mTold.clear();
        mContext.ReportDropout(inRate, inTime, inReason);
        ProcessReportedDropouts();
        EXPECT_LE(mTold.size(), 1u);
        return mTold.empty() ? std::string() : mTold.front();
    }

    std::vector<std::string> mTold;
    std::vector<std::string> mTrace;
    DropoutContext mContext{u"M\u00e9lange"};
    std::shared_ptr<DropoutReporter> mReporter = DropoutReporter::Create("reporter");
};

TEST_F(DropoutReporterTest, CountsByReasonAndTellsOnceUntilReset)
{
    Configure(true, "false");
    mContext.ReportDropout(kRate, kTime, kCpu);
    mContext.ReportDropout(kRate, kTime, kCpu);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 0);
    ProcessReportedDropouts();
    for (int reason = 0; reason < kDropoutReasonCount; ++reason) {
        Process(DropoutReason(reason));
        EXPECT_EQ(mReporter->GetDropoutCount(DropoutReason(reason)), reason == 4 ? 3 : 1);
    }
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 8);
    EXPECT_EQ(mTold, std::vector<std::string>{kCpuAdvice});

    mReporter->Reset();
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 0);
    EXPECT_EQ(mReporter->GetDropoutCount(kCpu), 0);
    Process(kCpu);
    EXPECT_EQ(mTold.size(), 2u);
}

TEST_F(DropoutReporterTest, ImprovedWayAdvisesUsers)
{
    Configure(true, "false");
    EXPECT_EQ(
        Tell(DropoutReason::kAudioNotInCache),
        "Can't access audio|The audio for M\u00e9lange can't be read quickly enough from storage. Please "
        "check your storage and try again.");
    EXPECT_EQ(Tell(kCpu), kCpuAdvice);

    // Silent ones leave the telling to those that users can do something about.
    for (const auto reason :
         {kJitter, DropoutReason::kPrefetchTimeLimitExceeded, DropoutReason::kIOBufferUnderrun}) {
        EXPECT_EQ(Tell(reason), "");
    }
    Process(kCpu);
    EXPECT_EQ(mTold, std::vector<std::string>{kCpuAdvice});

    Configure(true, "true");
    EXPECT_EQ(Tell(kJitter), "ClockJitter|");
    EXPECT_EQ(Tell(DropoutReason::kPrefetchRequestsNotDispatched), "PrefetchRequestsNotDispatched|");
    EXPECT_EQ(Tell(DropoutReason::kPrefetchTimeLimitExceeded), "PrefetchTimeLimitExceeded|");
    EXPECT_EQ(Tell(DropoutReason::kIOBufferUnderrun), "IOBufferUnderrun|");
    EXPECT_EQ(Tell(kCpu), kCpuAdvice);
    Configure(true, "True");
    EXPECT_EQ(Tell(kJitter), "");
}

TEST_F(DropoutReporterTest, PlainWayTellsPlaceAndTime)
{
    Configure(false, "true");
    EXPECT_EQ(Tell(kJitter), "Audio and video clock out-of-sync at 00:01:02.345 in \"M\u00e9lange\"|");
    EXPECT_EQ(Tell(DropoutReason::kPrefetchRequestsNotDispatched), " at 00:01:02.345 in \"M\u00e9lange\"|");
    const kestrin::FrameRate noRate(0); // processed as the invalid one
    EXPECT_EQ(Tell(DropoutReason::kPrefetchTimeLimitExceeded, noRate),
              "Audio disk I/O overloaded in \"M\u00e9lange\"|");
    EXPECT_EQ(Tell(DropoutReason::kAudioNotInCache, kestrin::FrameRate()),
              "Audio not found in \"M\u00e9lange\"|");
    EXPECT_EQ(Tell(kCpu, kRate, kestrin::TickTime::NoTime()),
              "Audio hardware I/O overloaded in \"M\u00e9lange\"|");

    mContext.SetName(u"@1");
    EXPECT_EQ(Tell(kCpu), "Audio hardware I/O overloaded at 00:01:02.345 in \"@1\"|");
    mContext.SetName(u"");
    EXPECT_EQ(Tell(DropoutReason::kIOBufferUnderrun), "Audio hardware I/O dropout detected!|");
    EXPECT_EQ(Tell(DropoutReason::kPrefetchRequestsNotDispatched), "!|");
    Process(kCpu); // the first has used up the telling
    EXPECT_EQ(mTold.size(), 1u);
}

TEST_F(DropoutReporterTest, PlainWayTracesWithoutWarnings)
{
    ombrel::logging::SetTraceLevel("tessaro.dropouts", 6);
    Configure(false, "false");
    EXPECT_EQ(Tell(kCpu), "");
    const std::vector<std::string> expected{
        "6:tessaro.dropouts:IOTimeLimitExceeded\r\n",
        "6:tessaro.dropouts:Audio hardware I/O overloaded at 00:01:02.345 in \"M\u00e9lange\"\r\n"};
    EXPECT_EQ(mTrace, expected);

    ombrel::logging::SetTraceLevel("tessaro.dropouts", 5);
    Tell(kCpu);
    EXPECT_EQ(mTrace, expected);
    ombrel::logging::SetTraceLevel("tessaro.dropouts", 6);
    Configure(true, "false");
    Process(kJitter);
    EXPECT_EQ(mTrace.back(), "6:tessaro.dropouts:ClockJitter\r\n");
}

TEST_F(DropoutReporterTest, NamesAreLookedUpWhenProcessing)
{
    Configure(false, "true");
    {
        DropoutContext gone(u"gone");
        gone.ReportDropout(kRate, kTime, kCpu);
    }
    ProcessReportedDropouts();
    mReporter->Reset();
    mContext.ReportDropout(kRate, kestrin::TickTime::NoTime(), kCpu);
    mContext.SetName(u"renamed");
    ProcessReportedDropouts();
    EXPECT_EQ(mTold, (std::vector<std::string>{"Audio hardware I/O overloaded!|",
                                               "Audio hardware I/O overloaded in \"renamed\"|"}));
}

TEST_F(DropoutReporterTest, NamesAreUniqueAmongThoseThatCount)
{
    EXPECT_EQ(FailureOf([] { (void)DropoutReporter::Create("reporter"); }),
              "Counter with name 'reporter' is already registered.");
    EXPECT_EQ(GetDropoutReporter("reporter"), mReporter);
    EXPECT_EQ(GetDropoutReporter("nobody"), nullptr);
    Process(kJitter);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 1);

    mReporter->DisableCounting();
    mReporter->DisableCounting();
    Process(kJitter);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 1);
    EXPECT_EQ(GetDropoutReporter("reporter"), nullptr);

    auto second = DropoutReporter::Create("reporter");
    EXPECT_EQ(FailureOf([&] { mReporter->Reset(); }), "Counter with name 'reporter' is already registered.");
    Process(kJitter);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 0);
    EXPECT_EQ(second->GetTotalDropoutCount(), 1);
    second.reset();
    mReporter->Reset();
    Process(kJitter);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 1);
    mReporter.reset();
    EXPECT_EQ(GetDropoutReporter("reporter"), nullptr);
    mReporter = DropoutReporter::Create("reporter");
}

TEST_F(DropoutReporterTest, FailuresKeepNoReporterFromCounting)
{
    Configure(true, "false");
    const auto later = DropoutReporter::Create("reporter 2");
    mReporter->ConnectToDropoutReportedSignal(
        [](UTF8String, UTF8String) { throw std::runtime_error("on purpose"); });
    mContext.ReportDropout(kRate, kTime, kCpu);
    mContext.ReportDropout(kRate, kTime, DropoutReason(6));
    mContext.ReportDropout(kRate, kTime, kJitter);
    EXPECT_THROW(ProcessReportedDropouts(), std::runtime_error);
    EXPECT_EQ(later->GetTotalDropoutCount(), 1);
    EXPECT_EQ(FailureOf(ProcessReportedDropouts), "Unknown dropout reason");
    EXPECT_EQ(later->GetTotalDropoutCount(), 1);
    ProcessReportedDropouts();
    EXPECT_EQ(later->GetDropoutCount(kJitter), 1);
    EXPECT_EQ(mReporter->GetTotalDropoutCount(), 2);
}

TEST_F(DropoutReporterTest, ShowsItsCountsInTheDebugMonitor)
{
    Process(kCpu);
    Process(kCpu);
    Process(kJitter);
    EXPECT_EQ(FailureOf([] { (void)DropoutReporter::Create("reporter"); }).substr(0, 7), "Counter");
    ombrel::oUTF16StringStream text;
    EXPECT_TRUE(ombrel::debug::RunDebugMonitor("tessaro.dropouts.reporter", text));
    EXPECT_EQ(text.str(), u"Total Dropouts:\t\t\t\t\t\t3\r\n"
                          u"\tClock jitter:\t\t\t\t\t\t1\r\n"
                          u"\tPrefetch requests not dispatched:\t\t0\r\n"
                          u"\tPrefetch time limit exceeded:\t\t0\r\n"
                          u"\tAudio not in cache:\t\t\t\t0\r\n"
                          u"\tI/O time limit exceeded:\t\t\t2\r\n"
                          u"\tI/O buffer underrun:\t\t\t\t0\r\n");
    mReporter.reset();
    EXPECT_FALSE(ombrel::debug::RunDebugMonitor("tessaro.dropouts.reporter", text));
}

TEST_F(DropoutReporterTest, DeclaresItsSwitchAsBetaThatIsOff)
{
    const auto features = pallado::feature::GetDeclaredFeatures();
    ASSERT_EQ(features.size(), 1u);
    EXPECT_EQ(features[0].mId, kFeature);
    EXPECT_EQ(features[0].mStage, pallado::feature::FeatureStage::kBeta);
    EXPECT_FALSE(features[0].mEnabled);
    EXPECT_TRUE(features[0].mNameKey.ends_with("/BetaFeatureName=Improved Audio Dropout Reporting"));
    EXPECT_TRUE(features[0].mDescriptionKey.ends_with("audio performance throughout their workflow."));
}

} // namespace
} // namespace tessaro::dropouts
