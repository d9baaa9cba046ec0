#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <tessaro/dropouts/DropoutContext.h>
#include <tessaro/messaging/RealtimeMessageQueue.h>

#include "play/BlockStream.h"
#include "play/ChainCrossfade.h"

namespace host {

/// Work without use at one place of the timeline, to see what an overload does.
struct Overload
{
    double mSeconds = 0.0;
    double mMilliseconds = 0.0;
};

/// Plays blocks against the clock, as an audio device would ask for them: a thread that wakes at the
/// deadline of each block, carries out the messages that wait, and sends the block through the chain.
///
/// A block that comes too late is told to the dropout context: `kIOTimeLimitExceeded` where its processing
/// took too long, `kIOBufferUnderrun` where the thread was woken too late, `kAudioNotInCache` where the file
/// had not been read yet; the block is then played at the next deadline. After a late block the clock starts
/// anew, so that one late block makes one dropout.
class PlayEngine
{
public:
    struct Timing
    {
        double mPeriod = 0.0; ///< seconds from one deadline to the next
        int mSampleRate = 0;
        std::int64_t mBlockCount = 0; ///< how many there will be, so that their times have a place
    };

    /// All of them outlive the engine. `inOverloads` are in the order of time.
    PlayEngine(const Timing& inTiming, BlockStream& ioStream, ChainCrossfade& ioChain,
               tessaro::messaging::RealtimeMessageQueue& ioQueue,
               const tessaro::dropouts::DropoutContext& inContext, std::vector<Overload> inOverloads);
    ~PlayEngine();

    /// Starts the thread. [control]
    void Start();
    /// Waits for the thread, which ends with the stream or soon after `Stop`. [control]
    void Join();
    /// [any thread]
    void Stop() { mIsStopped = true; }

    /// Frames that have been played. [any thread]
    std::int64_t GetPosition() const { return mPosition.load(std::memory_order_acquire); }
    bool IsPlaying() const { return mIsPlaying.load(std::memory_order_acquire); }
    /// Whether the system gave the thread a real-time priority. [any thread]
    bool HasPriority() const { return mHasPriority; }

    /// Seconds that each block took, messages and chain, once the engine has been joined. [stopped]
    const std::vector<float>& GetBlockTimes() const { return mBlockTimes; }

private:
    using Clock = std::chrono::steady_clock;

    void Run();
    bool AskForPriority();
    /// False when there was nothing to play.
    bool PlayBlock(Clock::time_point inStart);
    void WasteTime(unsigned inCount);
    void Report(tessaro::dropouts::DropoutReason inReason) const;

    Timing mTiming;
    BlockStream& mStream;
    ChainCrossfade& mChain;
    tessaro::messaging::RealtimeMessageQueue& mQueue;
    const tessaro::dropouts::DropoutContext& mContext;
    std::vector<Overload> mOverloads;
    std::size_t mNextOverload = 0;
    std::vector<float> mBlockTimes;
    std::atomic<std::int64_t> mPosition{0};
    std::atomic<bool> mIsPlaying{false};
    std::atomic<bool> mIsStopped{false};
    std::atomic<bool> mHasPriority{false};
    std::thread mThread;
};

} // namespace host
