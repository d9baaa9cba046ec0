#include <tessaro/messaging/RealtimeMessageQueue.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include <tessaro/messaging/DeferredFunctionMessage.h>
#include <tessaro/messaging/PostMessageToQueueMessage.h>

#include "messaging/ScriptedMessage.h"

namespace tessaro::messaging {

namespace {

using testing::Log;
using testing::Scripted;
using State = RealtimeMessage::State;
using MessagePtr = boost::intrusive_ptr<RealtimeMessage>;
using QueuePtr = boost::intrusive_ptr<RealtimeMessageQueue>;

QueuePtr MakeQueue(std::size_t inCapacity, bool inIsProcessing)
{
    QueuePtr queue(new RealtimeMessageQueue(inCapacity));
    queue->SetProcessing(inIsProcessing);
    return queue;
}

TEST(RealtimeMessageQueueTest, RunsEachStepOnlyWhileTheMessageAsksForMore)
{
    Log log;
    const auto queue = MakeQueue(8, true);
    queue->Post(Scripted("a", log, "!", "!", "!"));
    queue->Post(Scripted("b", log, "!"));
    queue->Post(Scripted("c", log, "."));
    queue->Post(Scripted("d", log, "..!", "."));
    EXPECT_EQ(log, (Log{"ap", "ax", "bp", "cp", "dp"}));
    EXPECT_EQ(queue->GetSize(), 3u);
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 3u);

    for (int round = 0; round < 3; ++round) {
        log.clear();
        queue->PumpFromRealtimeThread();
        queue->PumpFromControlThread();
        const Log expected[] = {{"br", "cr", "dr", "cc", "dc", "bx", "cx"}, {"dr", "dc"}, {"dr", "dx"}};
        EXPECT_EQ(log, expected[round]);
    }
    EXPECT_EQ(queue->GetSize(), 0u);
}

TEST(RealtimeMessageQueueTest, KeepsTheOrderOfPostingWhenMoreIsPostedThanTheRingHolds)
{
    Log log;
    const auto queue = MakeQueue(3, true);
    for (const char* name : {"a", "b", "c", "d", "e", "f", "g"}) {
        queue->Post(Scripted(name, log, name[0] == 'a' ? ".!" : "!", "."));
    }
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 3u);
    EXPECT_EQ(queue->GetRealtimeQueueCapacity(), 3u);
    EXPECT_EQ(queue->GetSize(), 7u);
    log.clear();
    const Log expected[] = {{"ar", "br", "cr", "ac", "bx", "cx"},
                            {"ar", "dr", "er", "ax", "dx", "ex"}, // the second round of "a" goes first again
                            {"fr", "gr", "fx", "gx"}};
    for (const Log& steps : expected) {
        log.clear();
        queue->PumpFromRealtimeThread();
        queue->PumpFromControlThread();
        EXPECT_EQ(log, steps);
    }
    EXPECT_EQ(queue->GetSize(), 0u);
}

TEST(RealtimeMessageQueueTest, RunsTheControlStepsInTheOrderOfPosting)
{
    Log log;
    const auto queue = MakeQueue(8, true);
    queue->Post(Scripted("a", log, ".", ".!"));
    queue->PumpFromRealtimeThread();
    queue->Post(Scripted("b", log, "."));
    queue->PumpFromControlThread();
    log.clear();
    queue->PumpFromRealtimeThread();
    queue->PumpFromControlThread();
    EXPECT_EQ(log, (Log{"br", "ar", "ac", "bc", "ax", "bx"}));
}

TEST(RealtimeMessageQueueTest, CarriesMessagesOutAtOnceWhileNobodyProcesses)
{
    Log log;
    const auto queue = MakeQueue(4, false);
    const auto message = Scripted("a", log, ".", "..!");
    queue->Post(message);
    EXPECT_EQ(log, (Log{"ap", "ar", "ac"}));
    EXPECT_EQ(message->GetState(), State::kInRing);
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 1u);
    queue->Post(Scripted("b", log, "!"));
    EXPECT_EQ(log, (Log{"ap", "ar", "ac", "bp", "ar", "br", "ac", "bx"}));
    queue->PumpFromControlThread();
    EXPECT_EQ(message->GetState(), State::kFinished);
    EXPECT_EQ(queue->GetSize(), 1u);
}

