#include <tessaro/messaging/RealtimeMultiMessage.h>

#include <gtest/gtest.h>

#include <tessaro/messaging/RealtimeMessageQueue.h>

#include "messaging/ScriptedMessage.h"

namespace tessaro::messaging {

namespace {

using testing::Log;
using testing::Scripted;

constexpr auto kNotDone = RealtimeMessage::kNotDone;
constexpr auto kDone = RealtimeMessage::kDone;

TEST(RealtimeMultiMessageTest, IsDoneInEveryStepWithoutParts)
{
    RealtimeMultiMessage group;
    group.AddMessage(nullptr);
    EXPECT_TRUE(group.Empty());
    EXPECT_EQ(group.ExecuteOnPost(), kDone);
    EXPECT_EQ(group.ExecuteOnRealtimeThread(), kDone);
    EXPECT_EQ(group.ExecuteOnControlThread(), kDone);
}

TEST(RealtimeMultiMessageTest, NeverReachesTheRingWhenAllPartsAreDoneAtPosting)
{
    Log log;
    const boost::intrusive_ptr<RealtimeMultiMessage> group(new RealtimeMultiMessage);
    group->AddMessage(Scripted("a", log, "!", "!", "!"));
    group->AddMessage(Scripted("b", log, "!", "!", "!"));
    EXPECT_FALSE(group->Empty());
    RealtimeMessageQueue queue(4);
    queue.Post(group);
    EXPECT_EQ(log, (Log{"ap", "bp"}));
    EXPECT_EQ(queue.GetSize(), 0u);
}

TEST(RealtimeMultiMessageTest, RunsEachPartInStepUntilThatPartIsDone)
{
    Log log;
    RealtimeMultiMessage group;
    group.AddMessage(Scripted("a", log, "!", "!", "!"));
    group.AddMessage(Scripted("b", log, "!"));
    group.AddMessage(Scripted("c", log, "."));
    group.AddMessage(Scripted("d", log, ".!", "."));
    group.AddMessage(Scripted("e", log, ".", ".!"));
    EXPECT_EQ(group.ExecuteOnPost(), kNotDone);
    EXPECT_EQ(group.ExecuteOnRealtimeThread(), kNotDone);
    EXPECT_EQ(group.ExecuteOnControlThread(), kNotDone);
    EXPECT_EQ(group.ExecuteOnRealtimeThread(), kNotDone);
    EXPECT_EQ(group.ExecuteOnControlThread(), kDone);
    EXPECT_EQ(
        log, (Log{"ap", "bp", "cp", "dp", "ep", "br", "cr", "dr", "er", "cc", "dc", "ec", "dr", "er", "ec"}));

    RealtimeMultiMessage single;
    single.AddMessage(Scripted("f", log, "!"));
    EXPECT_EQ(single.ExecuteOnPost(), kNotDone);
    EXPECT_EQ(single.ExecuteOnRealtimeThread(), kDone);
}

} // namespace

} // namespace tessaro::messaging
