#include <brisken/filter/FIR.h>

#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "FilterTestSupport.h"
#include "support/Targets.h"

namespace brisken::filter {
namespace {

using brisken::testing::ForEachPiece;
using brisken::testing::Noise;

class FIRTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(FIRTest);

struct Free
{
    void operator()(FIRState_Float* inState) const { FIRFree(inState); }
};
using Filter = std::unique_ptr<FIRState_Float, Free>;

Filter Make(const std::vector<float>& inTaps, const float* inDelayLine = nullptr)
{
    FIRState_Float* state = nullptr;
    FIRInit(&state, inTaps.data(), static_cast<unsigned>(inTaps.size()), inDelayLine);
    return Filter(state);
}

void Apply(const Filter& inFilter, std::vector<float>& ioRow, std::size_t inBegin, std::size_t inCount)
{
    FIR(inFilter.get(), static_cast<unsigned>(inCount), ioRow.data() + inBegin, ioRow.data() + inBegin);
}

std::vector<float> Apply(const Filter& inFilter, std::vector<float> inRow)
{
    Apply(inFilter, inRow, 0, inRow.size());
    return inRow;
}

constexpr std::size_t kTapCounts[] = {0, 1, 2, 3, 7, 15, 16, 17, 33, 63, 64, 71, 200, 2500};

/// Compares with the sum in double, within the bound that the header gives.
template <typename Past>
void ExpectConvolution(const std::vector<float>& inTaps, const std::vector<float>& inInput, Past inPast,
                       const std::vector<float>& inOutput)
{
    for (std::size_t n = 0; n < inInput.size(); ++n) {
        double sum = 0.0;
        double magnitude = 0.0;
        for (std::size_t k = 0; k < inTaps.size(); ++k) {
            const double x = k <= n ? inInput[n - k] : inPast(k - n - 1);
            sum += inTaps[k] * x;
            magnitude += std::abs(inTaps[k] * x);
        }
        const auto bound = static_cast<double>(inTaps.size()) * 0x1p-24 * magnitude;
        ASSERT_NEAR(inOutput[n], sum, bound) << "at " << n << " with " << inTaps.size() << " taps";
    }
}

TEST_P(FIRTest, ConvolvesTheStreamAndThePastInput)
{
    for (auto numTaps : kTapCounts) {
        const auto taps = Noise<float>(numTaps, 1);
        const auto past = Noise<float>(numTaps + 1, 2);
        for (std::size_t count : {1, 7, 127, 128, 129, 5000}) {
            const auto input = Noise<float>(count, 3);
            const auto output = Apply(Make(taps, past.data()), input);
            ExpectConvolution(
                taps, input, [&](std::size_t i) { return past[i]; }, output);
        }
    }
}

TEST_P(FIRTest, AnySplitGivesTheSameBitsAndSingleSamplesTheSameStream)
{
    const auto input = Noise<float>(9000, 4);
    for (auto numTaps : kTapCounts) {
        const auto taps = Noise<float>(numTaps, 5);
        const auto whole = Apply(Make(taps), input);
        auto pieces = input;
        const auto filter = Make(taps);
        ForEachPiece(pieces.size(), [&](std::size_t inBegin, std::size_t inCount) {
            Apply(filter, pieces, inBegin, inCount);
        });
        ASSERT_EQ(pieces, whole) << numTaps;

        const auto single = Make(taps);
        const auto bound = static_cast<float>(2 * numTaps * numTaps) * 0x1p-24f;
        for (std::size_t n = 0; n < input.size(); ++n) {
            if (n % 1000 == 500 && n + 100 < input.size()) {
                std::vector<float> row(input.begin() + n, input.begin() + n + 100);
                row = Apply(single, row);
                ASSERT_NEAR(row[99], whole[n + 99], bound);
                n += 99;
            } else {
                ASSERT_NEAR(FIR(single.get(), input[n]), whole[n], bound) << n << " with " << numTaps;
            }
        }
    }
}

TEST_P(FIRTest, OutOfPlaceLeavesTheSourceAndWhatSurroundsTheRow)
{
    const auto taps = Noise<float>(40, 6);
    const auto input = Noise<float>(300, 7);
    for (std::size_t count : {0, 1, 17, 128, 250}) {
        auto source = input;
        std::vector<float> dest(302, 9.0f);
        FIR(Make(taps).get(), static_cast<unsigned>(count), source.data() + 1, dest.data() + 1);
        EXPECT_EQ(source, input);
        EXPECT_EQ(dest[0], 9.0f);
        EXPECT_TRUE(std::all_of(dest.begin() + 1 + count, dest.end(), [](float v) { return v == 9.0f; }))
            << count;
        const auto whole = Apply(Make(taps), std::vector<float>(input.begin() + 1, input.end()));
        EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + count, dest.begin() + 1));
    }
}

TEST_P(FIRTest, NewTapsKeepThePastAndANullLineClearsIt)
{
    const auto filter = Make({1.0f, 0.0f, 0.0f});
    Apply(filter, {5.0f, 6.0f});
    const std::vector<float> taps{0.0f, 1.0f, 10.0f};
    FIRSetTaps(filter.get(), taps.data());
    EXPECT_EQ(FIR(filter.get(), 0.0f), 56.0f);
    const std::vector<float> line{3.0f, 4.0f};
    FIRSetDlyLine(filter.get(), line.data());
    EXPECT_EQ(FIR(filter.get(), 0.0f), 43.0f);
    FIRSetDlyLine(filter.get(), nullptr);
    EXPECT_EQ(Apply(filter, {0.0f, 0.0f, 1.0f, 0.0f}), (std::vector<float>{0.0f, 0.0f, 0.0f, 1.0f}));
}

TEST_P(FIRTest, WhatIsNotFiniteIsGoneAfterTheLastTap)
{
    for (std::size_t numTaps : {5, 16, 71}) {
        auto input = Noise<float>(600, 8);
        input[100] = std::numeric_limits<float>::quiet_NaN();
        input[101] = std::numeric_limits<float>::infinity();
        const auto output = Apply(Make(Noise<float>(numTaps, 9)), input);
        for (std::size_t n = 0; n < output.size(); ++n) {
            ASSERT_EQ(std::isfinite(output[n]), n < 100 || n > 100 + numTaps) << n << " with " << numTaps;
        }
    }
}

} // namespace
} // namespace brisken::filter
