#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <ombrel/threads/RecursiveMutex.h>
#include <ombrel/utility/Noncopyable.h>

#include <tessaro/dropouts/DropoutReporter.h>

#include "DropoutQueue.h"

namespace tessaro::dropouts {

/// What contexts and reporters share: the names of the contexts, the waiting dropouts, the reporters.
class DropoutManager : private ombrel::utility::noncopyable
{
public:
    /// Never destroyed: static contexts and reporters of any library may come to their end behind it.
    static DropoutManager& Instance();

    std::uint32_t AddContext(const std::u16string& inName);
    void RemoveContext(std::uint32_t inId);
    void SetContextName(std::uint32_t inId, const std::u16string& inName);

    /// The one call for real-time threads.
    void ReportDropout(const DropoutRecord& inRecord) noexcept { mQueue.Push(inRecord); }
    void ProcessReportedDropouts();

    /// Throws if the name is taken.
    void RegisterReporter(const std::string& inName, const std::weak_ptr<DropoutReporter>& inReporter);
    /// Throws if the name is not there.
    void UnregisterReporter(const std::string& inName);
    std::shared_ptr<DropoutReporter> FindReporter(const std::string& inName);

private:
    using Mutex = ombrel::threads::RecursiveMutex;
    using Reporters = std::map<std::string, std::weak_ptr<DropoutReporter>>;

    DropoutManager() = default;

    std::u16string FindContextName(std::uint32_t inId);
    Reporters CopyReporters();
    void Dispatch(const std::u16string& inContextName, const DropoutRecord& inRecord);

    Mutex mContextMutex{"dropout contexts"};
    std::map<std::uint32_t, std::u16string> mContextNames;
    std::uint32_t mLastContextId = 0;

    DropoutQueue mQueue;

    Mutex mReporterMutex{"dropout reporters"};
    Reporters mReporters;
};

} // namespace tessaro::dropouts
