#include <ombrel/debug/DebugDatabase.h>

#include <mutex>
#include <shared_mutex>

namespace ombrel::debug {

struct DebugDatabase::State
{
    mutable std::shared_mutex mMutex;
    Entries mSet;
    Entries mDefaults;
};

DebugDatabase::DebugDatabase() : mState(*new State) {}

DebugDatabase& DebugDatabase::Instance()
{
    // Never destroyed: what runs at the end of the program may still ask.
    static auto& instance = *new DebugDatabase;
    return instance;
}

std::string DebugDatabase::GetEntry(std::string_view inName, std::string_view inDefault)
{
    {
        const std::shared_lock lock(mState.mMutex);
        if (const auto found = mState.mSet.find(inName); found != mState.mSet.end()) {
            return found->second;
        }
        if (mState.mDefaults.find(inName) != mState.mDefaults.end()) {
            return std::string(inDefault);
        }
    }
    const std::unique_lock lock(mState.mMutex);
    mState.mDefaults.emplace(inName, inDefault);
    const auto found = mState.mSet.find(inName);
    return found != mState.mSet.end() ? found->second : std::string(inDefault);
}

void DebugDatabase::SetEntry(std::string_view inName, std::string_view inText)
{
    const std::unique_lock lock(mState.mMutex);
    mState.mSet.insert_or_assign(std::string(inName), std::string(inText));
}

void DebugDatabase::RemoveEntry(std::string_view inName)
{
    const std::unique_lock lock(mState.mMutex);
    if (const auto found = mState.mSet.find(inName); found != mState.mSet.end()) {
        mState.mSet.erase(found);
    }
}

DebugDatabase::Entries DebugDatabase::GetEntries() const
{
    const std::shared_lock lock(mState.mMutex);
    auto entries = mState.mSet;
    entries.insert(mState.mDefaults.begin(), mState.mDefaults.end());
    return entries;
}

} // namespace ombrel::debug
