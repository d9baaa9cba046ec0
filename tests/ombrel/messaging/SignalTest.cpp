#include <ombrel/messaging/Signal.h>

#include <atomic>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace ombrel::messaging {

namespace {

TEST(SignalTest, CallsByOrderValueThenByTimeOfConnection)
{
    Signal<void(std::string)> signal;
    std::string calls;
    const auto append = [&](char inName) {
        return [&calls, inName](std::string inText) { calls += inName + std::move(inText); };
    };
    signal.Connect(append('d'), Signal<void(std::string)>::kLast);
    signal.Connect(append('b'));
    signal.Connect(append('e'), 0x7FFFFFFF);
    signal.Connect(append('a'), -1);
    signal.Connect(append('c'));
    signal.Fire("1"); // each subscriber moves from a copy of its own
    EXPECT_EQ(calls, "a1b1c1d1e1");
    EXPECT_THROW(signal.Connect(nullptr), std::bad_function_call);
}

TEST(SignalTest, ConnectionsMayChangeWhileItFires)
{
    Signal<void()> signal;
    int ownCalls = 0;
    int nextCalls = 0;
    int lateCalls = 0;
    Connection own;
    Connection next;
    own = signal.Connect([&, held = std::make_shared<int>(0)] {
        ++ownCalls;
        own.Disconnect();
        *held = 1; // what the subscriber holds lives until it returns
        next.Disconnect();
        signal.Connect([&] { ++lateCalls; }, -5);
        signal.Connect([&] { ++lateCalls; }, 5);
    });
    next = signal.Connect([&] { ++nextCalls; });
    signal.Fire();
    EXPECT_EQ(ownCalls, 1);
    EXPECT_EQ(nextCalls, 0);
    EXPECT_EQ(lateCalls, 0);
    EXPECT_FALSE(own.IsConnected());
    signal.Fire();
    EXPECT_EQ(ownCalls, 1);
    EXPECT_EQ(lateCalls, 2);
}

TEST(SignalTest, OneThrowingSubscriberDoesNotStarveTheOthers)
{
    Signal<void(int)> signal;
    int sum = 0;
    signal.Connect([&](int) { throw std::runtime_error("first"); });
    signal.Connect([&](int inValue) { sum += inValue; });
    signal.Connect([&](int) { throw std::logic_error("second"); });
    EXPECT_THROW(signal.Fire(2), std::runtime_error);
    EXPECT_EQ(sum, 2);
}

TEST(ConnectionTest, OutlivesTheSignalAndScopesDisconnect)
{
    EXPECT_FALSE(Connection().IsConnected());
    int calls = 0;
    std::optional<Signal<void()>> signal(std::in_place);
    const Connection plain = signal->Connect([&] { ++calls; });
    Connection released;
    {
        ScopedConnection scoped = signal->Connect([&] { calls += 10; });
        ScopedConnection moved = std::move(scoped);
        EXPECT_FALSE(scoped.IsConnected());
        ScopedConnection other = signal->Connect([&] { calls += 100; });
        signal->Fire();
        EXPECT_EQ(calls, 111);
        other = std::move(moved);
        ScopedConnection kept = signal->Connect([&] { calls += 1000; });
        released = kept.Release();
    }
    signal->Fire();
    EXPECT_EQ(calls, 111 + 1001);
    released.Disconnect();
    released.Disconnect();
    EXPECT_TRUE(plain.IsConnected());
    EXPECT_TRUE(signal->HasConnections());
    signal.reset();
    EXPECT_FALSE(plain.IsConnected());
    plain.Disconnect();
}

TEST(SignalTest, FiresAndChangesOnManyThreads)
{
    Signal<void(int)> signal;
    std::atomic<int> steady{0};
    std::atomic<bool> stop{false};
    signal.Connect([&](int inValue) { steady += inValue; });
    std::thread changer([&] {
        while (!stop.load()) {
            const auto alive = std::make_shared<std::atomic<int>>(0);
            const ScopedConnection connection = signal.Connect([alive](int inValue) { *alive += inValue; });
        }
    });
    std::thread firing([&] {
        for (int i = 0; i < 3000; ++i)
            signal.Fire(1);
    });
    for (int i = 0; i < 3000; ++i)
        signal.Fire(1);
    firing.join();
    stop = true;
    changer.join();
    EXPECT_EQ(steady.load(), 6000);
}

} // namespace

} // namespace ombrel::messaging
