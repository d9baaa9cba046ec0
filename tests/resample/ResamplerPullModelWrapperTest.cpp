#include <tessaro/resample/ResamplerPullModelWrapper.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using namespace testing;

/// Gives out one row in chunks.
struct Source
{
    explicit Source(Row inRow) : mRow(std::move(inRow)) {}

    void operator()(float* const* outRows, std::int64_t inCount)
    {
        ASSERT_EQ(inCount, ResamplerPullModelWrapper::kInternalChunksize);
        ASSERT_LE(mTaken + inCount, static_cast<std::int64_t>(mRow.size()));
        std::copy_n(mRow.begin() + mTaken, inCount, outRows[0]);
        mTaken += inCount;
    }

    Row mRow;
    std::int64_t mTaken = 0;
};

std::shared_ptr<Resample> Make(float inSource, float inDestination)
{
    auto resample = std::make_shared<Resample>();
    resample->SetFilterOrder(31);
    resample->SetSampleRates(inSource, inDestination, false);
    resample->Initialize();
    return resample;
}

TEST(ResamplerPullModelWrapperTest, GivesTheResampledStreamInAnyPiecesFromAsFewChunksAsItTakes)
{
    for (const auto& [source, destination] :
         {std::pair{44100.0f, 48000.0f}, {96000.0f, 8000.0f}, {8000.0f, 96000.0f}, {44100.0f, 44099.5f}}) {
        const double ratio = static_cast<double>(destination) / static_cast<double>(source);
        constexpr int kChunks = 8;
        Source input(MakeNoise(kChunks * 8192, 1));
        Row expected(static_cast<std::size_t>(kChunks * 8192 * ratio) + 2);
        Make(source, destination)->Process(input.mRow.data(), expected.data(), kChunks * 8192);

        ResamplerPullModelWrapper wrapper(Make(source, destination), std::ref(input));
        EXPECT_EQ(wrapper.GetSrcSampleRate(), source);
        EXPECT_EQ(wrapper.GetDstSampleRate(), destination);
        auto copy = wrapper; // goes on with the same stream
        std::mt19937 random(1);
        Row output(expected.size());
        std::int64_t done = 0;
        const auto end = static_cast<std::int64_t>((kChunks - 0.01) * 8192 * ratio);
        while (done < end) {
            const auto count =
                std::min<std::int64_t>(random() % (random() % 4 == 0 ? 20000 : 50), end - done);
            const AllocationGuard guard;
            (done % 2 ? wrapper : copy).Process(output.data() + done, count);
            done += count;
            // A filter that starts between two samples needs one more of them.
            const auto chunks = std::ceil((std::round(static_cast<double>(done) / ratio) + 1) / 8192);
            ASSERT_LE(static_cast<double>(input.mTaken), 8192 * chunks);
        }
        output.resize(static_cast<std::size_t>(end));
        expected.resize(output.size());
        EXPECT_EQ(output, expected) << source;
    }
}

TEST(ResamplerPullModelWrapperTest, ThrowsWithoutCallbackAndGivesZerosWithoutRates)
{
    float output[3] = {1, 1, 1};
    ResamplerPullModelWrapper missing(Make(44100, 48000), nullptr);
    EXPECT_NO_THROW(missing.Process(output, 0));
    EXPECT_THROW(missing.Process(output, 1), std::bad_function_call);
    ResamplerPullModelWrapper idle(std::make_shared<Resample>(), Source(Row(8192, 1.0f)));
    idle.Process(output, 3);
    EXPECT_EQ(std::count(output, output + 3, 0.0f), 3);
}

} // namespace
} // namespace tessaro
