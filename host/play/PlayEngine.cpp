#include "play/PlayEngine.h"

#include <pthread.h>
#include <sched.h>

#include <kestrin/FrameRate.h>
#include <kestrin/TickTime.h>

#include "FlushToZero.h"

namespace host {

namespace {

constexpr int kPriority = 60; // of SCHED_FIFO, above most of the system's own threads

} // namespace

using tessaro::dropouts::DropoutReason;

PlayEngine::PlayEngine(const Timing& inTiming, BlockStream& ioStream, ChainCrossfade& ioChain,
                       tessaro::messaging::RealtimeMessageQueue& ioQueue,
                       const tessaro::dropouts::DropoutContext& inContext, std::vector<Overload> inOverloads)
    : mTiming(inTiming),
      mStream(ioStream),
      mChain(ioChain),
      mQueue(ioQueue),
      mContext(inContext),
      mOverloads(std::move(inOverloads))
{
    mBlockTimes.reserve(static_cast<std::size_t>(inTiming.mBlockCount));
}

PlayEngine::~PlayEngine()
{
    Stop();
    Join();
}

void PlayEngine::Start()
{
    mIsPlaying = true;
    mQueue.SetProcessing(true);
    mThread = std::thread([this] { Run(); });
}

void PlayEngine::Join()
{
    if (mThread.joinable()) {
        mThread.join();
        mQueue.SetProcessing(false);
    }
}

void PlayEngine::Run()
{
    const FlushToZero flushToZero;
    mHasPriority = AskForPriority();
    const auto period =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(mTiming.mPeriod));
    auto deadline = Clock::now();
    while (!mIsStopped && !mStream.IsAtEnd()) {
        std::this_thread::sleep_until(deadline);
        const auto start = Clock::now();
        const bool hasPlayed = PlayBlock(start);
        const auto end = Clock::now();
        deadline += period;
        if (!hasPlayed) {
            if (!mStream.IsAtEnd()) {
                Report(DropoutReason::kAudioNotInCache);
            }
        } else if (end > deadline) {
            Report(end - start > period ? DropoutReason::kIOTimeLimitExceeded
                                        : DropoutReason::kIOBufferUnderrun);
            deadline = end;
        }
    }
    mIsPlaying.store(false, std::memory_order_release);
}

bool PlayEngine::AskForPriority()
{
    sched_param parameters{};
    parameters.sched_priority = kPriority;
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
}

bool PlayEngine::PlayBlock(Clock::time_point inStart)
{
    mQueue.PumpFromRealtimeThread();
    auto* const block = mStream.Take();
    if (block == nullptr) {
        return false;
    }
    const unsigned count = block->GetBufferSize();
    mChain.Process(*block);
    WasteTime(count);
    mStream.GiveBack(block);
    mPosition.store(mPosition.load(std::memory_order_relaxed) + count, std::memory_order_release);
    if (mBlockTimes.size() < mBlockTimes.capacity()) {
        mBlockTimes.push_back(std::chrono::duration<float>(Clock::now() - inStart).count());
    }
    return true;
}

void PlayEngine::WasteTime(unsigned inCount)
{
    const auto end = mPosition.load(std::memory_order_relaxed) + inCount;
    for (; mNextOverload < mOverloads.size(); ++mNextOverload) {
        const auto& overload = mOverloads[mNextOverload];
        if (overload.mSeconds * mTiming.mSampleRate >= static_cast<double>(end)) {
            return;
        }
        const auto until =
            Clock::now() + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double, std::milli>(overload.mMilliseconds));
        while (Clock::now() < until) {
        }
    }
}

void PlayEngine::Report(DropoutReason inReason) const
{
    const auto rate = kestrin::FrameRate::FromRatio(mTiming.mSampleRate, 1);
    mContext.ReportDropout(rate, kestrin::TickTime(GetPosition(), rate), inReason);
}

} // namespace host
