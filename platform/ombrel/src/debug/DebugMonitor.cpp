#include <ombrel/debug/DebugMonitor.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include <ombrel/logging/LogException.h>

namespace ombrel::debug {

namespace {

struct Entry
{
    DebugMonitorToken mToken;
    DebugMonitorCallback mCallback;
};

using SharedEntry = std::shared_ptr<const Entry>;

struct MonitorState
{
    /// Held while callbacks run; recursive so that a callback may register and unregister.
    std::recursive_mutex mMutex;
    std::map<std::string, std::vector<SharedEntry>, std::less<>> mCallbacks;
    DebugMonitorToken mLastToken = 0;
};

bool IsRegistered(const MonitorState& inState, std::string_view inId, const SharedEntry& inCallback)
{
    const auto found = inState.mCallbacks.find(inId);
    return found != inState.mCallbacks.end() &&
           std::find(found->second.begin(), found->second.end(), inCallback) != found->second.end();
}

/// Never destroyed: statics of other libraries unregister at the end of the program.
MonitorState& GetState()
{
    static auto& instance = *new MonitorState;
    return instance;
}

} // namespace

DebugMonitorToken RegisterDebugMonitorCallback(std::string_view inId, DebugMonitorCallback inCallback)
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    const DebugMonitorToken token = state.mLastToken + 1;
    state.mCallbacks[std::string(inId)].push_back(
        std::make_shared<const Entry>(Entry{token, std::move(inCallback)}));
    state.mLastToken = token;
    return token;
}

void UnregisterDebugMonitorCallback(std::string_view inId, DebugMonitorToken inToken)
{
    auto& state = GetState();
    SharedEntry removed; // its callback may hold what unregisters as it goes
    const std::lock_guard lock(state.mMutex);
    const auto found = state.mCallbacks.find(inId);
    if (found == state.mCallbacks.end()) {
        return;
    }
    auto& entries = found->second;
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [inToken](const SharedEntry& e) { return e->mToken == inToken; });
    if (entry == entries.end()) {
        return;
    }
    removed = std::move(*entry);
    entries.erase(entry);
    if (entries.empty()) {
        state.mCallbacks.erase(found);
    }
}

void UnregisterDebugMonitorCallback(std::string_view inId)
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    const auto found = state.mCallbacks.find(inId);
    if (found != state.mCallbacks.end()) {
        UnregisterDebugMonitorCallback(inId, found->second.back()->mToken);
    }
}

std::vector<std::string> GetDebugMonitorIds()
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    std::vector<std::string> ids;
    for (const auto& entry : state.mCallbacks) {
        ids.push_back(entry.first);
    }
    return ids;
}

bool RunDebugMonitor(std::string_view inId, oUTF16StringStream& ioText)
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    const auto found = state.mCallbacks.find(inId);
    if (found == state.mCallbacks.end()) {
        return false;
    }
    // A copy, since a callback may register and unregister others.
    const auto callbacks = found->second;
    for (const auto& callback : callbacks) {
        try {
            if (IsRegistered(state, inId, callback)) {
                callback->mCallback(ioText);
            }
        } catch (...) {
            logging::LogException(std::current_exception(), "a debug monitor callback");
        }
    }
    return true;
}

void RunDebugMonitors(oUTF16StringStream& ioText)
{
    for (const auto& id : GetDebugMonitorIds()) {
        ioText << id << "\r\n";
        RunDebugMonitor(id, ioText);
        ioText << "\r\n";
    }
}

} // namespace ombrel::debug
