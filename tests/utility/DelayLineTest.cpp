#include <tessaro/utility/DelayLine.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro::utility {

namespace {

constexpr float kRate = 1000.0f; // a sample is a millisecond

/// The delay one sample at a time, with the rule for a change of the delay in its long form.
class SampleLoop
{
public:
    explicit SampleLoop(std::size_t inLength) : mStorage(inLength, 0.0f) {}

    void SetDelay(std::size_t inWanted)
    {
        const auto length = mStorage.size();
        const auto distance = mWrite > mRead ? mWrite - mRead : length - mRead + mWrite;
        mRead = inWanted > distance ? (mRead + length - (inWanted - distance)) % length
                                    : (distance + mRead - inWanted) % length;
    }
    void Process(std::vector<float>& ioData)
    {
        for (auto& sample : ioData) {
            mStorage[mWrite] = sample;
            mWrite = (mWrite + 1) % mStorage.size();
            sample = mStorage[mRead];
            mRead = (mRead + 1) % mStorage.size();
        }
    }
    void Reset()
    {
        for (auto index = mRead; index != mWrite; index = (index + 1) % mStorage.size()) {
            mStorage[index] = 0.0f;
        }
    }

private:
    std::vector<float> mStorage;
    std::size_t mWrite = 0;
    std::size_t mRead = 0;
};

/// Random blocks, delays and resets against the loop above: for short lines, whose ends come often, for
/// delays longer and shorter than the block, and for lines longer than what is moved at a time.
TEST(DelayLineTest, MatchesTheSampleLoopForAnyCountAndDelay)
{
    std::mt19937 random(1);
    float next = 0.0f;
    for (const unsigned maxDelay : {0u, 1u, 2u, 3u, 7u, 64u, 600u, 3000u}) {
        DelayLine line(kRate, static_cast<float>(maxDelay));
        SampleLoop loop(maxDelay + 1);
        for (int round = 0; round < 400; ++round) {
            if (round % 4 == 0) {
                const auto some = static_cast<unsigned>(random());
                const auto delay = some % 3 == 0 ? maxDelay : some / 3 % (maxDelay + 1);
                line.SetDelaySamples(delay);
                loop.SetDelay(delay);
            }
            if (round % 16 == 0) {
                line.Reset();
                loop.Reset();
            }
            std::vector<float> data(random() % (round % 3 == 0 ? 2000 : 9));
            std::generate(data.begin(), data.end(), [&] { return next += 1.0f; });
            auto expected = data;
            loop.Process(expected);
            {
                testing::AllocationGuard guard;
                line.ProcessInPlace(static_cast<unsigned>(data.size()), data.data());
            }
            ASSERT_EQ(data, expected) << "maximum " << maxDelay << ", delay " << line.GetDelaySamples();
        }
    }
}

TEST(DelayLineTest, DelaysAreRoundedAndLimited)
{
    DelayLine line(44100.0f, 10.0f);
    EXPECT_EQ(line.GetSampleRate(), 44100.0f);
    line.SetDelayMillis(5.0f); // 220.5 samples
    EXPECT_EQ(line.GetDelaySamples(), 221u);
    EXPECT_EQ(line.GetDelayMillis(), 5.0f);
    line.SetDelayMillis(11.0f);
    EXPECT_EQ(line.GetDelaySamples(), 441u);
    EXPECT_EQ(line.GetDelayMillis(), 10.0f);
    line.SetDelayMillis(-1.0f);
    EXPECT_EQ(line.GetDelaySamples(), 0u);
    EXPECT_EQ(line.GetDelayMillis(), 0.0f);
    line.SetDelaySamples(5000);
    EXPECT_EQ(line.GetDelaySamples(), 441u);
    EXPECT_FLOAT_EQ(line.GetDelayMillis(), 10.0f);
}

TEST(DelayLineTest, LongerDelayAfterResetBringsBackOlderSamples)
{
    for (const auto& [delay, expected] :
         {std::pair<unsigned, std::vector<float>>{2, {3, 4, 0, 0}}, {0, {3, 4, 5, 6}}}) {
        DelayLine line(kRate, 8.0f);
        line.SetDelaySamples(delay);
        std::vector<float> data{1, 2, 3, 4, 5, 6};
        line.ProcessInPlace(6, data.data());
        line.Reset(); // clears what is in the delay
        line.SetDelaySamples(4);
        data.assign(4, 9.0f);
        line.ProcessInPlace(4, data.data());
        EXPECT_EQ(data, expected);
    }
}

} // namespace

} // namespace tessaro::utility
