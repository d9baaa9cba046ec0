#include <brisken/filter/SectionCascade.h>

#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Targets.h"

namespace brisken::filter {
namespace {

class SectionCascadeTest : public tessaro::testing::TargetTest
{
protected:
    double Value() { return mValue(mRandom); }
    unsigned Below(unsigned inEnd) { return static_cast<unsigned>(mRandom() % inEnd); }

    /// Resonances of any radius up to 0.99 with zeros of their own, and a gain near 1
    std::vector<SectionTaps> MakeTaps(unsigned inCount)
    {
        std::vector<SectionTaps> taps(inCount);
        for (auto& section : taps) {
            const double radius = 0.5 + 0.49 * std::abs(Value());
            section = {-2.0 * radius * Value(), radius * radius, 0.5, 0.4 * Value(), 0.3 * Value()};
        }
        return taps;
    }

    template <typename Sample>
    std::vector<Sample> MakeRow(std::size_t inLength)
    {
        std::vector<Sample> row(inLength);
        for (auto& sample : row) {
            sample = static_cast<Sample>(Value());
        }
        return row;
    }

private:
    std::mt19937 mRandom{11};
    std::uniform_real_distribution<double> mValue{-1.0, 1.0};
};
TESSARO_FOR_EACH_TARGET(SectionCascadeTest);

/// One section after the other over the whole row, as the recursion is written
template <typename Sample>
void RunPlain(std::vector<Sample>& ioRow, std::size_t inStride, unsigned inSections,
              const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    for (unsigned section = 0; section < inSections; ++section) {
        const auto& taps = inTaps[section];
        auto& past = ioMemories[section];
        for (std::size_t i = 0; i < ioRow.size(); i += inStride) {
            const double x = ioRow[i];
            const double y =
                taps.b0 * x + taps.b1 * past.x1 + taps.b2 * past.x2 - (taps.a1 * past.y1 + taps.a2 * past.y2);
            past = {x, past.x1, y, past.y1};
            ioRow[i] = static_cast<Sample>(y);
        }
    }
}

double LargestDifference(const std::vector<SectionMemory>& inFirst,
                         const std::vector<SectionMemory>& inSecond)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < inFirst.size(); ++i) {
        const auto &a = inFirst[i], &b = inSecond[i];
        largest = std::max({largest, std::abs(a.x1 - b.x1), std::abs(a.x2 - b.x2), std::abs(a.y1 - b.y1),
                            std::abs(a.y2 - b.y2)});
    }
    return largest;
}

TEST_P(SectionCascadeTest, EqualsThePlainRecursionForAnyRowsSectionsAndSplits)
{
    constexpr std::size_t kLength = 500;
    for (const unsigned rows : {1u, 2u, 3u, 5u}) {
        for (const unsigned sections : {0u, 1u, 2u, 5u, 6u, 7u, 8u, 9u, 18u}) {
            const auto taps = MakeTaps(rows * sections);
            std::vector<SectionMemory> memories(rows * sections), wantedMemories(rows * sections);
            std::vector<std::vector<double>> actual, wanted;
            for (unsigned row = 0; row < rows; ++row) {
                wanted.push_back(MakeRow<double>(kLength));
                actual.push_back(wanted.back());
                actual.back().push_back(77.0);
                RunPlain(wanted[row], 1, sections, taps.data() + row * sections,
                         wantedMemories.data() + row * sections);
            }
            for (std::size_t done = 0, count = 0; done < kLength; done += count) {
                count = std::min<std::size_t>(kLength - done, Below(3) == 0 ? Below(200) : Below(12));
                std::vector<double*> pointers;
                for (auto& row : actual) {
                    pointers.push_back(row.data() + done);
                }
                RunSectionCascade(rows, static_cast<unsigned>(count), pointers.data(), sections, taps.data(),
                                  memories.data());
            }
            for (unsigned row = 0; row < rows; ++row) {
                for (std::size_t i = 0; i < kLength; ++i) {
                    // What fusing changes, some 2^-53 a step, the poles keep for a hundred steps.
                    ASSERT_NEAR(actual[row][i], wanted[row][i], 1e-12 * (1.0 + std::abs(wanted[row][i])))
                        << rows << " rows, " << sections << " sections, sample " << i;
                }
                EXPECT_EQ(actual[row][kLength], 77.0);
            }
            EXPECT_LT(LargestDifference(memories, wantedMemories), 1e-10);
        }
    }
}

TEST_P(SectionCascadeTest, RoundsBetweenSectionsAndLeavesWhatTheStrideSkips)
{
    constexpr std::size_t kLength = 400;
    for (const unsigned stride : {1u, 2u, 5u}) {
        for (const unsigned sections : {1u, 2u, 3u, 13u}) {
            const auto taps = MakeTaps(sections);
            std::vector<SectionMemory> memories(sections), wantedMemories(sections);
            const auto input = MakeRow<float>(kLength * stride);
            auto wanted = input;
            RunPlain(wanted, stride, sections, taps.data(), wantedMemories.data());
            auto actual = input;
            for (std::size_t done = 0, count = 0; done < kLength; done += count) {
                count = std::min<std::size_t>(kLength - done, Below(90));
                RunRoundedSectionCascade(static_cast<unsigned>(count), actual.data() + done * stride, stride,
                                         sections, taps.data(), memories.data());
            }
            for (std::size_t i = 0; i < actual.size(); ++i) {
                // A fused product may tip a rounding between two sections.
                ASSERT_NEAR(actual[i], wanted[i], 1e-5 * (1.0 + std::abs(wanted[i]))) << sections << ":" << i;
            }
            // The last section takes rounded input, but its own recursion goes on in full.
            EXPECT_EQ(memories.back().x1, static_cast<float>(memories.back().x1));
            EXPECT_NE(memories.back().y1, static_cast<float>(memories.back().y1));
        }
    }
}

TEST_P(SectionCascadeTest, SplitsChangeNoBit)
{
    constexpr unsigned kLength = 700;
    const auto taps = MakeTaps(2 * 6);
    const std::vector<std::vector<double>> input{MakeRow<double>(kLength), MakeRow<double>(kLength)};
    std::vector<std::vector<double>> outputs[2] = {input, input};
    for (const bool isSplit : {false, true}) {
        auto& output = outputs[isSplit];
        std::vector<SectionMemory> memories(2 * 6);
        for (unsigned done = 0, count = 0; done < kLength; done += count) {
            count = isSplit ? std::min(kLength - done, 1 + Below(150)) : kLength;
            double* const rows[] = {output[0].data() + done, output[1].data() + done};
            RunSectionCascade(2, count, rows, 6, taps.data(), memories.data());
        }
    }
    EXPECT_EQ(outputs[0], outputs[1]);
}

TEST_P(SectionCascadeTest, KeepsAnInfinityToItsOwnRow)
{
    const auto taps = MakeTaps(2 * 3);
    std::vector<SectionMemory> memories(2 * 3);
    std::vector<std::vector<double>> rows{MakeRow<double>(200), MakeRow<double>(200)};
    rows[0][100] = std::numeric_limits<double>::infinity();
    double* const pointers[] = {rows[0].data(), rows[1].data()};
    RunSectionCascade(2, 200, pointers, 3, taps.data(), memories.data());
    EXPECT_TRUE(std::isfinite(rows[0][99]));
    EXPECT_FALSE(std::isfinite(rows[0][199]));
    EXPECT_TRUE(std::isfinite(rows[1][199]));
}

} // namespace
} // namespace brisken::filter
