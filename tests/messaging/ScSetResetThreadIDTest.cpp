#include <tessaro/messaging/ScSetResetThreadID.h>

#include <utility>

#include <gtest/gtest.h>

namespace tessaro::messaging {

namespace {

using ombrel::threads::GetCurrentThreadID;
using QueuePtr = boost::intrusive_ptr<RealtimeMessageQueue>;

template <class Guard>
class ScSetResetThreadIDTest : public ::testing::Test
{
protected:
    static constexpr bool kIsControl = std::is_same_v<Guard, ScSetResetControlThreadID>;

    static QueuePtr MakeQueue(unsigned inID)
    {
        QueuePtr queue(new RealtimeMessageQueue(1));
        kIsControl ? queue->SetControlThreadID(inID) : queue->SetRealtimeThreadID(inID);
        return queue;
    }
    static unsigned GetID(const QueuePtr& inQueue)
    {
        return kIsControl ? inQueue->GetControlThreadID() : inQueue->GetRealtimeThreadID();
    }
};

using Guards = ::testing::Types<ScSetResetRealtimeThreadID, ScSetResetControlThreadID>;
TYPED_TEST_SUITE(ScSetResetThreadIDTest, Guards);

TYPED_TEST(ScSetResetThreadIDTest, NamesThisThreadUntilTheEndOfTheLastOwner)
{
    const QueuePtr first = this->MakeQueue(70001);
    const QueuePtr second = this->MakeQueue(70002);
    const TypeParam none{QueuePtr()};
    {
        TypeParam guard(first);
        EXPECT_EQ(this->GetID(first), GetCurrentThreadID());
        {
            TypeParam moved(std::move(guard));
            EXPECT_EQ(this->GetID(first), GetCurrentThreadID());
            TypeParam assigned(second);
            assigned = std::move(moved);
            EXPECT_EQ(this->GetID(first), GetCurrentThreadID());
            EXPECT_EQ(this->GetID(second), 70002u);
        }
        EXPECT_EQ(this->GetID(first), 70001u);
        first->SetRealtimeThreadID(5);
        first->SetControlThreadID(5);
    }
    EXPECT_EQ(this->GetID(first), 5u);
}

} // namespace

} // namespace tessaro::messaging
