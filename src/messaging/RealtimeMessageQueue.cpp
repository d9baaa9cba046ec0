#include <tessaro/messaging/RealtimeMessageQueue.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tessaro::messaging {

namespace {

using State = RealtimeMessage::State;

/// Holds a flag up for the length of a scope.
class ScopedFlag
{
public:
    explicit ScopedFlag(bool& ioFlag) noexcept : mFlag(ioFlag) { mFlag = true; }
    ScopedFlag(const ScopedFlag&) = delete;
    ScopedFlag& operator=(const ScopedFlag&) = delete;
    ~ScopedFlag() { mFlag = false; }

private:
    bool& mFlag;
};

} // namespace

RealtimeMessageQueueControlInterface::~RealtimeMessageQueueControlInterface() = default;

RealtimeMessageQueue::RealtimeMessageQueue(std::size_t inCapacity)
    : mRingSize(std::uint64_t{inCapacity} + 1), mRing(mRingSize), mCapacity(inCapacity), mInRing(mRingSize)
{
}

RealtimeMessageQueue::~RealtimeMessageQueue()
{
    PurgeProcessedMessages();
}

void RealtimeMessageQueue::Post(boost::intrusive_ptr<RealtimeMessage>&& ioMessage)
{
    Posted posted{std::move(ioMessage), 0};
    if (mIsPumping || !posted.mMessage || posted.mMessage->ExecuteOnPost() == RealtimeMessage::kDone) {
        return;
    }
    PurgeProcessedMessages();
    posted.mNumber = mPostCount++;
    if (!mWaiting.empty() || !PutIntoRing(posted)) {
        mWaiting.push_back(std::move(posted));
        TransferMessagesToQueue();
    }
    if (!GetProcessing()) {
        PumpFromControlThread();
    }
}

void RealtimeMessageQueue::Post(const boost::intrusive_ptr<RealtimeMessage>& inMessage)
{
    Post(boost::intrusive_ptr<RealtimeMessage>(inMessage));
}

void RealtimeMessageQueue::SetProcessing(bool inIsProcessing)
{
    mIsProcessing.store(inIsProcessing, std::memory_order_relaxed);
}

bool RealtimeMessageQueue::GetProcessing() const
{
    return mIsProcessing.load(std::memory_order_relaxed);
}

void RealtimeMessageQueue::PumpFromControlThread()
{
    if (mIsPumping) {
        return;
    }
    const ScopedFlag pumping(mIsPumping);
    if (!GetProcessing()) {
        PumpFromRealtimeThread();
    }
    RunOnControlThread();
    TransferMessagesToQueue();
    PurgeProcessedMessages();
}

void RealtimeMessageQueue::PumpFromRealtimeThread()
{
    // Kept over the rounds: each message is let go only when the next one has come.
    boost::intrusive_ptr<RealtimeMessage> message;
    std::uint64_t index = mReadIndex.load(std::memory_order_relaxed);
    while (index != mWriteIndex.load(std::memory_order_acquire)) {
        message = std::move(mRing[index]);
        mReadIndex.store(GetNextIndex(index), std::memory_order_release);
        RealtimeMessage::Result result = RealtimeMessage::kDone;
        try {
            result = message->ExecuteOnRealtimeThread();
        } catch (...) {
            message->SetState(State::kFinished);
            throw;
        }
        message->SetState(result == RealtimeMessage::kDone ? State::kFinished : State::kWantsControlThread);
        // Read anew, as the message may have pumped.
        index = mReadIndex.load(std::memory_order_relaxed);
    }
}

void RealtimeMessageQueue::Clear()
{
    // Messages are let go at the end, when the queue is in order again: their destructors may use it.
    std::vector<boost::intrusive_ptr<RealtimeMessage>> ring(mRingSize);
    std::vector<Posted> inRing(mRingSize);
    mRing.swap(ring);
    mInRing.swap(inRing);
    const std::uint64_t writeIndex = mWriteIndex.load(std::memory_order_relaxed);
    mReadIndex.store(writeIndex, std::memory_order_release);
    mCollectIndex = writeIndex;
    mInRingCount = 0;
    mSeenReadIndex = writeIndex;
    const auto waiting = std::exchange(mWaiting, {});
    const auto wantingControlThread = std::exchange(mWantingControlThread, {});
    const auto finished = std::exchange(mFinished, {});
}

void RealtimeMessageQueue::SetDescription(const std::string& inDescription)
{
    mDescription = inDescription;
}

void RealtimeMessageQueue::SetControlThreadID(unsigned inThreadID)
{
    mControlThreadID.store(inThreadID, std::memory_order_relaxed);
}

unsigned RealtimeMessageQueue::GetControlThreadID() const
{
    return mControlThreadID.load(std::memory_order_relaxed);
}

void RealtimeMessageQueue::SetRealtimeThreadID(unsigned inThreadID) noexcept
{
    mRealtimeThreadID.store(inThreadID, std::memory_order_relaxed);
}

unsigned RealtimeMessageQueue::GetRealtimeThreadID() const noexcept
{
    return mRealtimeThreadID.load(std::memory_order_relaxed);
}

std::size_t RealtimeMessageQueue::GetSize() const
{
    return mInRingCount + mWaiting.size() + mWantingControlThread.size() + mFinished.size();
}

