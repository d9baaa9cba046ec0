#include <brisken/filter/SectionPair.h>

#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/Targets.h"

namespace brisken::filter {
namespace {

class SectionPairTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(SectionPairTest);

constexpr SectionTaps kTaps[] = {
    {-1.6906592931824103, 0.7324807742158501, 1.5351248595869702, -2.6916961894063807, 1.1983928108528501},
    {-1.9900474548339800, 0.9900722503662099, 1.0, -2.0, 1.0}};

/// The recursion as it is written, one row and one section after the other
std::vector<float> Plain(const std::vector<float>& inRow, const SectionTaps& inTaps, double* ioPast)
{
    std::vector<float> output;
    for (const float x : inRow) {
        const double w = x - inTaps.a1 * ioPast[0] - inTaps.a2 * ioPast[1];
        output.push_back(static_cast<float>(inTaps.b0 * w + inTaps.b1 * ioPast[0] + inTaps.b2 * ioPast[1]));
        ioPast[1] = ioPast[0];
        ioPast[0] = static_cast<float>(w);
    }
    return output;
}

TEST_P(SectionPairTest, EqualsThePlainRecursionForAnyRowsAndSplits)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    for (unsigned rows = 0; rows <= 9; ++rows) {
        std::vector<std::vector<float>> input(rows, std::vector<float>(700));
        std::vector<std::vector<float>> output(rows, std::vector<float>(701, 77.0f));
        for (auto& row : input) {
            for (auto& sample : row) {
                sample = value(random);
            }
        }
        std::vector<SectionPairState> states(rows);
        for (unsigned done = 0, count = 0; done < 700; done += count) {
            count = std::min<unsigned>(700 - done, static_cast<unsigned>(random() % 300));
            std::vector<const float*> in;
            std::vector<float*> out;
            const bool inPlace = random() % 2 == 0;
            for (unsigned row = 0; row < rows; ++row) {
                if (inPlace) {
                    std::copy_n(input[row].begin() + done, count, output[row].begin() + done);
                }
                in.push_back((inPlace ? output : input)[row].data() + done);
                out.push_back(output[row].data() + done);
            }
            RunSectionPair(rows, count, in.data(), out.data(), kTaps, states.data());
        }
        for (unsigned row = 0; row < rows; ++row) {
            SectionPairState plain;
            const auto wanted = Plain(Plain(input[row], kTaps[0], plain.past), kTaps[1], plain.past + 2);
            for (unsigned i = 0; i < 700; ++i) {
                // A fused product may tip a rounding of the state, 2^-24 of it, which the poles near 1 keep.
                ASSERT_NEAR(output[row][i], wanted[i], 2e-4) << rows << ":" << row << ":" << i;
            }
            EXPECT_EQ(output[row][700], 77.0f);
            for (int i = 0; i < 4; ++i) {
                EXPECT_NEAR(states[row].past[i], plain.past[i], 1e-4 * (1.0 + std::fabs(plain.past[i])));
                EXPECT_EQ(states[row].past[i], static_cast<float>(states[row].past[i]));
            }
        }
    }
}

TEST_P(SectionPairTest, SplitsChangeNoBit)
{
    constexpr unsigned kLength = 1000;
    std::mt19937 random(5);
    std::vector<std::vector<float>> input(3, std::vector<float>(kLength));
    for (auto& row : input) {
        for (auto& sample : row) {
            sample = static_cast<float>(random()) * 1e-9f - 2.0f;
        }
    }
    const auto run = [&](unsigned inBlock) {
        std::vector<std::vector<float>> output(3, std::vector<float>(kLength));
        std::vector<SectionPairState> states(3);
        for (unsigned done = 0; done < kLength; done += inBlock) {
            const float* const in[] = {&input[0][done], &input[1][done], &input[2][done]};
            float* const out[] = {&output[0][done], &output[1][done], &output[2][done]};
            RunSectionPair(3, std::min(inBlock, kLength - done), in, out, kTaps, states.data());
        }
        return output;
    };
    const auto whole = run(kLength);
    for (const unsigned block : {1u, 2u, 127u, 128u, 129u, 130u, 257u}) {
        EXPECT_EQ(run(block), whole) << block;
    }
}

} // namespace
} // namespace brisken::filter
