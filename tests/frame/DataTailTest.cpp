#include <tessaro/frame/DataTail.h>
#include <tessaro/frame/DataTail1D.h>

#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <support/AllocationGuard.h>

namespace tessaro {
namespace {

using Row = std::vector<float>;

/// Two rows that count up, the second one 1000 higher
struct Ramp
{
    explicit Ramp(unsigned inLength, float inFirst = 1.0f) : mRows(2, Row(inLength))
    {
        std::iota(mRows[0].begin(), mRows[0].end(), inFirst);
        std::iota(mRows[1].begin(), mRows[1].end(), inFirst + 1000.0f);
        mPointers = {mRows[0].data(), mRows[1].data()};
    }
    operator const float* const*() const { return mPointers.data(); }

    std::vector<Row> mRows;
    std::vector<const float*> mPointers;
};

/// The valid samples of a channel; the second channel has to be the first plus 1000 where that is not 0.
Row Valid(const DataTail& inTail)
{
    const float* const* rows = inTail.GetPointer();
    for (unsigned i = 0; i < inTail.GetTotal(); ++i) {
        EXPECT_EQ(rows[1][i], rows[0][i] == 0.0f ? 0.0f : rows[0][i] + 1000.0f);
    }
    return Row(rows[0], rows[0] + inTail.GetTotal());
}

TEST(DataTailTest, KeepsTheEndOfEachBlockInFrontOfTheNext)
{
    DataTail tail;
    tail.SetTailMode(2, 48000, 8, 3, true);
    EXPECT_EQ(tail.GetTotalSize(), 11u);
    EXPECT_EQ(Valid(tail), Row(3, 0.0f));
    const Ramp source(20);
    const testing::AllocationGuard guard;
    tail.Append(source, 5, 0);
    EXPECT_EQ(tail.GetTotal(), 8u);
    tail.Shift(5);
    EXPECT_EQ(tail.GetTotal(), 3u);
    EXPECT_EQ(tail.GetPointer()[1][0], 1003.0f);
    tail.Append(source, 0, 0);
    tail.Append(source, 1, 5);
    tail.Shift(0);
    tail.Shift(1);
    EXPECT_EQ(tail.GetPointer()[0][0], 4.0f);
    EXPECT_EQ(tail.GetPointer()[0][2], 6.0f);
    EXPECT_EQ(tail.MakeOffsetPointer(2)[1][0], 1006.0f);
}

TEST(DataTailTest, ShiftNeverKeepsMoreThanThereIs)
{
    DataTail tail;
    tail.SetTailMode(2, 48000, 8, 4, true);
    tail.ResetTotal();
    tail.Append(Ramp(8), 8, 0);
    tail.Shift(6); // two are left, less than the tail
    EXPECT_EQ(Valid(tail), (Row{7, 8}));
    tail.Shift(100);
    EXPECT_EQ(tail.GetTotal(), 0u);
    tail.Reset();
    EXPECT_EQ(Valid(tail), Row(4, 0.0f));
    tail.SetTotal(50); // beyond the row: nothing outside it is read
    tail.Shift(10);
    EXPECT_EQ(tail.GetTotal(), 2u);
}

TEST(DataTailTest, ShiftAllKeepsEverythingElse)
{
    DataTail tail(2, 8);
    tail.Append(Ramp(8), 6, 0);
    tail.ShiftAll(0);
    tail.ShiftAll(2);
    EXPECT_EQ(Valid(tail), (Row{3, 4, 5, 6}));
    tail.ShiftAll(9);
    EXPECT_EQ(tail.GetTotal(), 0u);
    tail.ShiftAll(1);
    EXPECT_EQ(tail.GetTotal(), 0u);
}

TEST(DataTailTest, ModeWithoutClearingKeepsContentsAndTotal)
{
    DataTail tail(2, 4);
    tail.Append(Ramp(4), 4, 0);
    tail.SetTailMode(2, 44100, 6, 2, false);
    EXPECT_EQ(Valid(tail), (Row{1, 2, 3, 4}));
    EXPECT_EQ(tail.GetPointer()[0][7], 0.0f);
    EXPECT_EQ(tail.GetSamplingRate(), 44100);
    tail.SetTailMode(2, 44100, 0, 0, true);
    EXPECT_EQ(tail.GetPointer()[0], nullptr);
    tail.SetTailMode(0, 0, 4, 0, true); // rows once made are kept
    tail.ReserveMemory(2, 64);
    tail.SetMode(2, 48000, 16);
    const float* const row = tail.GetPointer()[1];
    {
        const testing::AllocationGuard guard;
        tail.SetTailMode(2, 48000, 32, 32, true);
    }
    EXPECT_EQ(tail.GetPointer()[1], row);
    tail.ResetToVal(7.0f);
    EXPECT_EQ(tail.GetTotal(), 32u);
    EXPECT_EQ(row[63], 7.0f);
}

TEST(DataTailTest, ReservedRowsHaveAtLeastOneSample)
{
    DataTail tail;
    tail.ReserveMemory(3, 0);
    ASSERT_NE(tail.GetPointer()[2], nullptr);
    EXPECT_EQ(tail.GetNumChannels(), 0);
    EXPECT_EQ(tail.GetPointer()[2][0], 0.0f);
}

TEST(DataTailTest, BlockSizeChangesUnderAKeptTail)
{
    DataTail tail;
    tail.SetTailMode(2, 48000, 4, 3, true);
    tail.ResetTotal();
    tail.Append(Ramp(7), 7, 0);
    tail.ChangeBufferSize(9);
    EXPECT_EQ(Valid(tail), (Row{1, 2, 3}));
    EXPECT_EQ(tail.GetMaxBlockSize(), 9u);
    EXPECT_EQ(tail.GetPointer()[0][3], 0.0f);
    tail.ChangeBufferSize(-2);
    EXPECT_EQ(tail.GetTotalSize(), 3u);
    EXPECT_EQ(Valid(tail), (Row{1, 2, 3}));
    tail.ChangeBufferSize(-3); // no room for a sample at all
    EXPECT_EQ(tail.GetMaxBlockSize(), 1u);
    EXPECT_EQ(Valid(tail), (Row{1, 2, 3}));

    DataTail none(2, 4);
    none.Append(Ramp(4), 4, 0);
    none.ChangeBufferSize(0);
    EXPECT_EQ(none.GetMaxBlockSize(), 1u);
    EXPECT_EQ(none.GetTotal(), 0u);
    EXPECT_EQ(none.GetPointer()[0][0], 0.0f);
}

TEST(DataTailTest, TailChangesKeepTheMostRecentData)
{
    DataTail tail;
    tail.SetTailMode(2, 48000, 4, 3, true);
    tail.ResetTotal();
    tail.Append(Ramp(5), 5, 0);
    tail.ChangeTailSize(5);
    EXPECT_EQ(Valid(tail), (Row{0, 0, 1, 2, 3, 4, 5}));
    tail.ChangeTailSize(2);
    EXPECT_EQ(Valid(tail), (Row{2, 3, 4, 5})); // 2 of tail, and 2 behind it
    tail.ChangeTailSize(2);
    EXPECT_EQ(Valid(tail), (Row{2, 3, 4, 5}));
    tail.SetTotal(1);
    tail.ChangeTailSize(0); // falls further than there is data
    EXPECT_EQ(tail.GetTotal(), 0u);
}

TEST(DataTailTest, TotalsAreTheSameWithoutChannels)
{
    DataTail tail;
    tail.SetTailMode(0, 48000, 4, 3, true);
    tail.ChangeBufferSize(9);
    EXPECT_EQ(tail.GetTotal(), 3u);
    tail.AddTotal(2);
    tail.ChangeTailSize(6);
    EXPECT_EQ(tail.GetTotal(), 8u);
    tail.ChangeTailSize(1);
    EXPECT_EQ(tail.GetTotal(), 3u);
}

TEST(DataTailTest, RingWrapsLikeAPlainRing)
{
    constexpr unsigned kRing = 11;
    DataTail tail;
    tail.SetTailMode(2, 48000, 8, 3, true);
    tail.ResetTotal();
    Row model(kRing, 0.0f);
    unsigned write = 0;
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round) {
        const auto count = static_cast<unsigned>(random() % 16);
        const Ramp source(20, static_cast<float>(round));
        tail.AppendCircular(source, count, 2);
        for (unsigned i = 0; i < count; ++i) {
            model[(write + i) % kRing] = source.mRows[0][2 + i];
        }
        if (count <= kRing) { // of more, only the end is written, from the same place
            write = (write + count) % kRing;
        } else {
            for (unsigned i = 0; i < kRing; ++i) {
                model[(write + i) % kRing] = source.mRows[0][2 + count - kRing + i];
            }
        }
        EXPECT_EQ(tail.GetTotal() % kRing, write);

        const int position = static_cast<int>(random() % 100) - 50;
        const auto length = static_cast<unsigned>(random() % (kRing + 1));
        Row out(2 * (kRing + 1), -1.0f);
        float* const rows[] = {out.data(), out.data() + kRing + 1};
        tail.ExtractCircular(rows, length, position, 1);
        for (unsigned i = 0; i < length; ++i) {
            const float wanted = model[static_cast<unsigned>((position + 110 + static_cast<int>(i)) % 11)];
            ASSERT_EQ(rows[0][1 + i], wanted);
        }
        EXPECT_EQ(out[0], -1.0f);
    }
    float one = -1.0f;
    float untouched = -1.0f;
    float* const rows[] = {&untouched, &one};
    tail.ExtractCircular(rows, 1, -1, 0, 1);
    EXPECT_EQ(one, tail.GetPointer()[1][kRing - 1]);
    EXPECT_EQ(untouched, -1.0f);
}

TEST(DataTailTest, CopiesHaveStorageOfTheirOwn)
{
    DataTail tail;
    tail.SetTailMode(2, 48000, 4, 2, true);
    tail.Append(Ramp(4), 3, 0);
    DataTail copy(tail);
    DataTail assigned(5, 100);
    assigned = tail;
    tail.Reset();
    EXPECT_EQ(Valid(copy), (Row{0, 0, 1, 2, 3}));
    EXPECT_EQ(Valid(assigned), (Row{0, 0, 1, 2, 3}));
    EXPECT_EQ(assigned.GetNumChannels(), 2);
    EXPECT_EQ(assigned.GetTotalSize(), 6u);
    EXPECT_EQ(assigned.GetSamplingRate(), 48000);
    assigned = *&assigned;
    EXPECT_EQ(assigned.GetTotal(), 5u);
}

TEST(DataTail1DTest, IsOneRowOfTheSame)
{
    DataTail1D tail;
    EXPECT_EQ(static_cast<float*>(tail), nullptr);
    tail.SetTailMode(4, 2, true);
    const Row source{1, 2, 3, 4, 5};
    tail.Append(source.data(), 4, 1);
    tail.Append(source.data(), -1, 0);
    EXPECT_EQ(tail.GetTotal(), 6u);
    tail.Shift(4);
    const float* row = tail;
    EXPECT_EQ(row[0], 4.0f);
    EXPECT_EQ(row[1], 5.0f);
    tail.ChangeTailSize(3);
    EXPECT_EQ(static_cast<float*>(tail)[0], 0.0f);
    EXPECT_EQ(tail.MakeOffsetPointer(2)[0], 5.0f);
    tail.AppendCircular(source.data(), 5, 0);
    float last = 0.0f;
    tail.ExtractCircular(&last, 1, 7, 0);
    EXPECT_EQ(last, 5.0f);
    tail.ChangeBufferSize(0);
    EXPECT_EQ(tail.GetTotalSize(), 3u);
}

} // namespace
} // namespace tessaro
