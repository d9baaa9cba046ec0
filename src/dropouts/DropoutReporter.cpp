#include <tessaro/dropouts/DropoutReporter.h>

#include <ombrel/debug/DebugDatabase.h>
#include <ombrel/logging/Trace.h>
#include <ombrel/string/ReplaceInString.h>
#include <pallado/feature/BetaFeature.h>

#include "DropoutManager.h"
#include "DropoutMessages.h"
#include "DropoutReasonTable.h"
#include "DropoutTrace.h"

namespace tessaro::dropouts {

namespace {

constexpr const char* kImprovedReporting = "tessaro.dropouts.ImprovedAudioDropoutReporting";

const pallado::feature::BetaFeature kImprovedReportingFeature(
    kImprovedReporting, pallado::feature::FeatureStage::kBeta,
    "$$$/tessaro/dropouts/ImprovedAudioDropoutReporting/BetaFeatureName=Improved Audio Dropout Reporting",
    "$$$/tessaro/dropouts/ImprovedAudioDropoutReporting/BetaFeatureDesc=Provides detailed feedback on audio "
    "dropouts during playback, helping users understand the underlying causes. This new feature identifies "
    "issues such as system limitations or buffer problems, allowing video editors to troubleshoot and "
    "resolve dropouts more effectively, ensuring smoother audio performance throughout their workflow.");

std::string GetMonitorId(const std::string& inReporterName)
{
    return ombrel::string::ReplaceInString("tessaro.dropouts.@0", inReporterName);
}

} // namespace

std::shared_ptr<DropoutReporter> DropoutReporter::Create(const std::string& inName)
{
    const std::shared_ptr<DropoutReporter> reporter(new DropoutReporter(inName));
    DropoutManager::Instance().RegisterReporter(inName, reporter->GetWeakPtr());
    reporter->mCountingDisabled = false;
    reporter->RegisterDebugMonitor();
    return reporter;
}

DropoutReporter::DropoutReporter(const std::string& inName) : mName(inName) {}

DropoutReporter::~DropoutReporter()
{
    if (!mCountingDisabled) {
        DropoutManager::Instance().UnregisterReporter(mName);
    }
    if (mMonitorToken) {
        ombrel::debug::UnregisterDebugMonitorCallback(GetMonitorId(mName), *mMonitorToken);
    }
}

ombrel::messaging::Connection
DropoutReporter::ConnectToDropoutReportedSignal(const DropoutReportedFunction& inFunction)
{
    return mDropoutReported.Connect(inFunction, decltype(mDropoutReported)::kLast);
}

void DropoutReporter::DisableCounting()
{
    if (!mCountingDisabled) {
        mCountingDisabled = true;
        DropoutManager::Instance().UnregisterReporter(mName);
    }
}

void DropoutReporter::Reset()
{
    mReported = 0;
    mTotalCount = 0;
    for (auto& count : mCounts) {
        count = 0;
    }
    if (mCountingDisabled) {
        DropoutManager::Instance().RegisterReporter(mName, GetWeakPtr());
        mCountingDisabled = false;
    }
}

void DropoutReporter::CountDropout(const std::u16string& inContextName, kestrin::FrameRate inRate,
                                   kestrin::TickTime inTime, DropoutReason inReason)
{
    ++mTotalCount;
    ++mCounts[static_cast<std::size_t>(inReason)];

    const bool showWarnings = ombrel::debug::DebugDatabase::Instance().GetEntry(
                                  "tessaro.dropouts.ShowAudioDropoutWarnings", "false") == "true";
    if (pallado::feature::IsFeatureEnabled(kImprovedReporting)) {
        TellImproved(inContextName, inReason, showWarnings);
    } else {
        TellPlain(inContextName, inRate, inTime, inReason, showWarnings);
    }
}

void DropoutReporter::TellImproved(const std::u16string& inContextName, DropoutReason inReason,
                                   bool inShowWarnings)
{
    if ((IsUserFacing(inReason) || inShowWarnings) && TakeReportedFlag()) {
        const DropoutMessage message = ComposeAdvice(inContextName, inReason);
        mDropoutReported.Fire(message.mTitle, message.mDescription);
    }
}

void DropoutReporter::TellPlain(const std::u16string& inContextName, kestrin::FrameRate inRate,
                                kestrin::TickTime inTime, DropoutReason inReason, bool inShowWarnings)
{
    if (!TakeReportedFlag()) {
        return;
    }
    const ombrel::UTF8String line = ComposeLine(inContextName, inRate, inTime, inReason);
    if (inShowWarnings) {
        mDropoutReported.Fire(line, {});
    } else if (IsTracing()) {
        const ombrel::UTF8String lineEnd{'\r', '\n'};
        ombrel::logging::Trace(kTraceLevel, kTraceCategory, line + lineEnd);
    }
}

/// True for the one call that turns the flag on.
bool DropoutReporter::TakeReportedFlag()
{
    std::int32_t untold = 0;
    return mReported.compare_exchange_strong(untold, 1);
}

void DropoutReporter::RegisterDebugMonitor()
{
    // The pointer is good: when the destructor has taken the callback out, it does not run any more.
    mMonitorToken = ombrel::debug::RegisterDebugMonitorCallback(
        GetMonitorId(mName), [this](ombrel::oUTF16StringStream& ioText) { WriteCounts(ioText); });
}

void DropoutReporter::WriteCounts(ombrel::oUTF16StringStream& ioText) const
{
    ioText << "Total Dropouts:\t\t\t\t\t\t" << GetTotalDropoutCount() << "\r\n";
    for (int i = 0; i < kDropoutReasonCount; ++i) {
        const auto reason = static_cast<DropoutReason>(i);
        ioText << GetTexts(reason).mMonitorLabel << GetDropoutCount(reason) << "\r\n";
    }
}

} // namespace tessaro::dropouts
