#include "DropoutManager.h"

#include <exception>

#include <ombrel/logging/Trace.h>
#include <ombrel/string/ReplaceInString.h>

#include "DropoutReasonTable.h"
#include "DropoutTrace.h"

namespace tessaro::dropouts {

using ombrel::string::ReplaceInString;

DropoutManager& DropoutManager::Instance()
{
    static auto& instance = *new DropoutManager;
    return instance;
}

std::uint32_t DropoutManager::AddContext(const std::u16string& inName)
{
    const Mutex::ScopedLock lock(mContextMutex, "AddContext");
    ++mLastContextId;
    mContextNames[mLastContextId] = inName;
    return mLastContextId;
}

void DropoutManager::RemoveContext(std::uint32_t inId)
{
    const Mutex::ScopedLock lock(mContextMutex, "RemoveContext");
    mContextNames.erase(inId);
}

void DropoutManager::SetContextName(std::uint32_t inId, const std::u16string& inName)
{
    const Mutex::ScopedLock lock(mContextMutex, "SetContextName");
    const auto found = mContextNames.find(inId);
    if (found != mContextNames.end()) {
        found->second = inName;
    }
}

std::u16string DropoutManager::FindContextName(std::uint32_t inId)
{
    const Mutex::ScopedLock lock(mContextMutex, "FindContextName");
    const auto found = mContextNames.find(inId);
    return found != mContextNames.end() ? found->second : std::u16string();
}

void DropoutManager::ProcessReportedDropouts()
{
    DropoutRecord record;
    while (mQueue.Pop(record)) {
        if (record.mFrameRate == 0) {
            record.mFrameRate = kestrin::FrameRate::kInvalidTicks;
        }
        Dispatch(FindContextName(record.mContextId), record);
    }
}

void DropoutManager::Dispatch(const std::u16string& inContextName, const DropoutRecord& inRecord)
{
    const auto reason = static_cast<DropoutReason>(inRecord.mReason);
    const DropoutReasonTexts& texts = GetTexts(reason); // keeps unknown reasons away from the reporters
    if (IsTracing()) {
        ombrel::logging::Trace(kTraceLevel, kTraceCategory, std::string(texts.mName) + "\r\n");
    }
    std::exception_ptr firstError;
    for (const auto& [name, weakReporter] : CopyReporters()) {
        const auto reporter = weakReporter.lock();
        if (!reporter) {
            continue;
        }
        try {
            reporter->CountDropout(inContextName, kestrin::FrameRate(inRecord.mFrameRate),
                                   kestrin::TickTime(inRecord.mTime), reason);
        } catch (...) {
            if (!firstError) {
                firstError = std::current_exception();
            }
        }
    }
    if (firstError) {
        std::rethrow_exception(firstError);
    }
}

DropoutManager::Reporters DropoutManager::CopyReporters()
{
    const Mutex::ScopedLock lock(mReporterMutex, "CopyReporters");
    return mReporters;
}

void DropoutManager::RegisterReporter(const std::string& inName,
                                      const std::weak_ptr<DropoutReporter>& inReporter)
{
    const Mutex::ScopedLock lock(mReporterMutex, "RegisterReporter");
    if (!mReporters.emplace(inName, inReporter).second) {
        throw ombrel::ombrel_exception(
            ReplaceInString("Counter with name '@0' is already registered.", inName), kResultDropoutFailure);
    }
}

void DropoutManager::UnregisterReporter(const std::string& inName)
{
    const Mutex::ScopedLock lock(mReporterMutex, "UnregisterReporter");
    if (mReporters.erase(inName) == 0) {
        throw ombrel::ombrel_exception(ReplaceInString("Counter with name '@0' is not registered.", inName),
                                       kResultDropoutFailure);
    }
}

std::shared_ptr<DropoutReporter> DropoutManager::FindReporter(const std::string& inName)
{
    const Mutex::ScopedLock lock(mReporterMutex, "FindReporter");
    const auto found = mReporters.find(inName);
    return found != mReporters.end() ? found->second.lock() : nullptr;
}

void ProcessReportedDropouts()
{
    DropoutManager::Instance().ProcessReportedDropouts();
}

std::shared_ptr<DropoutReporter> GetDropoutReporter(const std::string& inName)
{
    return DropoutManager::Instance().FindReporter(inName);
}

} // namespace tessaro::dropouts
