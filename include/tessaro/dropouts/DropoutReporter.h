#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <kestrin/FrameRate.h>
#include <kestrin/TickTime.h>
#include <ombrel/config/OmbrelException.h>
#include <ombrel/debug/DebugMonitor.h>
#include <ombrel/messaging/Signal.h>
#include <ombrel/string/StringTypes.h>
#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/SharedFromThis.h>

#include <tessaro/Export.h>
#include <tessaro/dropouts/DropoutReason.h>

namespace tessaro::dropouts {

/// Result code of all exceptions of the dropout reporting.
inline constexpr ombrel::config::ResultCode kResultDropoutFailure = 0xF865001E;

/// Counts the dropouts of all contexts by their reason, and tells its subscribers about the first one.
///
/// Life: `Create` makes a reporter that counts. It tells once; from then on it counts in silence until
/// `Reset`. `DisableCounting` makes it blind, `Reset` brings it back. The last `std::shared_ptr` to it takes
/// it away and frees its name.
///
/// What is told depends on the feature switch "tessaro.dropouts.ImprovedAudioDropoutReporting" and on the
/// debug entry "tessaro.dropouts.ShowAudioDropoutWarnings", which is on if its text is "true":
///
/// - Switch on: a title and a description that say what a user can do, for dropouts that a user can do
///   something about (`kAudioNotInCache`, `kIOTimeLimitExceeded`). With the entry on, others are told, too,
///   by a plain name; with the entry off they don't use up the one telling.
/// - Switch off: one line with the message, the place and the context's name, and an empty description. With
///   the entry off the line goes to the trace (category "tessaro.dropouts", level 6), and subscribers hear
///   nothing. Either way the telling is used up, whatever the reason.
///
/// Each reporter shows its counts in the debug monitor under "tessaro.dropouts.NAME".
///
/// Nothing here is for real-time threads but the two getters of counts.
class TESSARO_EXPORT DropoutReporter : public ombrel::utility::SharedFromThis<DropoutReporter>,
                                       private ombrel::utility::noncopyable
{
public:
    /// Title and description, UTF-8 in the user's language.
    using DropoutReportedFunction =
        std::function<void(std::basic_string<unsigned char>, std::basic_string<unsigned char>)>;

    /// Makes a reporter that counts from now on. Throws `ombrel_exception` if another one counts under the
    /// name. [any thread]
    [[nodiscard]] static std::shared_ptr<DropoutReporter> Create(const std::string& inName);

    /// [any thread]
    ~DropoutReporter() override;

    /// Calls `inFunction` at each telling, on the thread that processes the dropouts and after all
    /// subscribers that connected before. It may connect, disconnect, reset the reporter and process dropouts
    /// itself. Throws `std::bad_function_call` if it is empty. [any thread]
    ombrel::messaging::Connection ConnectToDropoutReportedSignal(const DropoutReportedFunction& inFunction);

    /// All dropouts since the creation or the last reset. For a moment it may be ahead of the sum of the
    /// reasons. [any thread] [real-time]
    [[nodiscard]] std::int32_t GetTotalDropoutCount() const noexcept { return mTotalCount; }

    /// Those of one reason, which must be one of the six. [any thread] [real-time]
    [[nodiscard]] std::int32_t GetDropoutCount(DropoutReason inReason) const noexcept
    {
        return mCounts[static_cast<std::size_t>(inReason)];
    }

    /// Stops counting and gives the name free. A dropout that is being processed at this moment may still be
    /// counted. Does nothing if counting is off already. [control]
    void DisableCounting();

    /// Sets all counts to 0 and makes the reporter tell about the next dropout. If counting is off, turns it
    /// on; throws `ombrel_exception` and leaves it off if another reporter counts under the name by now.
    /// [control]
    void Reset();

private:
    friend class DropoutManager;

    explicit DropoutReporter(const std::string& inName);

    void CountDropout(const std::u16string& inContextName, kestrin::FrameRate inRate,
                      kestrin::TickTime inTime, DropoutReason inReason);
    void TellImproved(const std::u16string& inContextName, DropoutReason inReason, bool inShowWarnings);
    void TellPlain(const std::u16string& inContextName, kestrin::FrameRate inRate, kestrin::TickTime inTime,
                   DropoutReason inReason, bool inShowWarnings);
    bool TakeReportedFlag();
    void RegisterDebugMonitor();
    void WriteCounts(ombrel::oUTF16StringStream& ioText) const;

    const std::string mName;
    bool mCountingDisabled = true; ///< until `Create` has registered it
    std::atomic<std::int32_t> mTotalCount{0};
    std::array<std::atomic<std::int32_t>, kDropoutReasonCount> mCounts{};
    ombrel::messaging::Signal<void(ombrel::UTF8String, ombrel::UTF8String)> mDropoutReported;
    std::atomic<std::int32_t> mReported{0};
    std::optional<ombrel::debug::DebugMonitorToken> mMonitorToken;
};

/// Hands all waiting dropouts, in the order in which they were reported, to all reporters, in the order of
/// their names, and returns when none waits. Several threads may do so at once; each dropout is processed by
/// one of them. No lock is held while a reporter counts and tells.
///
/// Throws `ombrel_exception` for a dropout with an unknown reason, which no reporter sees, and what a
/// subscriber throws, once all reporters have counted that dropout; those behind it wait for the next call.
/// [any thread]
TESSARO_EXPORT void ProcessReportedDropouts();

/// The reporter that counts under the name; null if there is none. [any thread]
[[nodiscard]] TESSARO_EXPORT std::shared_ptr<DropoutReporter> GetDropoutReporter(const std::string& inName);

} // namespace tessaro::dropouts
