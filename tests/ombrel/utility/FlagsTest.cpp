#include <ombrel/utility/CheckedValue.h>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/ValueRange.h>

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include <ombrel/config/OmbrelException.h>

namespace {

using ombrel::utility::Flags;
using Mask = Flags<std::uint64_t>;

TEST(FlagsTest, ChannelsAboveTheWordHaveNoFlagUnlessTheNumberIsWrapped)
{
    Mask flags = Mask::Bit(0);
    EXPECT_FALSE(flags.GetBit(64));
    EXPECT_TRUE(flags.GetBitModulo(64));
    flags.SetBit(64);
    flags.ClearBit(128);
    EXPECT_EQ(flags, Mask(1));
    flags.SetBit(63);
    flags.SetBit(0, false);
    EXPECT_EQ(flags.GetValue(), 0x8000000000000000u);
    EXPECT_TRUE(flags >> (127 & 63) & 1);
}

TEST(FlagsTest, EdgesOfTheWordAreExact)
{
    static_assert(Mask::Below(0) == 0 && Mask::Below(64) == Mask::All() && Mask::Below(65) == Mask::All());
    static_assert(Mask::Below(63).GetValue() == std::numeric_limits<std::uint64_t>::max() / 2);
    static_assert((Mask::All() << 64) == 0 && (Mask::All() >> 64) == 0);
    static_assert(~Flags<std::uint8_t>(0x0F) == Flags<std::uint8_t>(0xF0));
    static_assert((Flags<std::uint8_t>(0xFF) << 4).GetValue() == 0xF0);
    Mask flags;
    EXPECT_FALSE(flags.IsAnySet());
    EXPECT_TRUE(flags.AreAllSet(0));
    flags |= 6;
    flags ^= 3;
    EXPECT_EQ(flags, 5);
    EXPECT_TRUE(flags.IsAnySet(4));
    EXPECT_FALSE(flags.AreAllSet(7));
    flags.Clear(4);
    flags <<= 3;
    EXPECT_EQ(flags, 8);
    EXPECT_TRUE(flags);
}

TEST(ValueRangeTest, TheEndLiesOutsideAndEmptyRangesHaveNoLength)
{
    constexpr ombrel::value_range<std::int64_t> range(10, 20);
    static_assert(range.Contains(10) && range.Contains(19) && !range.Contains(20) && !range.Contains(9));
    static_assert(range.GetLength() == 10);
    static_assert(range.Intersect({15, 30}) == ombrel::value_range<std::int64_t>(15, 20));
    static_assert(range.Intersect({25, 30}).IsEmpty());
    static_assert(ombrel::value_range<unsigned>(5, 3).GetLength() == 0);
}

TEST(CheckedValueTest, AnInvalidValueCannotBeRead)
{
    ombrel::checked_value<float> quality;
    EXPECT_FALSE(quality.IsValid());
    EXPECT_EQ(quality.GetValueOr(0.5f), 0.5f);
    try {
        static_cast<void>(quality.GetValue());
        FAIL();
    } catch (const ombrel::ombrel_exception& exception) {
        EXPECT_EQ(exception.GetResult(), ombrel::config::kResultInvalidValue);
    }
    quality = 2.0f;
    EXPECT_EQ(quality.GetValue(), 2.0f);
    quality.Invalidate();
    EXPECT_EQ(quality, ombrel::checked_value<float>());
}

} // namespace
