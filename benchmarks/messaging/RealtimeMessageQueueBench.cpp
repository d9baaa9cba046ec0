#include <tessaro/messaging/RealtimeMessageQueue.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>

#include <benchmark/benchmark.h>
#include <boost/lockfree/spsc_queue.hpp>

// The peer is a plain ring of pointers between two threads, with fixed size. It hands over a pointer and no
// more: no count of owners, no state, no way back for the message.

namespace {

using tessaro::messaging::RealtimeMessage;
using tessaro::messaging::RealtimeMessageQueue;
using MessagePtr = boost::intrusive_ptr<RealtimeMessage>;

constexpr std::size_t kCapacity = 1024;

class CountingMessage : public RealtimeMessage
{
public:
    explicit CountingMessage(std::uint64_t& ioCount) : mCount(ioCount) {}
    Result ExecuteOnRealtimeThread() override
    {
        ++mCount;
        return kDone;
    }

private:
    std::uint64_t& mCount;
};

void BM_PointerThroughPeerRing(benchmark::State& ioState)
{
    boost::lockfree::spsc_queue<void*> ring(kCapacity);
    for (auto _ : ioState) {
        void* pointer = &ring;
        ring.push(pointer);
        benchmark::DoNotOptimize(ring.pop(pointer));
    }
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_PointerThroughPeerRing);

/// The same work as a message's whole life, on the peer's ring: made, handed over, called, deleted.
void BM_ObjectThroughPeerRing(benchmark::State& ioState)
{
    boost::lockfree::spsc_queue<RealtimeMessage*> ring(kCapacity);
    std::uint64_t count = 0;
    for (auto _ : ioState) {
        ring.push(new CountingMessage(count));
        RealtimeMessage* message = nullptr;
        ring.pop(message);
        message->ExecuteOnRealtimeThread();
        delete message;
    }
    benchmark::DoNotOptimize(count);
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_ObjectThroughPeerRing);

void BM_MakeAndDeleteMessage(benchmark::State& ioState)
{
    std::uint64_t count = 0;
    for (auto _ : ioState) {
        MessagePtr message(new CountingMessage(count));
        benchmark::DoNotOptimize(message.get());
    }
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_MakeAndDeleteMessage);

void BM_PostAndPump(benchmark::State& ioState)
{
    RealtimeMessageQueue queue(kCapacity);
    queue.SetProcessing(true);
    std::uint64_t count = 0;
    for (auto _ : ioState) {
        queue.Post(MessagePtr(new CountingMessage(count)));
        queue.PumpFromRealtimeThread();
    }
    benchmark::DoNotOptimize(count);
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_PostAndPump);

void BM_PostBlocksAndPump(benchmark::State& ioState)
{
    RealtimeMessageQueue queue(kCapacity);
    queue.SetProcessing(true);
    std::uint64_t count = 0;
    const auto block = ioState.range(0);
    for (auto _ : ioState) {
        for (std::int64_t i = 0; i < block; ++i) {
            queue.Post(MessagePtr(new CountingMessage(count)));
        }
        queue.PumpFromRealtimeThread();
    }
    benchmark::DoNotOptimize(count);
    ioState.SetItemsProcessed(ioState.iterations() * block);
}
BENCHMARK(BM_PostBlocksAndPump)->Arg(16)->Arg(512);

void BM_PeerRingBetweenThreads(benchmark::State& ioState)
{
    boost::lockfree::spsc_queue<void*> ring(kCapacity);
    std::atomic<bool> isToStop{false};
    std::thread consumer([&] {
        void* pointer = nullptr;
        while (!isToStop.load(std::memory_order_relaxed)) {
            ring.pop(pointer);
        }
    });
    void* pointer = &ring;
    for (auto _ : ioState) {
        while (!ring.push(pointer)) {
        }
    }
    isToStop = true;
    consumer.join();
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_PeerRingBetweenThreads)->UseRealTime();

/// Messages from posting to deletion while another thread pumps between blocks of work, which take the given
/// number of microseconds. With 0 it pumps without a pause, so that both threads want each message at once.
void BM_PostBetweenThreads(benchmark::State& ioState)
{
    using Clock = std::chrono::steady_clock;
    RealtimeMessageQueue queue(16 * kCapacity);
    queue.SetProcessing(true);
    std::atomic<bool> isToStop{false};
    std::uint64_t count = 0;
    std::thread realtime([&, block = std::chrono::microseconds(ioState.range(0))] {
        while (!isToStop.load(std::memory_order_relaxed)) {
            queue.PumpFromRealtimeThread();
            for (const auto end = Clock::now() + block; Clock::now() < end;) {
            }
        }
    });
    for (auto _ : ioState) {
        queue.Post(MessagePtr(new CountingMessage(count)));
    }
    while (queue.GetSize() > 0) {
        queue.PumpFromControlThread();
    }
    isToStop = true;
    realtime.join();
    ioState.SetItemsProcessed(ioState.iterations());
}
BENCHMARK(BM_PostBetweenThreads)->Arg(0)->Arg(100)->Arg(1000)->UseRealTime();

} // namespace
