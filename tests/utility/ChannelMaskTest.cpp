#include <tessaro/utility/ChannelMask.h>

#include <cstddef>

#include <gtest/gtest.h>

namespace tessaro::utils {

namespace {

constexpr unsigned kBits = 0x9A5C3F01u;

TEST(ChannelMaskTest, MaskHoldsTheBitsInOrderAndFalseBehindThem)
{
    std::vector<bool> mask(70, true);
    FillMaskFromBitField(40, kBits, mask);
    ASSERT_EQ(40u, mask.size());
    for (std::size_t i = 0; i < mask.size(); ++i) {
        EXPECT_EQ(i < 32 && (kBits >> i) % 2 == 1, mask[i]) << i;
    }
    FillMaskFromBitField(0, kBits, mask);
    EXPECT_TRUE(mask.empty());
    mask.assign(3, true);
    FillMaskFromBitField(-1, kBits, mask);
    EXPECT_TRUE(mask.empty());
}

TEST(ChannelMaskTest, RoundTripKeepsTheBitsThatHaveEntries)
{
    for (int count = 0; count <= 32; ++count) {
        std::vector<bool> mask;
        FillMaskFromBitField(count, kBits, mask);
        const auto kept = static_cast<unsigned>((std::uint64_t{1} << count) - 1);
        EXPECT_EQ(kBits & kept, GetBitFieldFromMask(mask)) << count;
    }
}

TEST(ChannelMaskTest, EntriesBehindTheFieldShareItsBits)
{
    std::vector<bool> mask(66, false);
    EXPECT_EQ(0u, GetBitFieldFromMask(mask));
    mask[32] = true;
    EXPECT_EQ(1u, GetBitFieldFromMask(mask));
    mask[65] = true;
    mask[31] = true;
    EXPECT_EQ(0x80000003u, GetBitFieldFromMask(mask));
}

} // namespace

} // namespace tessaro::utils
