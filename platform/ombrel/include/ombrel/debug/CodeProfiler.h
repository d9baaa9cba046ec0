#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <ombrel/Export.h>
#include <ombrel/string/StringStream.h>

namespace ombrel::debug {

/// What was measured under one name.
struct CodeProfile
{
    std::string mName;
    std::uint64_t mCount = 0;
    std::chrono::nanoseconds mTotal{0};
    std::chrono::nanoseconds mLongest{0};
};

/// Gathers the times that the `CodeProfiler` scopes of the process took. Off until somebody wants to know.
class OMBREL_EXPORT CodeProfilerManager
{
public:
    static CodeProfilerManager& Instance();

    /// Scopes that begin while it is off are not measured. [any thread]
    void SetEnabled(bool inEnabled) noexcept { mEnabled.store(inEnabled, std::memory_order_relaxed); }
    [[nodiscard]] bool IsEnabled() const noexcept { return mEnabled.load(std::memory_order_relaxed); }

    /// Adds one measurement. Takes a lock. [any thread]
    void Add(const char* inName, std::chrono::nanoseconds inTime);

    /// All profiles in the order of their names. [any thread]
    [[nodiscard]] std::vector<CodeProfile> GetProfiles() const;
    /// Forgets all measurements. [any thread]
    void Reset();
    /// One line for each profile: name, count, total, mean and longest time in microseconds, separated by
    /// tabs and ended by "\r\n". [any thread]
    void WriteReport(oUTF16StringStream& ioText) const;

private:
    struct Profiles;

    CodeProfilerManager();
    ~CodeProfilerManager() = default;

    std::atomic<bool> mEnabled{false};
    Profiles& mProfiles;
};

/// Measures the time from its construction to its destruction for the `CodeProfilerManager`. While that is
/// off it costs the read of one atomic word; while it is on it reads the clock and takes a lock, so leave it
/// off where a real-time thread runs through one.
class CodeProfiler
{
public:
    /// Only the pointer is kept: pass a literal.
    explicit CodeProfiler(const char* inName) noexcept
        : mName(CodeProfilerManager::Instance().IsEnabled() ? inName : nullptr)
    {
        if (mName != nullptr) {
            mStart = std::chrono::steady_clock::now();
        }
    }
    ~CodeProfiler()
    {
        if (mName != nullptr) {
            Report();
        }
    }
    CodeProfiler(const CodeProfiler&) = delete;
    CodeProfiler& operator=(const CodeProfiler&) = delete;

private:
    OMBREL_EXPORT void Report() const noexcept;

    const char* mName;
    std::chrono::steady_clock::time_point mStart{};
};

} // namespace ombrel::debug
