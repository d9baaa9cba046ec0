#include "dynamics/TransientCurve.h"

#include <algorithm>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro::dynamics {

namespace {

using testing::MakeNoise;
using testing::MakeSine;
using testing::Row;

constexpr int kRate = 48000;
constexpr std::size_t kLength = 48000;
constexpr std::size_t kEvent = 30000;
constexpr std::size_t kSettled = 10000; // the means have come up from 0

/// The curve beside the input, without latency
Row CurveOf(const std::vector<Row>& inRows, ombrel::utility::Flags<std::uint64_t> inSkipped = {})
{
    const auto channels = static_cast<int>(inRows.size());
    TransientCurve curve;
    curve.SetMode(channels, kRate);
    const auto latency = static_cast<std::size_t>(curve.GetLatency());
    DataTail tail;
    tail.SetTailMode(channels, kRate, static_cast<int>(inRows[0].size()), static_cast<int>(latency), true);
    std::vector<const float*> rows;
    for (const auto& row : inRows) {
        rows.push_back(row.data());
    }
    tail.Append(rows.data(), static_cast<unsigned>(inRows[0].size()), 0);
    Row result;
    result.reserve(kLength);
    const testing::AllocationGuard guard;
    for (std::size_t done = 0; done < kLength;) {
        const auto count = static_cast<unsigned>(std::min<std::size_t>(done % 255 + 1, kLength - done));
        const float* const made =
            curve.Process(tail, static_cast<unsigned>(latency + done), count, inSkipped);
        result.insert(result.end(), made, made + count);
        done += count;
    }
    result.erase(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(latency));
    return result;
}

float Largest(const Row& inRow, std::size_t inFirst, std::size_t inEnd)
{
    return *std::max_element(inRow.begin() + static_cast<std::ptrdiff_t>(inFirst),
                             inRow.begin() + static_cast<std::ptrdiff_t>(inEnd));
}

/// Tone over faint noise
Row MakeTone()
{
    auto tone = MakeSine(kLength, 220.0, kRate, 0.3);
    const auto noise = MakeNoise(kLength, 1, 0.001);
    std::transform(tone.begin(), tone.end(), noise.begin(), tone.begin(), std::plus<>());
    return tone;
}

/// Noise that gets louder a hundred times
Row MakeBurst()
{
    auto burst = MakeNoise(kLength, 5, 0.5);
    std::for_each_n(burst.begin(), kEvent, [](float& ioSample) { ioSample *= 0.01f; });
    return burst;
}

TEST(TransientCurveTest, StandsAtTheTransientAndNowhereElse)
{
    EXPECT_EQ(Largest(CurveOf({MakeTone()}), kSettled, kLength), 0.0f);

    auto click = MakeTone();
    click[kEvent] += 1.0f;
    const auto atClick = CurveOf({click});
    EXPECT_EQ(Largest(atClick, kSettled, kEvent - 130), 0.0f);
    EXPECT_EQ(Largest(atClick, kEvent + 130, kLength), 0.0f);
    for (std::size_t i = kEvent - 40; i <= kEvent + 40; ++i) { // a millisecond to both sides
        ASSERT_GT(atClick[i], 0.6f) << i;
    }

    const auto atBurst = CurveOf({MakeBurst()});
    EXPECT_LT(Largest(atBurst, kSettled, kEvent - 288), 0.25f); // the level is smoothed over that much
    for (std::size_t i = kEvent - 40; i <= kEvent + 140; ++i) {
        ASSERT_GT(atBurst[i], 0.95f) << i; // both signs
    }
    EXPECT_LT(Largest(atBurst, kEvent + 5000, kLength), 0.25f);
}

TEST(TransientCurveTest, SkippedChannelsDoNotCountAndNumbersThatAreNoneDoNotStay)
{
    EXPECT_EQ(CurveOf({MakeTone(), MakeBurst()}, 2), CurveOf({MakeTone()}));
    auto burst = MakeBurst();
    const auto clean = CurveOf({burst});
    burst[8000] = std::numeric_limits<float>::quiet_NaN();
    burst[8001] = std::numeric_limits<float>::infinity();
    const auto healed = CurveOf({burst});
    for (std::size_t i = 0; i < kLength; ++i) {
        ASSERT_TRUE(healed[i] >= 0.0f && healed[i] <= 1.0f) << i;
        if (i > kEvent) {
            ASSERT_NEAR(healed[i], clean[i], 1e-3f) << i;
        }
    }
}

} // namespace

} // namespace tessaro::dynamics
