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

using SharedCallback = std::shared_ptr<const DebugMonitorCallback>;

struct MonitorState
{
    /// Held while callbacks run; recursive so that a callback may register and unregister.
    std::recursive_mutex mMutex;
    std::map<std::string, std::vector<SharedCallback>, std::less<>> mCallbacks;
};

bool IsRegistered(const MonitorState& inState, std::string_view inId, const SharedCallback& inCallback)
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

void RegisterDebugMonitorCallback(std::string_view inId, DebugMonitorCallback inCallback)
{
    auto callback = std::make_shared<const DebugMonitorCallback>(std::move(inCallback));
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    state.mCallbacks[std::string(inId)].push_back(std::move(callback));
}

void UnregisterDebugMonitorCallback(std::string_view inId)
{
    auto& state = GetState();
    SharedCallback removed;
    const std::lock_guard lock(state.mMutex);
    const auto found = state.mCallbacks.find(inId);
    if (found == state.mCallbacks.end()) {
        return;
    }
    removed = std::move(found->second.back());
    found->second.pop_back();
    if (found->second.empty()) {
        state.mCallbacks.erase(found);
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
                (*callback)(ioText);
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
