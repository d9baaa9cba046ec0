#include <ombrel/utility/RefCounted.h>
#include <ombrel/utility/SharedFromThis.h>
#include <ombrel/utility/WeakPtr.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ombrel::utility::RefCountedInterface;
using ombrel::utility::RefCountedObject;
using ombrel::utility::RefCountedObjectWithWeakPtr;
using ombrel::utility::WeakPtr;

template <typename Base>
class Counted : public Base
{
public:
    explicit Counted(std::atomic<int>& ioEnds) : mEnds(ioEnds) {}
    Counted(const Counted&) = default;
    ~Counted() override { ++mEnds; }

    int mValue = 0;

private:
    std::atomic<int>& mEnds;
};

using Plain = Counted<RefCountedObject>;
using Watched = Counted<RefCountedObjectWithWeakPtr>;

class EndsOnMainThread : public Watched
{
public:
    using Watched::Watched;
    bool DestructOnMainThread() const noexcept override { return true; }
};

template <typename Work>
void RunOnThreads(int inThreads, const Work& inWork)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < inThreads; ++i) {
        threads.emplace_back(inWork);
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

TEST(RefCountedTest, EndsWithTheLastOwnerThroughAnyOfItsTypes)
{
    std::atomic<int> ends{0};
    boost::intrusive_ptr<Plain> owner(new Plain(ends));
    EXPECT_EQ(owner->GetRefCount(), 1);
    boost::intrusive_ptr<const RefCountedInterface> base(owner);
    EXPECT_EQ(owner->GetRefCount(), 2);
    const Plain copy(*owner);
    EXPECT_EQ(copy.GetRefCount(), 0);
    owner.reset();
    EXPECT_EQ(ends, 0);
    base.reset();
    EXPECT_EQ(ends, 1);
}

TEST(RefCountedTest, CountsFromManyThreadsAndEndsOnce)
{
    std::atomic<int> ends{0};
    boost::intrusive_ptr<Plain> owner(new Plain(ends));
    owner->mValue = 1;
    RunOnThreads(4, [shared = owner] {
        for (int i = 0; i < 10000; ++i) {
            const boost::intrusive_ptr<Plain> another(shared);
        }
    });
    EXPECT_EQ(owner->GetRefCount(), 1);
    owner.reset();
    EXPECT_EQ(ends, 1);
}

TEST(WeakPtrTest, LocksOnlyWhileThereIsAnOwnerOrAUser)
{
    std::atomic<int> ends{0};
    auto* object = new Watched(ends);
    WeakPtr<Watched> weak(object);
    EXPECT_EQ(weak.Lock(), nullptr) << "no owner came yet";
    boost::intrusive_ptr<Watched> owner(object);
    EXPECT_EQ(weak.Lock(), owner);
    const WeakPtr<Watched> another = weak;

    object->AddUseCount();
    object->ReleaseUseCount();
    EXPECT_EQ(ends, 0) << "the end of a use leaves the owner";

    object->AddUseCount();
    owner.reset();
    EXPECT_EQ(ends, 0) << "a use is running";
    EXPECT_EQ(object->GetRefCount(), 0);
    EXPECT_EQ(object->GetUseCount(), 1);
    EXPECT_NE(another.Lock(), nullptr);
    object->ReleaseUseCount();
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(weak.IsExpired());
    EXPECT_EQ(another.Lock(), nullptr);
    EXPECT_EQ(WeakPtr<Watched>().Lock(), nullptr);
}

TEST(WeakPtrTest, NeverRevivesAnObjectThatEndsOnAnotherThread)
{
    for (int round = 0; round < 300; ++round) {
        std::atomic<int> ends{0};
        boost::intrusive_ptr<Watched> owner(new Watched(ends));
        const WeakPtr<Watched> weak(owner);
        std::thread watcher([&] {
            while (const auto locked = weak.Lock()) {
                EXPECT_EQ(locked->mValue, 0);
                locked->AddUseCount();
                locked->ReleaseUseCount();
            }
        });
        owner.reset();
        watcher.join();
        ASSERT_EQ(ends, 1);
    }
}

TEST(WeakPtrTest, HandsTheDestructionToTheMainThreadWhenThereIsOne)
{
    using ombrel::utility::SetMainThreadDestruction;
    std::atomic<int> ends{0};
    boost::intrusive_ptr<EndsOnMainThread>(new EndsOnMainThread(ends)).reset();
    EXPECT_EQ(ends, 1) << "without a host it ends in place";

    std::vector<std::function<void()>> posted;
    SetMainThreadDestruction([&](std::function<void()> inFunction) { posted.push_back(inFunction); });
    boost::intrusive_ptr<EndsOnMainThread>(new EndsOnMainThread(ends)).reset();
    boost::intrusive_ptr<EndsOnMainThread>(new EndsOnMainThread(ends)).reset();
    EXPECT_EQ(ends, 1);
    ASSERT_EQ(posted.size(), 2u);
    posted.front()();
    EXPECT_EQ(ends, 2);
    posted.clear();
    EXPECT_EQ(ends, 3) << "dropped unrun";

    SetMainThreadDestruction([](const std::function<void()>&) { throw std::runtime_error("gone"); });
    boost::intrusive_ptr<EndsOnMainThread>(new EndsOnMainThread(ends)).reset();
    EXPECT_EQ(ends, 4);
    SetMainThreadDestruction({});
}

struct Shared : ombrel::utility::SharedFromThis<Shared>
{
};

TEST(SharedFromThisTest, HandsOutPointersOnlyWhileTheObjectIsOwned)
{
    Shared alone;
    EXPECT_TRUE(alone.GetWeakPtr().expired());
    EXPECT_THROW(static_cast<void>(alone.GetSharedPtr()), std::bad_weak_ptr);
    auto owner = std::make_shared<Shared>();
    const auto weak = owner->GetWeakPtr();
    EXPECT_EQ(owner->GetSharedPtr(), owner);
    owner.reset();
    EXPECT_TRUE(weak.expired());
}

} // namespace
