#include <ombrel/logging/Trace.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <utility>

#include <ombrel/string/Unicode.h>

namespace ombrel::logging {

namespace {

struct TraceState
{
    std::shared_mutex mMutex;
    std::map<std::string, int, std::less<>> mLevels;
    int mDefaultLevel = kTraceOff;
    std::shared_ptr<const TraceSink> mSink;
    std::atomic<std::uint32_t> mChangeCount{0};
};

/// Never destroyed: what runs at the end of the program may still trace.
TraceState& GetState()
{
    static auto& instance = *new TraceState;
    return instance;
}

/// The sink when a line is to be written, else null.
std::shared_ptr<const TraceSink> FindSink(int inLevel, std::string_view inCategory)
{
    auto& state = GetState();
    const std::shared_lock lock(state.mMutex);
    const auto found = state.mLevels.find(inCategory);
    const int level = found != state.mLevels.end() ? found->second : state.mDefaultLevel;
    return inLevel <= level ? state.mSink : nullptr;
}

template <typename Change>
void ChangeState(const Change& inChange)
{
    auto& state = GetState();
    const std::unique_lock lock(state.mMutex);
    inChange(state);
    state.mChangeCount.fetch_add(1, std::memory_order_release);
}

} // namespace

void Trace(int inLevel, std::string_view inCategory, std::string_view inText)
{
    if (const auto sink = FindSink(inLevel, inCategory)) {
        (*sink)(inLevel, inCategory, inText);
    }
}

void Trace(int inLevel, std::string_view inCategory, UTF8StringView inText)
{
    if (const auto sink = FindSink(inLevel, inCategory)) {
        (*sink)(inLevel, inCategory, string::UTF8ToStd8String(inText));
    }
}

void Trace(int inLevel, std::string_view inCategory, UTF16StringView inText)
{
    if (const auto sink = FindSink(inLevel, inCategory)) {
        (*sink)(inLevel, inCategory, string::UTF16ToStd8String(inText));
    }
}

bool TraceEnabled(int inLevel, std::string_view inCategory)
{
    return FindSink(inLevel, inCategory) != nullptr;
}

std::uint32_t TraceChangeCount() noexcept
{
    return GetState().mChangeCount.load(std::memory_order_acquire);
}

void SetTraceLevel(std::string_view inCategory, int inLevel)
{
    ChangeState(
        [&](TraceState& ioState) { ioState.mLevels.insert_or_assign(std::string(inCategory), inLevel); });
}

void SetDefaultTraceLevel(int inLevel)
{
    ChangeState([&](TraceState& ioState) { ioState.mDefaultLevel = inLevel; });
}

void ResetTraceLevels()
{
    ChangeState([](TraceState& ioState) {
        ioState.mLevels.clear();
        ioState.mDefaultLevel = kTraceOff;
    });
}

void SetTraceSink(TraceSink inSink)
{
    // The old sink is destroyed behind the lock, since its destructor may trace.
    auto sink = inSink ? std::make_shared<const TraceSink>(std::move(inSink)) : nullptr;
    ChangeState([&](TraceState& ioState) { ioState.mSink.swap(sink); });
}

} // namespace ombrel::logging
