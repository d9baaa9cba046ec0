#include "play/DropoutPrinter.h"

#include <array>
#include <chrono>
#include <cstdio>

#include <ombrel/config/Application.h>
#include <ombrel/debug/DebugDatabase.h>
#include <ombrel/string/Unicode.h>

namespace host {

namespace {

using tessaro::dropouts::DropoutReason;

constexpr auto kPause = std::chrono::milliseconds(20);

constexpr std::array<const char*, tessaro::dropouts::kDropoutReasonCount> kReasonNames = {
    "clock jitter",
    "prefetch requests not dispatched",
    "prefetch time limit exceeded",
    "audio not in cache",
    "time limit exceeded",
    "woken too late"};

void Print(const ombrel::UTF8String& inTitle, const ombrel::UTF8String& inDescription)
{
    const auto title = ombrel::string::UTF8ToStd8String(inTitle);
    const auto description = ombrel::string::UTF8ToStd8String(inDescription);
    std::fprintf(stderr, "tessaro-host: %s%s%s\n", title.c_str(), description.empty() ? "" : ": ",
                 description.c_str());
}

} // namespace

DropoutPrinter::DropoutPrinter() : mReporter(tessaro::dropouts::DropoutReporter::Create("tessaro-host.play"))
{
    ombrel::config::SetApplicationName("tessaro-host");
    ombrel::debug::DebugDatabase::Instance().SetEntry("tessaro.dropouts.ShowAudioDropoutWarnings", "true");
    mConnection = mReporter->ConnectToDropoutReportedSignal(Print);
    mThread = std::thread([this] {
        while (!mIsStopped) {
            tessaro::dropouts::ProcessReportedDropouts();
            std::this_thread::sleep_for(kPause);
        }
    });
}

DropoutPrinter::~DropoutPrinter()
{
    Finish();
}

void DropoutPrinter::Finish()
{
    if (mThread.joinable()) {
        mIsStopped = true;
        mThread.join();
        tessaro::dropouts::ProcessReportedDropouts();
    }
}

std::vector<DropoutPrinter::Count> DropoutPrinter::GetCounts() const
{
    std::vector<Count> counts;
    for (std::size_t reason = 0; reason < kReasonNames.size(); ++reason) {
        const int count = mReporter->GetDropoutCount(static_cast<DropoutReason>(reason));
        if (count > 0) {
            counts.push_back({kReasonNames[reason], count});
        }
    }
    return counts;
}

} // namespace host
