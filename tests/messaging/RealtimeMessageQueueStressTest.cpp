#include <tessaro/messaging/RealtimeMessageQueue.h>

#include <atomic>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/threads/ThreadID.h>
#include <tessaro/messaging/RealtimeMultiMessage.h>

#include "support/AllocationGuard.h"

namespace tessaro::messaging {

namespace {

using ombrel::threads::GetCurrentThreadID;
using MessagePtr = boost::intrusive_ptr<RealtimeMessage>;

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr std::uint64_t kMessages = 100'000;
#else
constexpr std::uint64_t kMessages = 400'000;
#endif
constexpr std::uint64_t kMessagesAnEpisode = kMessages / 10;

/// What the messages of a run have in common. Everything without a lock or atomic: the queue is to order the
/// two threads' accesses, and the thread sanitizer to see whether it does.
struct Scene
{
    unsigned mControlThread = GetCurrentThreadID();
    unsigned mRealtimeThread = 0;
    std::uint64_t mFirstRunsOnRealtimeThread = 0; // number of the next message to be seen there first
    std::uint64_t mLastInThisPump = 0;
    std::uint64_t mEnded = 0;
    std::uint64_t mFaults = 0;
    std::atomic<std::uint64_t> mFaultsOnRealtimeThread{0};
};

struct Plan
{
    bool mIsDoneAtPosting;
    bool mEndsOnRealtimeThread;
    bool mThrowsOnce; // in the first step on the control thread
    unsigned mFurtherRounds;
};

/// Follows its plan, and checks who runs it, how often and in which order.
class PlannedMessage : public RealtimeMessage
{
public:
    PlannedMessage(Scene& ioScene, const Plan& inPlan, std::uint64_t inNumber)
        : mScene(ioScene), mPlan(inPlan), mNumber(inNumber), mThrows(inPlan.mThrowsOnce)
    {
    }

    ~PlannedMessage() override
    {
        const unsigned rounds = mPlan.mIsDoneAtPosting ? 0 : mPlan.mFurtherRounds + 1;
        const bool isLastOnControlSkipped = !mPlan.mIsDoneAtPosting && mPlan.mEndsOnRealtimeThread;
        Check(mPostRuns == 1);
        Check(mRealtimeRuns == rounds);
        Check(mControlRuns == rounds - (isLastOnControlSkipped ? 1 : 0));
        Check(GetCurrentThreadID() == mScene.mControlThread);
        ++mScene.mEnded;
    }

    Result ExecuteOnPost() override
    {
        ++mPostRuns;
        return mPlan.mIsDoneAtPosting ? kDone : kNotDone;
    }

    Result ExecuteOnRealtimeThread() override
    {
        bool isRight = GetCurrentThreadID() == mScene.mRealtimeThread && mRealtimeRuns == mControlRuns;
        if (mRealtimeRuns++ == 0) {
            isRight = isRight && mNumber >= mScene.mFirstRunsOnRealtimeThread;
            mScene.mFirstRunsOnRealtimeThread = mNumber + 1;
        }
        mScene.mFaultsOnRealtimeThread += isRight ? 0 : 1;
        return mPlan.mEndsOnRealtimeThread && mRealtimeRuns > mPlan.mFurtherRounds ? kDone : kNotDone;
    }

    Result ExecuteOnControlThread() override
    {
        if (std::exchange(mThrows, false)) {
            throw std::runtime_error("planned");
        }
        Check(GetCurrentThreadID() == mScene.mControlThread && mControlRuns + 1 == mRealtimeRuns);
        Check(mNumber >= std::exchange(mScene.mLastInThisPump, mNumber));
        ++mControlRuns;
        return !mPlan.mEndsOnRealtimeThread && mControlRuns > mPlan.mFurtherRounds ? kDone : kNotDone;
    }

private:
    void Check(bool inIsRight) { mScene.mFaults += inIsRight ? 0 : 1; }

