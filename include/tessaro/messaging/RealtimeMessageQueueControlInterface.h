#pragma once

#include <cstddef>
#include <string>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>
#include <tessaro/messaging/RealtimeMessage.h>

namespace tessaro::messaging {

/// The control thread's side of a message queue: what code that changes a running chain is given. See
/// `RealtimeMessageQueue` for how the two sides work together.
///
/// All functions are `[control]`: one thread at a time, which may be delayed by allocation.
class TESSARO_EXPORT RealtimeMessageQueueControlInterface : public ombrel::utility::RefCountedObject,
                                                            private ombrel::utility::noncopyable
{
public:
    ~RealtimeMessageQueueControlInterface() override;

    /// Runs the first step of a message and, unless it is done with that, sends it on its way behind all that
    /// were posted before. The pointer is empty afterwards. There is always room: what does not fit into the
    /// ring waits on this side. While nobody processes (`SetProcessing`), the message is carried out at once,
    /// on this thread. An exception of a step passes through.
    ///
    /// From inside a pump of this queue on the control thread nothing can be posted: the message is dropped
    /// without being run. A null pointer is ignored.
    virtual void Post(boost::intrusive_ptr<RealtimeMessage>&& ioMessage) = 0;
    /// The same with a reference of its own; the caller's keeps the message from being deleted.
    virtual void Post(const boost::intrusive_ptr<RealtimeMessage>& inMessage) = 0;

    /// Tells whether the real-time thread pumps the queue regularly; false at first. Set it to true before
    /// that thread begins, and to false once it has stopped. Nothing is run or moved by the call itself.
    virtual void SetProcessing(bool inIsProcessing) = 0;
    [[nodiscard]] virtual bool GetProcessing() const = 0;

    /// Runs the control thread's step of all messages that wait for it, in order of posting, sends those that
    /// are not done round again, brings waiting messages into the ring and deletes finished ones that nobody
    /// else holds. To be called regularly. While nobody processes it first runs the ring's messages itself.
    ///
    /// An exception of a step passes through; that message's step, and those behind it, are due in the next
    /// call. Does nothing when called from inside itself.
    virtual void PumpFromControlThread() = 0;

    /// Drops all messages, unfinished ones too. Not from inside a message's step. [stopped]
    virtual void Clear() = 0;

    /// A name for diagnostics.
    virtual void SetDescription(const std::string& inDescription) = 0;

    /// The thread that is in control, for diagnostics: a number of `ombrel::threads::GetCurrentThreadID`, 0
    /// as long as nobody set one. May be read on any thread.
    virtual void SetControlThreadID(unsigned inThreadID) = 0;
    [[nodiscard]] virtual unsigned GetControlThreadID() const = 0;

    /// Number of live messages: those that wait, travel, or are finished and still held.
    [[nodiscard]] virtual std::size_t GetSize() const = 0;

    /// Number of messages in the ring, of which the real-time thread may be taking some this moment, and how
    /// many fit into it.
    [[nodiscard]] virtual std::size_t GetRealtimeQueueSize() const = 0;
    [[nodiscard]] virtual std::size_t GetRealtimeQueueCapacity() const = 0;
};

} // namespace tessaro::messaging