std::size_t RealtimeMessageQueue::GetRealtimeQueueSize() const
{
    const std::uint64_t readIndex = mReadIndex.load(std::memory_order_acquire);
    const std::uint64_t writeIndex = mWriteIndex.load(std::memory_order_acquire);
    return writeIndex >= readIndex ? writeIndex - readIndex : writeIndex + mRingSize - readIndex;
}

std::size_t RealtimeMessageQueue::GetRealtimeQueueCapacity() const
{
    return mCapacity;
}

void RealtimeMessageQueue::PostOrExecuteIfNull(const boost::intrusive_ptr<RealtimeMessageQueue>& inQueue,
                                               boost::intrusive_ptr<RealtimeMessage>&& ioMessage,
                                               bool inOnlyIfProcessing)
{
    if (inQueue && (!inOnlyIfProcessing || inQueue->GetProcessing())) {
        inQueue->Post(std::move(ioMessage));
        return;
    }
    const boost::intrusive_ptr<RealtimeMessage> message(std::move(ioMessage));
    if (message) {
        ExecuteImmediately(*message);
    }
}

void RealtimeMessageQueue::ExecuteImmediately(RealtimeMessage& ioMessage)
{
    if (ioMessage.ExecuteOnPost() != RealtimeMessage::kDone &&
        ioMessage.ExecuteOnRealtimeThread() != RealtimeMessage::kDone) {
        ioMessage.ExecuteOnControlThread();
    }
}

/// False if there is no room; the message is then left as it was.
bool RealtimeMessageQueue::PutIntoRing(Posted& ioPosted)
{
    const std::uint64_t index = mWriteIndex.load(std::memory_order_relaxed);
    const std::uint64_t nextIndex = GetNextIndex(index);
    // The other thread's index is a line to fetch, so it is asked again only when the last answer is used up.
    if (nextIndex == mSeenReadIndex) {
        mSeenReadIndex = mReadIndex.load(std::memory_order_acquire);
    }
    // What the real-time thread has taken from its place may not have been collected from here yet.
    if (mInRing[index].mMessage) {
        CollectRunMessages();
    }
    if (nextIndex == mSeenReadIndex || mInRing[index].mMessage) {
        return false;
    }
    ioPosted.mMessage->SetState(State::kInRing);
    mRing[index] = ioPosted.mMessage;
    mInRing[index] = std::move(ioPosted);
    ++mInRingCount;
    mWriteIndex.store(nextIndex, std::memory_order_release);
    return true;
}

/// Mostly at the end; but messages on a further round come behind younger ones. Those are the oldest, so they
/// are brought to their place from the front. Nothing is lost if memory runs out.
void RealtimeMessageQueue::InsertInOrder(std::deque<Posted>& ioPlace, Posted&& ioPosted)
{
    constexpr auto kWasPostedBefore = [](const Posted& inLeft, const Posted& inRight) {
        return inLeft.mNumber < inRight.mNumber;
    };
    if (ioPlace.empty() || kWasPostedBefore(ioPlace.back(), ioPosted)) {
        ioPlace.push_back(std::move(ioPosted));
        return;
    }
    ioPlace.push_front(std::move(ioPosted));
    const auto others = std::next(ioPlace.begin());
    std::rotate(ioPlace.begin(), others,
                std::lower_bound(others, ioPlace.end(), ioPlace.front(), kWasPostedBefore));
}

/// Takes back what the real-time thread has run. It runs in the order of the ring, so the first message that
/// it is not through with is the end.
void RealtimeMessageQueue::CollectRunMessages()
{
    while (mInRingCount > 0) {
        Posted& posted = mInRing[mCollectIndex];
        const State state = posted.mMessage->GetState();
        if (state == State::kInRing) {
            return;
        }
        if (state == State::kWantsControlThread) {
            InsertInOrder(mWantingControlThread, std::move(posted));
        } else {
            mFinished.push_back(std::move(posted));
        }
        mCollectIndex = GetNextIndex(mCollectIndex);
        --mInRingCount;
    }
}

void RealtimeMessageQueue::RunOnControlThread()
{
    CollectRunMessages();
    while (!mWantingControlThread.empty()) {
        RealtimeMessage& message = *mWantingControlThread.front().mMessage;
        const bool isDone = message.ExecuteOnControlThread() == RealtimeMessage::kDone;
        message.SetState(isDone ? State::kFinished : State::kWaiting);
        Posted posted = std::move(mWantingControlThread.front());
        mWantingControlThread.pop_front();
        if (isDone) {
            mFinished.push_back(std::move(posted));
        } else {
            InsertInOrder(mWaiting, std::move(posted));
        }
    }
}

void RealtimeMessageQueue::TransferMessagesToQueue()
{
    while (!mWaiting.empty() && PutIntoRing(mWaiting.front())) {
        mWaiting.pop_front();
    }
}

/// Deletes what is finished and held by nobody else, and puts the rest back in the same order. A destructor
/// may post to this queue, and so get here again: nothing is kept over the deletion.
void RealtimeMessageQueue::PurgeProcessedMessages()
{
    CollectRunMessages();
    for (std::size_t left = mFinished.size(); left > 0 && !mFinished.empty(); --left) {
        Posted posted = std::move(mFinished.front());
        mFinished.pop_front();
        if (posted.mMessage->GetRefCount() > 1) {
            mFinished.push_back(std::move(posted));
        } else {
            posted.mMessage->SetState(State::kDeletable);
        }
    }
}

} // namespace tessaro::messaging