    Scene& mScene;
    const Plan mPlan;
    const std::uint64_t mNumber;
    bool mThrows;
    unsigned mPostRuns = 0;
    unsigned mRealtimeRuns = 0;
    unsigned mControlRuns = 0;
};

/// A real-time thread that does nothing but pump.
class Pumping
{
public:
    Pumping(RealtimeMessageQueue& ioQueue, Scene& ioScene)
        : mThread([this, &ioQueue, &ioScene] {
              ioScene.mRealtimeThread = GetCurrentThreadID();
              const testing::AllocationGuard guard;
              while (!mIsToStop.load()) {
                  ioQueue.PumpFromRealtimeThread();
                  std::this_thread::yield();
              }
          })
    {
    }
    ~Pumping()
    {
        mIsToStop = true;
        mThread.join();
    }

private:
    std::atomic<bool> mIsToStop{false};
    std::thread mThread;
};

class Driver
{
public:
    Driver(Scene& ioScene, std::size_t inCapacity) : mScene(ioScene), mQueue(inCapacity), mHeld(kHeld) {}

    void Run()
    {
        mQueue.SetProcessing(true);
        while (mPosted < kMessages) {
            {
                const Pumping thread(mQueue, mScene);
                PostUpTo(mPosted + kMessagesAnEpisode);
            }
            // The stream has stopped, and goes on after a while.
            mQueue.SetProcessing(false);
            mScene.mRealtimeThread = GetCurrentThreadID();
            PostUpTo(mPosted + 100);
            mQueue.SetProcessing(true);
        }
        mQueue.SetProcessing(false);
        mHeld.clear();
        // Each pump brings at least one message one round further, or an exception behind it.
        for (std::uint64_t left = 6 * mPosted; mQueue.GetSize() > 0 && left > 0; --left) {
            Pump();
        }
    }

    std::uint64_t GetCount() const { return mPosted; }

private:
    unsigned Pick(unsigned inCount) { return static_cast<unsigned>(mRandom() % inCount); }
    bool Chance(unsigned inPercent) { return Pick(100) < inPercent; }

    MessagePtr MakeMessage()
    {
        const Plan plan{Chance(5), Chance(60), Chance(2), Chance(30) ? Pick(4) : 0};
        return new PlannedMessage(mScene, plan, mPosted++);
    }

    MessagePtr MakeGroup()
    {
        boost::intrusive_ptr<RealtimeMultiMessage> group(new RealtimeMultiMessage);
        const Plan plan{false, Chance(50), false, Pick(3)};
        for (unsigned parts = Pick(4); parts > 0; --parts) {
            group->AddMessage(new PlannedMessage(mScene, plan, mPosted++));
        }
        return group;
    }

    void PostUpTo(std::uint64_t inCount)
    {
        while (mPosted < inCount) {
            MessagePtr message = Chance(10) ? MakeGroup() : MakeMessage();
            if (Chance(10)) {
                mHeld[Pick(kHeld)] = message;
            }
            mScene.mLastInThisPump = 0;
            try {
                mQueue.Post(std::move(message));
            } catch (const std::runtime_error&) {
            }
            if (Chance(5)) {
                Pump();
            }
        }
    }

    void Pump()
    {
        mScene.mLastInThisPump = 0;
        try {
            mQueue.PumpFromControlThread();
        } catch (const std::runtime_error&) {
        }
    }

    static constexpr unsigned kHeld = 50;

    Scene& mScene;
    RealtimeMessageQueue mQueue;
    std::vector<MessagePtr> mHeld;
    std::mt19937 mRandom{20110};
    std::uint64_t mPosted = 0;
};

TEST(RealtimeMessageQueueStressTest, RunsEveryMessageAsOftenAsItAsksInOrderAndFreesItOnTheControlThread)
{
    for (const std::size_t capacity : {1, 64, 4096}) {
        Scene scene;
        Driver driver(scene, capacity);
        driver.Run();
        EXPECT_EQ(scene.mEnded, driver.GetCount());
        EXPECT_EQ(scene.mFaults, 0u);
        EXPECT_EQ(scene.mFaultsOnRealtimeThread.load(), 0u);
    }
}

} // namespace

} // namespace tessaro::messaging
