#pragma once

#include <cstdint>
#include <string>

#include <kestrin/FrameRate.h>
#include <kestrin/TickTime.h>
#include <ombrel/utility/Noncopyable.h>

#include <tessaro/Export.h>
#include <tessaro/dropouts/DropoutReason.h>

/// Telling of missed deadlines: from the thread that missed them, where no lock may be taken and no text
/// built, to people.
///
/// Whatever plays audio holds a `DropoutContext` and reports through it; that puts a small record on a
/// lock-free queue. A thread of no urgency calls `ProcessReportedDropouts` now and then, say on a timer ten
/// times a second, which hands each record to every `DropoutReporter`. A reporter counts, and tells its
/// subscribers about the first dropout.
///
///     DropoutContext context(u"Sequence 1");                      // [control]
///     context.ReportDropout(rate, time, DropoutReason::kIOTimeLimitExceeded); // [real-time]
///
///     const auto reporter = DropoutReporter::Create("studio.transport");
///     const auto connection = reporter->ConnectToDropoutReportedSignal(
///         [](UTF8String inTitle, UTF8String inDescription) { ... });
///     ProcessReportedDropouts();
///
/// Everything here is good from the loading of the library to the very end of the program: contexts and
/// reporters may be static objects.
namespace tessaro::dropouts {

/// A source of dropouts: a sequence, a track, a device. Its name is what the messages tell people.
///
/// Records hold the number of their context, and the name is looked up when a record is processed: a new name
/// holds for dropouts that still wait, too, and a dropout whose context has gone is told without a name.
class TESSARO_EXPORT DropoutContext : private ombrel::utility::noncopyable
{
public:
    /// A context with an empty name. Takes a lock. [control]
    DropoutContext();
    /// `inName` is UTF-16. Takes a lock. [control]
    explicit DropoutContext(const std::basic_string<char16_t>& inName);
    /// Takes a lock. Dropouts that wait still count. [control]
    ~DropoutContext();

    /// Replaces the name. Takes a lock. [any thread]
    void SetName(const std::basic_string<char16_t>& inName);

    /// Puts a dropout on the queue.
    ///
    /// `inRate` is the rate of the frames of whatever played; 0 stands for an invalid one, too. `inTime` is
    /// the time on the timeline that failed to play, `TickTime::NoTime()` where there is none. `inReason` is
    /// one of the six; another value becomes an exception of `ProcessReportedDropouts`.
    ///
    /// Takes no lock and waits for no other thread. Room for a hundred dropouts is there from the start; with
    /// more than that unprocessed, a call may allocate 64 bytes, which are kept for later ones, and if there
    /// is no memory the dropout is lost. [real-time] [any thread]
    void ReportDropout(const kestrin::FrameRate& inRate, const kestrin::TickTime& inTime,
                       DropoutReason inReason) const noexcept;

private:
    std::uint32_t mContextId;
};

} // namespace tessaro::dropouts
