#include <tessaro/async/AudioBufferGenerator.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>
#include <tessaro/async/SequentialGenerator.h>

namespace tessaro::async {

namespace {

using ombrel::async::Future;
using ombrel::async::StopGeneratorException;
using ombrel::threads::CreateSerialExecutor;
using Range = ombrel::value_range<std::int64_t>;
using BufferPtr = std::shared_ptr<AudioBuffer>;

/// Writes the frames' own numbers, and keeps count of what it was asked for.
struct CountingReader
{
    void operator()(float* const* outRows, std::int64_t inFrames)
    {
        mRequests->push_back(inFrames);
        std::iota(outRows[0], outRows[0] + inFrames, static_cast<float>(*mNext));
        *mNext += inFrames;
    }
    std::shared_ptr<std::vector<std::int64_t>> mRequests = std::make_shared<std::vector<std::int64_t>>();
    std::shared_ptr<std::int64_t> mNext = std::make_shared<std::int64_t>(0);
};

std::vector<float> GetFrames(const AudioBuffer& inBuffer)
{
    return {inBuffer[0], inBuffer[0] + inBuffer.GetBufferSize()};
}

std::vector<float> CountFrom(std::int64_t inFirst, std::int64_t inCount)
{
    std::vector<float> frames(static_cast<std::size_t>(inCount));
    std::iota(frames.begin(), frames.end(), static_cast<float>(inFirst));
    return frames;
}

/// Makes chunks, buffers or exceptions as told, one a call, on an executor of its own. Ends behind the last.
template <class T>
std::shared_ptr<ombrel::async::Generator<T>>
MakeGenerator(std::vector<std::function<T()>> inMakers,
              std::shared_ptr<ombrel::threads::AsyncExecutor> inExecutor = CreateSerialExecutor())
{
    return ombrel::async::CreateFunctionGenerator<T>(
        [makers = std::move(inMakers)](unsigned inIndex) {
            if (inIndex >= makers.size()) {
                throw StopGeneratorException();
            }
            return makers[inIndex]();
        },
        std::move(inExecutor));
}

BufferPtr MakeBuffer(std::int64_t inFirst, std::int64_t inCount)
{
    auto buffer = std::make_shared<AudioBuffer>(2, static_cast<unsigned>(inCount));
    if (inCount > 0) {
        const auto frames = CountFrom(inFirst, inCount);
        std::copy(frames.begin(), frames.end(), (*buffer)[0]);
        buffer->MarkChannelZero(1);
    }
    return buffer;
}

std::function<AudioBufferChunk()> ChunkMaker(std::int64_t inFirst, std::int64_t inCount)
{
    return [=] { return AudioBufferChunk{MakeBuffer(inFirst, inCount), {inFirst, inFirst + inCount}}; };
}

std::function<BufferPtr()> BufferMaker(std::int64_t inFirst, std::int64_t inCount)
{
    return [=] { return MakeBuffer(inFirst, inCount); };
}

template <class T>
std::function<T()> Thrower()
{
    return []() -> T { throw std::runtime_error("upstream"); };
}

TEST(ChunkGeometryTest, RangesAndIndexesAgree)
{
    struct Geometry
    {
        std::int64_t mChunk, mMargin, mTail;
    };
    for (const auto& [chunk, margin, tail] : {Geometry{10, 0, 0}, {10, 2, 0}, {10, 2, 3}, {10, 0, 3}}) {
        const std::int64_t hop = chunk - 2 * margin - tail;
        EXPECT_EQ(GetChunkRange(0, chunk, margin, tail), Range(-margin, chunk - margin));
        EXPECT_EQ(GetChunkRange(7, chunk, margin, tail), Range(7 * hop - margin, 7 * hop - margin + chunk));
        for (std::int64_t position = 0; position < 50; ++position) {
            unsigned first = 100;
            unsigned last = 0;
            for (unsigned index = 0; index < 60; ++index) {
                const Range range = GetChunkRange(index, chunk, margin, tail);
                if (Range(range.GetStart() + margin, range.GetEnd() - margin).Contains(position)) {
                    first = std::min(first, index);
                    last = index;
                }
            }
            EXPECT_EQ(GetChunksContaining(position, chunk, margin, tail),
                      ombrel::value_range<unsigned>(first, last));
        }
        EXPECT_EQ(GetChunksContaining(-1, chunk, margin, tail), ombrel::value_range<unsigned>(0, 0));
    }
}

TEST(AudioBufferGeneratorTest, ReadsEveryFrameOnceAndOverlapsByCopying)
{
    CountingReader reader;
    constexpr std::int64_t kTotal = 13;
    const auto generator =
        CreateAudioBufferGenerator(reader, kTotal, 10, 2, 1, CreateSerialExecutor()); // hop 5
    std::vector<Future<AudioBufferChunk>> futures;
    for (int i = 0; i < 5; ++i) {
        futures.push_back(generator->Next());
    }
    for (unsigned i = 0; i < 3; ++i) {
        const auto [buffer, range] = futures[i].Get();
        EXPECT_EQ(range, GetChunkRange(i, 10, 2, 1));
        EXPECT_EQ(buffer->GetChannelCount(), 1u);
        EXPECT_EQ(GetFrames(*buffer), CountFrom(5 * i, 10));
        buffer->ZeroBuffers(); // the receiver's own
    }
    EXPECT_THROW(futures[3].Get(), StopGeneratorException);
    EXPECT_THROW(futures[4].Get(), StopGeneratorException);
    EXPECT_EQ(*reader.mRequests, (std::vector<std::int64_t>{10, 5, 5}));
}

TEST(AudioBufferGeneratorTest, EndsBeforeTheFirstReadWithoutFrames)
{
    CountingReader reader;
    const auto executor = CreateSerialExecutor();
    const auto generator = CreateAudioBufferGenerator(reader, 0, 8, 0, 0, executor);
    EXPECT_EQ(generator->Executor(), executor);
    EXPECT_THROW(generator->Next().Get(), StopGeneratorException);
    EXPECT_TRUE(reader.mRequests->empty());
}

TEST(AudioBufferGeneratorTest, RefusesExecutorsAndSizesThatCannotWork)
{
    const auto expectRefusal = [](unsigned inThreads, std::int64_t inChunk, std::int64_t inMargin,
                                  std::int64_t inTail) -> std::string {
        try {
            auto pool = std::make_shared<ombrel::threads::AsyncThreadedExecutor>(inThreads);
            (void)CreateAudioBufferGenerator(CountingReader(), 100, inChunk, inMargin, inTail, pool);
        } catch (const ombrel::ombrel_exception& exception) {
            return exception.what();
        }
        return "";
    };
    EXPECT_EQ(expectRefusal(2, 8, 0, 0),
              "Tried to instantiate AudioBufferGenerator with multithreaded executor");
    EXPECT_EQ(expectRefusal(1, 8, 2, 4), "");
    for (const auto& [chunk, margin, tail] :
         {std::tuple(8, 5, 0), {8, 2, 5}, {8, -1, 0}, {8, 0, -1}, {-8, 0, 0}}) {
        EXPECT_NE(expectRefusal(1, chunk, margin, tail), "");
    }
    EXPECT_THROW((void)CreateAudioBufferGenerator(CountingReader(), 1, 8, 0, 0, nullptr),
                 std::bad_function_call);
}

TEST(AudioBufferGeneratorTest, DeliversAnExceptionOfTheSourceOnceAndGoesOnWithTheNextChunk)
{
    for (const std::size_t failing : {0, 1, 2}) {
        CountingReader reader;
        const auto generator = CreateAudioBufferGenerator(
            [reader, failing](float* const* outRows, std::int64_t inFrames) mutable {
                reader(outRows, inFrames);
                if (reader.mRequests->size() == failing + 1) {
                    throw std::runtime_error("unreadable");
                }
            },
            20, 8, 0, 3, CreateSerialExecutor()); // hop 5
        for (std::size_t i = 0; i < 4; ++i) {
            const auto next = generator->Next();
            if (i == failing) {
                EXPECT_THROW(next.Get(), std::runtime_error);
                continue;
            }
            auto expected = CountFrom(static_cast<std::int64_t>(5 * i), 8);
            if (i == failing + 1) { // the frames shared with the chunk that failed
                std::fill_n(expected.begin(), 3, 0.0f);
            }
            EXPECT_EQ(GetFrames(*std::get<0>(next.Get())), expected) << failing << ' ' << i;
        }
        EXPECT_THROW(generator->Next().Get(), StopGeneratorException);
    }
}

TEST(AudioBufferGeneratorTest, GivesTheBuffersAlone)
{
    const auto source =
        MakeGenerator<AudioBufferChunk>({ChunkMaker(0, 4), Thrower<AudioBufferChunk>(), ChunkMaker(4, 2)});
    const auto generator = CreateAudioBufferGenerator(source);
    EXPECT_EQ(generator->Executor(), source->Executor());
    EXPECT_EQ(GetFrames(*generator->Next().Get()), CountFrom(0, 4));
    EXPECT_THROW(generator->Next().Get(), std::runtime_error);
    EXPECT_EQ(GetFrames(*generator->Next().Get()), CountFrom(4, 2));
    EXPECT_THROW(generator->Next().Get(), StopGeneratorException);
}

TEST(SplitAudioBufferGeneratorTest, CutsChunksIntoSlicesWithTheirPlacesAndFlags)
{
    const auto generator = SplitAudioBufferGenerator(
        MakeGenerator<AudioBufferChunk>({ChunkMaker(-6, 6), ChunkMaker(100, 3)}), 3);
    std::vector<Future<AudioBufferChunk>> futures;
    for (int i = 0; i < 4; ++i) {
        futures.push_back(generator->Next());
    }
    const std::int64_t starts[] = {-6, -3, 100};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto [buffer, range] = futures[i].Get();
        EXPECT_EQ(range, Range(starts[i], starts[i] + 3));
        EXPECT_EQ(GetFrames(*buffer), CountFrom(starts[i], 3));
        EXPECT_EQ(buffer->GetChannelCount(), 2u);
        EXPECT_TRUE(buffer->IsChannelZero(1));
        EXPECT_FALSE(buffer->IsChannelZero(0));
    }
    EXPECT_THROW(futures[3].Get(), StopGeneratorException);
}

TEST(SplitAudioBufferGeneratorTest, HasFurtherSlicesReadyAtOnce)
{
    const auto generator = SplitAudioBufferGenerator(MakeGenerator<AudioBufferChunk>({ChunkMaker(0, 4)}), 1);
    generator->Next().Wait();
    for (int i = 1; i < 4; ++i) {
        EXPECT_TRUE(generator->Next().HasSucceeded());
    }
}

TEST(SplitAudioBufferGeneratorTest, TellsOfUnevenChunksAndGoesOn)
{
    const auto source = MakeGenerator<AudioBufferChunk>(
        {ChunkMaker(0, 0), ChunkMaker(0, 5), Thrower<AudioBufferChunk>(), ChunkMaker(6, 2)});
    const auto generator = SplitAudioBufferGenerator(source, 2);
    std::string outcome;
    for (int i = 0; i < 8; ++i) {
        const auto next = generator->Next();
        next.Wait();
        if (next.HasSucceeded()) {
            outcome += std::to_string(std::get<1>(next.Get()).GetStart()) + ' ';
        } else if (ombrel::config::ExtractResultFromException(next.GetException()) == 0xA00F000Cu) {
            outcome += "uneven ";
        } else {
            outcome += ombrel::config::ExtractMessageFromException(next.GetException()) == "upstream"
                           ? "upstream "
                           : "end ";
        }
    }
    EXPECT_EQ(outcome, "uneven uneven 0 2 upstream 6 end end ");
    for (const std::int64_t size :
         {std::int64_t{0}, std::int64_t{-2}, std::numeric_limits<std::int64_t>::max()}) {
        const auto refused =
            SplitAudioBufferGenerator(MakeGenerator<AudioBufferChunk>({ChunkMaker(0, 4)}), size);
        EXPECT_THROW(refused->Next().Get(), ombrel::ombrel_exception);
        EXPECT_THROW(refused->Next().Get(), StopGeneratorException);
    }
}

TEST(TrimAudioBufferGeneratorTest, YieldsTheFramesInsideTheRange)
{
    for (std::int64_t start = -2; start <= 14; ++start) {
        for (std::int64_t end = start - 1; end <= 15; ++end) {
            const auto generator =
                TrimAudioBufferGenerator(MakeGenerator<BufferPtr>({BufferMaker(0, 4), BufferMaker(4, 0),
                                                                   BufferMaker(4, 5), BufferMaker(9, 3)}),
                                         {start, end});
            std::vector<float> frames;
            EXPECT_THROW(
                for (;;) {
                    const auto buffer = generator->Next().Get();
                    ASSERT_GT(buffer->GetBufferSize(), 0u);
                    EXPECT_TRUE(buffer->IsChannelZero(1));
                    const auto more = GetFrames(*buffer);
                    frames.insert(frames.end(), more.begin(), more.end());
                },
                StopGeneratorException);
            const std::int64_t first = std::max<std::int64_t>(start, 0);
            const std::int64_t count = std::max<std::int64_t>(std::min<std::int64_t>(end, 12) - first, 0);
            EXPECT_EQ(frames, CountFrom(first, count)) << start << " to " << end;
        }
    }
}

TEST(TrimAudioBufferGeneratorTest, AsksForNothingBehindTheRangeAndSkipsLongWays)
{
    std::atomic<unsigned> calls{0};
    const auto source = ombrel::async::CreateFunctionGenerator<BufferPtr>(
        [&calls](unsigned inIndex) {
            ++calls;
            return MakeBuffer(2 * inIndex, 2);
        },
        CreateSerialExecutor());
    const auto generator = TrimAudioBufferGenerator(source, {40'000, 40'002});
    EXPECT_EQ(GetFrames(*generator->Next().Get()), CountFrom(40'000, 2));
    EXPECT_THROW(generator->Next().Get(), StopGeneratorException);
    EXPECT_EQ(calls.load(), 20'001u);
}

TEST(TrimAudioBufferGeneratorTest, PassesExceptionsOnAndGoesOn)
{
    const auto generator = TrimAudioBufferGenerator(
        MakeGenerator<BufferPtr>({BufferMaker(0, 4), Thrower<BufferPtr>(), BufferMaker(4, 4)}), {4, 6});
    EXPECT_THROW(generator->Next().Get(), std::runtime_error);
    EXPECT_EQ(GetFrames(*generator->Next().Get()), CountFrom(4, 2));
    EXPECT_THROW(generator->Next().Get(), StopGeneratorException);
}

TEST(SequentialGeneratorTest, NeverHasTwoValuesInTheMakingEvenOnManyThreads)
{
    struct Shared
    {
        int mCalls = 0; // not atomic, as there is never more than one at work
        std::atomic<int> mAtWork{0};
        std::atomic<bool> mHaveMet{false};
    };
    const auto shared = std::make_shared<Shared>();
    SequentialGenerator<int> generator(ombrel::async::CreateFunctionGenerator<int>(
        [shared](unsigned inIndex) -> int {
            shared->mHaveMet = shared->mHaveMet || shared->mAtWork++ > 0;
            std::this_thread::yield();
            const int call = shared->mCalls++;
            --shared->mAtWork;
            if (inIndex % 10 == 3) {
                throw std::runtime_error("one bad value");
            }
            return call;
        },
        std::make_shared<ombrel::threads::AsyncThreadedExecutor>(4)));
    std::vector<Future<int>> futures;
    for (int i = 0; i < 2000; ++i) {
        futures.push_back(generator.Next());
    }
    for (int i = 0; i < 2000; ++i) {
        if (i % 10 == 3) {
            EXPECT_THROW(futures[static_cast<std::size_t>(i)].Get(), std::runtime_error);
        } else {
            EXPECT_EQ(futures[static_cast<std::size_t>(i)].Get(), i);
        }
    }
    EXPECT_FALSE(shared->mHaveMet);
}

TEST(AudioBufferGeneratorTest, StagesWorkTogetherWithManyPendingFuturesAndOutliveTheirGenerator)
{
    constexpr std::int64_t kTotal = 64 * 500;
    std::vector<Future<BufferPtr>> futures;
    {
        const auto pool = std::make_shared<ombrel::threads::AsyncThreadedExecutor>(1);
        auto generator = TrimAudioBufferGenerator(
            CreateAudioBufferGenerator(SplitAudioBufferGenerator(
                CreateAudioBufferGenerator(CountingReader(), kTotal, 64, 0, 0, pool), 16)),
            {100, kTotal - 100});
        for (int i = 0; i < 2000; ++i) {
            futures.push_back(generator->Next());
        }
    }
    std::int64_t next = 100;
    for (const auto& future : futures) {
        future.Wait();
        if (future.HasSucceeded()) {
            const auto& buffer = *future.Get();
            EXPECT_EQ(GetFrames(buffer), CountFrom(next, buffer.GetBufferSize()));
            next += buffer.GetBufferSize();
        }
    }
    EXPECT_EQ(next, kTotal - 100);
}

} // namespace

} // namespace tessaro::async