TEST(RealtimeMessageQueueTest, KeepsAFinishedMessageUntilItsCreatorLetsGo)
{
    Log log;
    const auto queue = MakeQueue(4, true);
    auto held = Scripted("a", log, "!");
    auto handedOver = Scripted("b", log, "!");
    queue->Post(held);
    queue->Post(std::move(handedOver));
    EXPECT_EQ(handedOver, nullptr);
    EXPECT_EQ(held->GetRefCount(), 3); // this test's, the list's and the ring's
    queue->PumpFromRealtimeThread();
    EXPECT_EQ(held->GetRefCount(), 2);
    EXPECT_EQ(queue->GetSize(), 2u);
    queue->PumpFromControlThread();
    EXPECT_EQ(queue->GetSize(), 1u);
    EXPECT_EQ(held->GetState(), State::kFinished);
    held.reset();
    EXPECT_EQ(queue->GetSize(), 1u);
    queue->Post(Scripted("c", log, "!")); // purges too
    EXPECT_EQ(queue->GetSize(), 1u);
    EXPECT_EQ(log, (Log{"ap", "bp", "ar", "br", "bx", "cp", "ax"}));
}

TEST(RealtimeMessageQueueTest, DropsWhatIsPostedFromInsideItsPump)
{
    class Poster : public RealtimeMessage
    {
    public:
        Poster(RealtimeMessageQueue& ioQueue, MessagePtr inMessage)
            : mQueue(ioQueue), mMessage(std::move(inMessage))
        {
        }
        Result ExecuteOnRealtimeThread() override { return kNotDone; }
        Result ExecuteOnControlThread() override
        {
            mQueue.PumpFromControlThread();
            mQueue.Post(std::move(mMessage));
            return kDone;
        }

    private:
        RealtimeMessageQueue& mQueue;
        MessagePtr mMessage;
    };
    Log log;
    const auto queue = MakeQueue(4, true);
    queue->Post(new Poster(*queue, Scripted("lost", log, "!")));
    queue->PumpFromRealtimeThread();
    queue->PumpFromControlThread();
    EXPECT_EQ(log, Log{"lostx"});
    EXPECT_EQ(queue->GetSize(), 0u);
    queue->Post(Scripted("a", log, "!"));
    EXPECT_EQ(queue->GetSize(), 1u);
}

TEST(RealtimeMessageQueueTest, PassesExceptionsOnAndWorksOn)
{
    Log log;
    const auto queue = MakeQueue(4, true);
    EXPECT_THROW(queue->Post(Scripted("a", log, "!", "!", "T")), std::runtime_error);
    EXPECT_EQ(queue->GetSize(), 0u);

    queue->Post(Scripted("b", log, ".", "T!"));
    queue->Post(Scripted("c", log, "."));
    queue->PumpFromRealtimeThread();
    EXPECT_THROW(queue->PumpFromControlThread(), std::runtime_error);
    EXPECT_EQ(queue->GetSize(), 2u);
    log.clear();
    queue->PumpFromControlThread();
    EXPECT_EQ(log, (Log{"bc", "cc", "bx", "cx"}));

    queue->SetProcessing(false);
    EXPECT_THROW(queue->Post(new DeferredFunctionMessage(boost::function<void()>())),
                 boost::bad_function_call);
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 0u);
    queue->PumpFromControlThread();
    EXPECT_EQ(queue->GetSize(), 0u);
}

