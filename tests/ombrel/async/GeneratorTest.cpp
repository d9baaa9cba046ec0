#include <ombrel/async/Generator.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace ombrel::async {

namespace {

TEST(GeneratorTest, NumbersItsValuesAndEndsForGood)
{
    const auto executor = threads::CreateSerialExecutor();
    int calls = 0;
    const auto generator = CreateFunctionGenerator<int>(
        [&calls](unsigned inIndex) -> int {
            ++calls;
            if (inIndex == 1)
                throw std::runtime_error("one bad value");
            if (inIndex == 3)
                throw StopGeneratorException();
            return static_cast<int>(inIndex) * 10;
        },
        executor);
    EXPECT_EQ(generator->Executor(), executor);
    std::vector<Future<int>> futures;
    for (int i = 0; i < 6; ++i)
        futures.push_back(generator->Next());
    EXPECT_EQ(futures[0].Get(), 0);
    EXPECT_THROW(futures[1].Get(), std::runtime_error);
    EXPECT_EQ(futures[2].Get(), 20);
    for (std::size_t i = 3; i < 6; ++i)
        EXPECT_THROW(futures[i].Get(), StopGeneratorException);
    EXPECT_EQ(calls, 4);
    EXPECT_THROW(CreateFunctionGenerator<int>(nullptr, executor), std::bad_function_call);
}

TEST(GeneratorTest, OnManyThreadsTheValuesBeforeTheEndAreKept)
{
    const auto pool = std::make_shared<threads::AsyncThreadedExecutor>(4);
    constexpr unsigned kEnd = 500;
    auto generator = CreateFunctionGenerator<std::unique_ptr<unsigned>>(
        [](unsigned inIndex) {
            if (inIndex >= kEnd)
                throw StopGeneratorException();
            std::this_thread::yield();
            return std::make_unique<unsigned>(inIndex);
        },
        pool);
    std::vector<Future<std::unique_ptr<unsigned>>> futures;
    for (unsigned i = 0; i < kEnd + 5; ++i)
        futures.push_back(generator->Next());
    generator.reset();
    for (unsigned i = 0; i < kEnd; ++i)
        EXPECT_EQ(*futures[i].Take(), i);
    EXPECT_THROW(futures[kEnd].Get(), StopGeneratorException);
    EXPECT_THROW(futures.back().Get(), StopGeneratorException);
}

/// Puts each value behind the end of the one before, well or not.
template <class T>
class InTurn : public Generator<T>
{
public:
    explicit InTurn(std::shared_ptr<Generator<T>> inSource) : mSource(std::move(inSource)) {}

    Future<T> Next() override
    {
        const auto next = [source = mSource](const auto&) { return source->Next(); };
        mLast = mLast.IsValid() ? mLast.OnCompletion(Executor(), next) : mSource->Next();
        return mLast;
    }
    std::shared_ptr<threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    std::shared_ptr<Generator<T>> mSource;
    Future<T> mLast;
};

/// The sum of pairs of values, to stand for a stage that works on what its source gives.
class SumOfPairs : public Generator<int>
{
public:
    explicit SumOfPairs(std::shared_ptr<Generator<int>> inSource) : mSource(std::move(inSource)) {}

    Future<int> Next() override
    {
        return mSource->Next().OnSuccess(Executor(), [source = mSource](int inFirst) {
            return source->Next().OnSuccess(source->Executor(),
                                            [=](int inSecond) { return inFirst + inSecond; });
        });
    }
    std::shared_ptr<threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    std::shared_ptr<Generator<int>> mSource;
};

TEST(GeneratorTest, StagesStackAndTheEndTravelsThroughAllOfThem)
{
    const auto pool = std::make_shared<threads::AsyncThreadedExecutor>(3);
    int unguarded = 0; // a data race unless the values are made in turn
    const auto numbers = CreateFunctionGenerator<int>(
        [&unguarded](unsigned inIndex) {
            if (inIndex >= 100)
                throw StopGeneratorException();
            return ++unguarded;
        },
        pool);
    SumOfPairs sums(std::make_shared<InTurn<int>>(numbers));
    int total = 0;
    int count = 0;
    try {
        for (;; ++count)
            total += sums.Next().Get();
    } catch (const StopGeneratorException&) {
    }
    EXPECT_EQ(count, 50);
    EXPECT_EQ(total, 100 * 101 / 2);
    EXPECT_THROW(sums.Next().Get(), StopGeneratorException);

    std::vector<Future<int>> pending;
    int inTurnCalls = 0;
    InTurn<int> inTurn(CreateFunctionGenerator<int>([&inTurnCalls](unsigned) { return ++inTurnCalls; },
                                                    GetDefaultExecutor()));
    for (int i = 0; i < 300; ++i)
        pending.push_back(inTurn.Next());
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(pending[static_cast<std::size_t>(i)].Get(), i + 1);
}

} // namespace

} // namespace ombrel::async
