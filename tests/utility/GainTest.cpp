#include <tessaro/utility/Gain.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

template <typename T>
class GainTest : public ::testing::Test
{
protected:
    static constexpr std::size_t kRow = 5000;

    GainTest()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<T> samples(-1, 1);
        for (auto* rows : {&mSource, &mDest}) {
            rows->assign(2, std::vector<T>(kRow));
            for (auto& row : *rows) {
                std::generate(row.begin(), row.end(), [&] { return samples(random); });
            }
        }
    }

    /// The plain form: repeated addition, begun anew in each channel.
    static std::vector<std::vector<T>> Ramp(std::vector<std::vector<T>> inRows, std::int64_t inOffset,
                                            std::int64_t inCount, T inStart, T inEnd)
    {
        const T step = (inEnd - inStart) / static_cast<T>(inCount);
        for (auto& row : inRows) {
            T gain = inStart;
            for (auto i = inOffset; i < inOffset + inCount; ++i, gain += step) {
                row[static_cast<std::size_t>(i)] *= gain;
            }
        }
        return inRows;
    }

    T* const* Rows(std::vector<std::vector<T>>& ioRows)
    {
        mTable = {ioRows[0].data(), ioRows[1].data()};
        return mTable.data();
    }

    std::vector<std::vector<T>> mSource, mDest;
    std::vector<T*> mTable;
};

using Types = ::testing::Types<float, double>;
TYPED_TEST_SUITE(GainTest, Types);

TYPED_TEST(GainTest, ConstantGainTouchesItsRangeOnly)
{
    auto& rows = this->mSource;
    const auto before = rows;
    auto* const* table = this->Rows(rows);
    ApplyGain(table, 2, 10, 0, TypeParam(0));
    ApplyGain(table, 2, 10, -5, TypeParam(0));
    ApplyGain(table, 2, 10, 5, TypeParam(1));
    EXPECT_EQ(rows, before);
    rows[1][12] = std::numeric_limits<TypeParam>::quiet_NaN();
    ApplyGain(table, 2, 10, 5, TypeParam(0));
    EXPECT_EQ(std::count(rows[1].begin(), rows[1].end(), TypeParam(0)), 5);
    EXPECT_EQ(rows[1][9], before[1][9]);
    EXPECT_EQ(rows[1][15], before[1][15]);
    ApplyGain(table, 1, 20, 1, TypeParam(0.5));
    EXPECT_EQ(rows[0][20], before[0][20] / 2);
    EXPECT_EQ(rows[1][20], before[1][20]);
}

TYPED_TEST(GainTest, RampEqualsRepeatedAdditionToTheBit)
{
    for (const std::int64_t count : {1, 2, 7, 1023, 1024, 1025, 4000}) {
        auto inPlace = this->mSource;
        const auto expected = this->Ramp(this->mSource, 11, count, TypeParam(0.9), TypeParam(0.1));
        auto* const* table = this->Rows(inPlace);
        {
            testing::AllocationGuard guard;
            ApplyGainWithRamping(table, 2, 11, count, TypeParam(0.9), TypeParam(0.1));
        }
        EXPECT_EQ(inPlace, expected) << count;
        EXPECT_EQ(inPlace[0][11], this->mSource[0][11] * TypeParam(0.9));

        inPlace = this->mSource;
        ApplyGainWithRamping(this->Rows(inPlace), 2, count, TypeParam(0), TypeParam(1));
        EXPECT_EQ(inPlace, this->Ramp(this->mSource, 0, count, TypeParam(0), TypeParam(1))) << count;
    }
}

TYPED_TEST(GainTest, RampFromSourceToDestinationLeavesTheRestOfTheDestination)
{
    const std::vector<const TypeParam*> source{this->mSource[0].data(), this->mSource[1].data()};
    for (const auto& [start, end] : {std::pair(0.25, 2.0), std::pair(1.0, 1.0), std::pair(0.5, 0.5)}) {
        auto dest = this->mDest;
        const auto expected = this->Ramp(this->mSource, 3, 2000, TypeParam(start), TypeParam(end));
        ApplyGainWithRamping(source.data(), this->Rows(dest), 2, 3, 2000, TypeParam(start), TypeParam(end));
        EXPECT_EQ(dest[1][2], this->mDest[1][2]);
        EXPECT_EQ(dest[1][2003], this->mDest[1][2003]);
        EXPECT_TRUE(std::equal(dest[1].begin() + 3, dest[1].begin() + 2003, expected[1].begin() + 3));
        ApplyGainWithRamping(source.data(), this->Rows(dest), 2, 50, TypeParam(start), TypeParam(end));
        EXPECT_EQ(dest[0][0], this->mSource[0][0] * TypeParam(start));
    }
    ApplyGainWithRamping<TypeParam>(static_cast<TypeParam* const*>(nullptr), 0, 9, 0, 1);
}

} // namespace

} // namespace tessaro