TEST(RealtimeMessageQueueTest, ClearDropsMessagesInEveryStateAndLeavesAUsableQueue)
{
    Log log;
    const auto queue = MakeQueue(2, true);
    const auto finished = Scripted("a", log, "!");
    queue->Post(finished);
    queue->Post(Scripted("b", log, "."));
    queue->PumpFromRealtimeThread();
    for (const char* name : {"c", "d", "e"}) {
        queue->Post(Scripted(name, log, "!"));
    }
    EXPECT_EQ(queue->GetSize(), 5u);
    queue->Clear();
    EXPECT_EQ(queue->GetSize(), 0u);
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 0u);
    EXPECT_EQ(finished->GetRefCount(), 1);
    EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const auto& inWord) { return inWord[1] == 'x'; }), 4);
    log.clear();
    queue->Post(Scripted("f", log, "!"));
    queue->PumpFromRealtimeThread();
    queue->PumpFromControlThread();
    EXPECT_EQ(log, (Log{"fp", "fr", "fx"}));
}

TEST(RealtimeMessageQueueTest, MessagesMayPostWhenTheyEnd)
{
    struct PostsAtItsEnd : RealtimeMessage
    {
        PostsAtItsEnd(RealtimeMessageQueue& ioQueue, MessagePtr inMessage)
            : mQueue(ioQueue), mMessage(std::move(inMessage))
        {
        }
        ~PostsAtItsEnd() override
        {
            EXPECT_EQ(GetState(), State::kDeletable);
            mQueue.Post(std::move(mMessage));
        }
        RealtimeMessageQueue& mQueue;
        MessagePtr mMessage;
    };
    Log log;
    const auto queue = MakeQueue(4, true);
    queue->Post(new PostsAtItsEnd(*queue, Scripted("b", log, "!")));
    queue->Post(new PostsAtItsEnd(*queue, Scripted("c", log, "!")));
    queue->PumpFromRealtimeThread();
    queue->Post(Scripted("d", log, "!")); // purges
    queue->PumpFromRealtimeThread();
    // Every post purges before it appends: "b" makes "c" go in first.
    EXPECT_EQ(log, (Log{"dp", "bp", "cp", "cr", "br", "dr"}));
}

TEST(RealtimeMessageQueueTest, RunsWhatARealtimeStepPostsInTheSamePump)
{
    Log log;
    const auto queue = MakeQueue(1, true);
    const auto other = MakeQueue(1, true);
    queue->Post(new DeferredFunctionMessage([&] { queue->Post(Scripted("a", log, "!")); }));
    queue->PumpFromRealtimeThread();
    queue->PumpFromControlThread();
    EXPECT_EQ(log, (Log{"ap", "ar", "ax"}));

    queue->Post(new PostMessageToQueueMessage(Scripted("b", log, "!"), other));
    queue->Post(new PostMessageToQueueMessage(Scripted("c", log, "!"), nullptr));
    queue->PumpFromRealtimeThread();
    queue->PumpFromControlThread();
    queue->PumpFromRealtimeThread();
    EXPECT_EQ(log, (Log{"ap", "ar", "ax", "bp"}));
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 0u);
    EXPECT_EQ(other->GetRealtimeQueueSize(), 1u);
}

TEST(RealtimeMessageQueueTest, PostOrExecuteIfNullPostsOnlyToAQueueThatQualifies)
{
    for (const bool hasQueue : {false, true}) {
        for (const bool isProcessing : {false, true}) {
            for (const bool onlyIfProcessing : {false, true}) {
                Log log;
                const auto queue = hasQueue ? MakeQueue(1, isProcessing) : nullptr;
                RealtimeMessageQueue::PostOrExecuteIfNull(queue, Scripted("a", log, ".", ".!"),
                                                          onlyIfProcessing);
                const bool isPosted = hasQueue && (isProcessing || !onlyIfProcessing);
                EXPECT_EQ(hasQueue && queue->GetSize() == 1, isPosted);
                EXPECT_EQ(log.size(), !isPosted ? 4u : isProcessing ? 1u : 3u);
            }
        }
    }
}

TEST(RealtimeMessageQueueTest, NothingFitsIntoARingWithoutPlaces)
{
    Log log;
    const auto queue = MakeQueue(0, false);
    queue->Post(Scripted("a", log, "!"));
    queue->Post(MessagePtr());
    EXPECT_EQ(log, Log{"ap"});
    EXPECT_EQ(queue->GetSize(), 1u);
    EXPECT_EQ(queue->GetRealtimeQueueSize(), 0u);
}

} // namespace

} // namespace tessaro::messaging
