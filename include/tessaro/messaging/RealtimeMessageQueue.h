#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/Export.h>
#include <tessaro/messaging/RealtimeMessage.h>
#include <tessaro/messaging/RealtimeMessageQueueControlInterface.h>

namespace tessaro::messaging {

/// Lets a control thread change what a real-time thread is using, without either waiting for the other.
///
/// The control thread posts messages and pumps now and then; the real-time thread pumps between blocks:
///
///     boost::intrusive_ptr<RealtimeMessageQueue> queue(new RealtimeMessageQueue(256));
///     queue->SetProcessing(true);                   // control: the audio starts
///     queue->Post(new DeferredFunctionMessage(...)) // control: a change
///     queue->PumpFromRealtimeThread();              // real-time: at the beginning of each block
///     queue->PumpFromControlThread();               // control: on a timer
///     queue->SetProcessing(false);                  // control: the audio has stopped
///
/// Messages are run on the real-time thread in the order of posting; one that asks for a further round comes
/// behind those that are in the ring by then. While nobody processes, a posted message is carried out at once
/// on the control thread; a message that asks for a further round then waits in the ring for the next pump.
///
/// Threads. A lock-free queue for exactly one control thread and one real-time thread at a time. While
/// processing is false, and during `Clear`, the control thread takes the real-time thread's part: the host
/// sees to it that the real-time thread does not pump then.
///
/// Real-time safety. `PumpFromRealtimeThread` takes a pointer from a ring, makes a virtual call, and changes
/// two atomic counters and a state for each message. It never frees, since the control side holds a reference
/// of its own to each message until it finds the message finished. The ring is allocated at construction.
///
/// Cost on the control side does not depend on how many messages wait or travel; each finished message that
/// is still held by its creator is looked at in every `Post` and pump.
class TESSARO_EXPORT RealtimeMessageQueue : public RealtimeMessageQueueControlInterface
{
public:
    /// `inCapacity` messages fit into the ring. With 0 none ever gets there. Throws if memory runs out.
    explicit RealtimeMessageQueue(std::size_t inCapacity);

    /// Drops all messages, unfinished ones too. [stopped]
    ~RealtimeMessageQueue() override;

    void Post(boost::intrusive_ptr<RealtimeMessage>&& ioMessage) override;
    void Post(const boost::intrusive_ptr<RealtimeMessage>& inMessage) override;
    void SetProcessing(bool inIsProcessing) override;
    [[nodiscard]] bool GetProcessing() const override;
    void PumpFromControlThread() override;
    void Clear() override;
    void SetDescription(const std::string& inDescription) override;
    void SetControlThreadID(unsigned inThreadID) override;
    [[nodiscard]] unsigned GetControlThreadID() const override;
    [[nodiscard]] std::size_t GetSize() const override;
    [[nodiscard]] std::size_t GetRealtimeQueueSize() const override;
    [[nodiscard]] std::size_t GetRealtimeQueueCapacity() const override;

    /// The name that was set. [control]
    [[nodiscard]] const std::string& GetDescription() const noexcept { return mDescription; }

    /// Runs all messages in the ring, in order, those included that arrive meanwhile. A message that throws,
    /// which it should not do here, counts as finished; the exception passes through and the rest waits for
    /// the next call. [real-time]
    void PumpFromRealtimeThread();

    /// The thread that runs the messages, for diagnostics; see `SetControlThreadID`. [any thread]
    void SetRealtimeThreadID(unsigned inThreadID) noexcept;
    [[nodiscard]] unsigned GetRealtimeThreadID() const noexcept;

    /// For code that may or may not run under a queue: posts if there is one, and `inOnlyIfProcessing` is
    /// false or the queue's `GetProcessing` true; else `ExecuteImmediately` on this thread. The pointer is
    /// empty afterwards. [control]
    static void PostOrExecuteIfNull(const boost::intrusive_ptr<RealtimeMessageQueue>& inQueue,
                                    boost::intrusive_ptr<RealtimeMessage>&& ioMessage,
                                    bool inOnlyIfProcessing);

    /// Runs the three steps on this thread, each once at most, up to the first that is done. [control]
    static void ExecuteImmediately(RealtimeMessage& ioMessage);

private:
    /// A live message with its place in the order of posting. Holds the control side's reference.
    struct Posted
    {
        boost::intrusive_ptr<RealtimeMessage> mMessage;
        std::uint64_t mNumber = 0;
    };

    [[nodiscard]] std::uint64_t GetNextIndex(std::uint64_t inIndex) const noexcept
    {
        return inIndex == mCapacity ? 0 : inIndex + 1;
    }
    static void InsertInOrder(std::deque<Posted>& ioPlace, Posted&& ioPosted);
    [[nodiscard]] bool PutIntoRing(Posted& ioPosted);
    void CollectRunMessages();
    void RunOnControlThread();
    void TransferMessagesToQueue();
    void PurgeProcessedMessages();

    static constexpr std::size_t kCacheLine = 64;

    // Written by the control thread.
    alignas(kCacheLine) std::atomic<std::uint64_t> mWriteIndex{0};
    // Written by the real-time thread. A line of its own, so that neither thread slows the other's writes.
    alignas(kCacheLine) std::atomic<std::uint64_t> mReadIndex{0};

    // Read by both.
    alignas(kCacheLine) const std::uint64_t mRingSize;
    std::vector<boost::intrusive_ptr<RealtimeMessage>> mRing;
    const std::uint64_t mCapacity;

    // The rest is the control thread's. Every live message is in one of these four places; together they are
    // the list of live messages. The places tell what is due to whom, so that no call has to look at all.

    // What was put into the ring and not collected yet, at the same index as there. With the message that is
    // being run, which the ring has let go of, every place may be taken.
    alignas(kCacheLine) std::vector<Posted> mInRing;
    std::uint64_t mInRingCount = 0;
    std::uint64_t mCollectIndex = 0;
    std::uint64_t mSeenReadIndex = 0;
    // In order of posting.
    std::deque<Posted> mWaiting;
    std::deque<Posted> mWantingControlThread;
    std::deque<Posted> mFinished;

    std::uint64_t mPostCount = 0;
    std::atomic<bool> mIsProcessing{false};
    bool mIsPumping = false;
    std::string mDescription;
    std::atomic<unsigned> mControlThreadID{0};
    std::atomic<unsigned> mRealtimeThreadID{0};
};

} // namespace tessaro::messaging
