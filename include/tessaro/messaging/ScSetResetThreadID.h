#pragma once

#include <utility>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/threads/ThreadID.h>
#include <tessaro/messaging/RealtimeMessageQueue.h>
#include <tessaro/messaging/RealtimeMessageQueueControlInterface.h>

namespace tessaro::messaging {

namespace details {

/// Names the calling thread in a queue for the length of a scope, and puts back the thread that was named
/// before. A null queue is allowed and does nothing. Moving hands the duty over; a guard that is assigned to
/// does its own first.
///
/// Holds a reference: the queue must have another owner while the guard lives on a real-time thread, or it
/// would be freed there.
template <class Queue, unsigned (Queue::*GetID)() const, void (Queue::*SetID)(unsigned)>
class ScSetResetThreadID
{
public:
    explicit ScSetResetThreadID(const boost::intrusive_ptr<Queue>& inQueue)
        : mQueue(inQueue), mKeptID(inQueue ? (inQueue.get()->*GetID)() : 0)
    {
        Set(ombrel::threads::GetCurrentThreadID());
    }

    ScSetResetThreadID(ScSetResetThreadID&& ioOther) noexcept
        : mQueue(std::move(ioOther.mQueue)), mKeptID(ioOther.mKeptID)
    {
    }

    ScSetResetThreadID& operator=(ScSetResetThreadID&& ioOther) noexcept
    {
        if (this != &ioOther) {
            Set(mKeptID);
            mQueue = std::move(ioOther.mQueue);
            mKeptID = ioOther.mKeptID;
        }
        return *this;
    }

    ~ScSetResetThreadID() { Set(mKeptID); }

private:
    void Set(unsigned inThreadID)
    {
        if (mQueue) {
            (mQueue.get()->*SetID)(inThreadID);
        }
    }

    boost::intrusive_ptr<Queue> mQueue;
    unsigned mKeptID;
};

} // namespace details

/// Names the calling thread as a queue's real-time thread while it lives. [real-time]
using ScSetResetRealtimeThreadID =
    details::ScSetResetThreadID<RealtimeMessageQueue, &RealtimeMessageQueue::GetRealtimeThreadID,
                                &RealtimeMessageQueue::SetRealtimeThreadID>;

/// Names the calling thread as a queue's control thread while it lives. [control]
using ScSetResetControlThreadID =
    details::ScSetResetThreadID<RealtimeMessageQueueControlInterface,
                                &RealtimeMessageQueueControlInterface::GetControlThreadID,
                                &RealtimeMessageQueueControlInterface::SetControlThreadID>;

} // namespace tessaro::messaging
