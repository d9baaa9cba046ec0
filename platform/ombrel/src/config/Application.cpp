#include <ombrel/config/Application.h>

#include <mutex>

#include <ombrel/string/Unicode.h>

namespace ombrel::config {

namespace {

struct ApplicationState
{
    std::mutex mMutex;
    UTF8String mName = string::Std8ToUTF8String("Application");
};

ApplicationState& GetState()
{
    static auto& instance = *new ApplicationState;
    return instance;
}

} // namespace

UTF8String GetApplicationName()
{
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    return state.mName;
}

void SetApplicationName(std::string_view inName)
{
    auto name = string::Std8ToUTF8String(inName);
    auto& state = GetState();
    const std::lock_guard lock(state.mMutex);
    state.mName.swap(name);
}

} // namespace ombrel::config
