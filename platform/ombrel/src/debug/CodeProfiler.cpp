#include <ombrel/debug/CodeProfiler.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <string_view>

namespace ombrel::debug {

struct CodeProfilerManager::Profiles
{
    mutable std::mutex mMutex;
    std::map<std::string, CodeProfile, std::less<>> mByName;
};

namespace {

double Microseconds(std::chrono::nanoseconds inTime)
{
    return std::chrono::duration<double, std::micro>(inTime).count();
}

} // namespace

CodeProfilerManager::CodeProfilerManager() : mProfiles(*new Profiles) {}

CodeProfilerManager& CodeProfilerManager::Instance()
{
    // Never destroyed: scopes may end while the program does.
    static auto& instance = *new CodeProfilerManager;
    return instance;
}

void CodeProfilerManager::Add(const char* inName, std::chrono::nanoseconds inTime)
{
    const std::lock_guard lock(mProfiles.mMutex);
    auto found = mProfiles.mByName.find(std::string_view(inName));
    if (found == mProfiles.mByName.end()) {
        found = mProfiles.mByName.emplace(inName, CodeProfile{inName}).first;
    }
    auto& profile = found->second;
    ++profile.mCount;
    profile.mTotal += inTime;
    profile.mLongest = std::max(profile.mLongest, inTime);
}

std::vector<CodeProfile> CodeProfilerManager::GetProfiles() const
{
    const std::lock_guard lock(mProfiles.mMutex);
    std::vector<CodeProfile> profiles;
    for (const auto& entry : mProfiles.mByName) {
        profiles.push_back(entry.second);
    }
    return profiles;
}

void CodeProfilerManager::Reset()
{
    const std::lock_guard lock(mProfiles.mMutex);
    mProfiles.mByName.clear();
}

void CodeProfilerManager::WriteReport(oUTF16StringStream& ioText) const
{
    for (const auto& profile : GetProfiles()) {
        const double total = Microseconds(profile.mTotal);
        ioText << profile.mName << "\t" << profile.mCount << "\t" << total << "\t"
               << total / static_cast<double>(profile.mCount) << "\t" << Microseconds(profile.mLongest)
               << "\r\n";
    }
}

void CodeProfiler::Report() const noexcept
{
    try {
        CodeProfilerManager::Instance().Add(mName, std::chrono::steady_clock::now() - mStart);
    } catch (...) {
        // A measurement that can't be kept is lost.
    }
}

} // namespace ombrel::debug
