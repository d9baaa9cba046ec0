#include <algorithm>

#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

class CopyTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(CopyTest);

template <class T>
void CheckFlip(unsigned inCount, unsigned inMisalignment)
{
    const auto contents = RandomRow<T>(inCount, 3);
    const std::vector<T> expected(contents.rbegin(), contents.rend());
    GuardedRow<T> source(inMisalignment, contents);
    GuardedRow<T> result(inCount, inMisalignment / 2);
    Flip(inCount, source.Get(), result.Get());
    EXPECT_EQ(result.Contents(), expected);
    Flip_InPlace(inCount, source.Get());
    EXPECT_EQ(source.Contents(), expected);
}

TEST_P(CopyTest, FlipReversesTheOrder)
{
    for (const unsigned count : RowLengths()) {
        for (const unsigned misalignment : {0u, 1u, 6u}) {
            CheckFlip<float>(count, misalignment);
            CheckFlip<double>(count, misalignment);
        }
    }
}

TEST_P(CopyTest, SwapBytesReversesTheBytesOfEachWord)
{
    for (const unsigned count : RowLengths()) {
        GuardedRow<unsigned> source(count, 1);
        GuardedRow<unsigned> result(count, 2);
        std::vector<unsigned> expected(count);
        for (unsigned i = 0; i < count; ++i) {
            source[i] = 0x01020384u + 0x01010101u * i;
            const auto* bytes = reinterpret_cast<const unsigned char*>(source.Get() + i);
            expected[i] =
                unsigned(bytes[0]) << 24 | unsigned(bytes[1]) << 16 | unsigned(bytes[2]) << 8 | bytes[3];
        }
        SwapBytes(count, source.Get(), result.Get());
        EXPECT_EQ(result.Contents(), expected);
        SwapBytes(count, source.Get(), source.Get());
        EXPECT_EQ(source.Contents(), expected);
    }
}

TEST_P(CopyTest, SetAndZeroFillWordsAndBytes)
{
    for (const unsigned count : RowLengths()) {
        GuardedRow<unsigned> words(count, 1);
        Set(count, words.Get(), 0xDEADBEEFu);
        EXPECT_EQ(words.Contents(), std::vector<unsigned>(count, 0xDEADBEEFu));
        Zero(count, words.Get());
        EXPECT_EQ(words.Contents(), std::vector<unsigned>(count));
        GuardedRow<unsigned char> bytes(count, 1);
        Zero(count, bytes.Get());
        EXPECT_EQ(bytes.Contents(), std::vector<unsigned char>(count));
        std::fill_n(words.Get(), count, 0x12345678u);
        GuardedRow<unsigned char> copy(4 * count, 3);
        Copy(4 * count, reinterpret_cast<const unsigned char*>(words.Get()), copy.Get());
        EXPECT_TRUE(Equal(4 * count, reinterpret_cast<const unsigned char*>(words.Get()), copy.Get()));
    }
}

TEST(MoveTest, KeepsTheContentsOfOverlappingRows)
{
    for (const int distance : {-70, -5, -1, 1, 3, 70}) {
        auto row = RandomRow<float>(1000, 4);
        const std::vector<float> expected(row.begin() + 100, row.begin() + 900);
        Move(800, row.data() + 100, row.data() + 100 + distance);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), row.begin() + 100 + distance));
    }
}

TEST_P(CopyTest, InterleaveAndDeinterleaveMatchThePlainLoopForAnyChannelCount)
{
    for (const unsigned channels : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 11u, 16u}) {
        for (const unsigned count : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 33u, 66u, 130u}) {
            SCOPED_TRACE(std::to_string(channels) + " channels of " + std::to_string(count));
            std::vector<std::unique_ptr<GuardedRow<float>>> rows, back;
            std::vector<const float*> sources;
            std::vector<float*> destinations;
            std::vector<float> expected(channels * count);
            for (unsigned c = 0; c < channels; ++c) {
                const auto contents = RandomRow<float>(count, c);
                rows.push_back(std::make_unique<GuardedRow<float>>(c % 3, contents));
                back.push_back(std::make_unique<GuardedRow<float>>(count, c % 5));
                sources.push_back(rows.back()->Get());
                destinations.push_back(back.back()->Get());
                for (unsigned i = 0; i < count; ++i) {
                    expected[i * channels + c] = contents[i];
                }
            }
            GuardedRow<float> frames(channels * count, 1);
            Interleave(count, channels, sources.data(), frames.Get());
            EXPECT_EQ(frames.Contents(), expected);
            Deinterleave(count, channels, frames.Get(), destinations.data());
            for (unsigned c = 0; c < channels; ++c) {
                EXPECT_EQ(back[c]->Contents(), rows[c]->Contents());
            }
        }
    }
}

template <class From, class To>
void CheckConvert(unsigned inCount, unsigned inMisalignment, const std::vector<From>& inContents,
                  double inFactor, void (*inConvert)(unsigned, const From*, To*))
{
    SCOPED_TRACE("length " + std::to_string(inCount) + ", misalignment " + std::to_string(inMisalignment));
    GuardedRow<From> source(inMisalignment, inContents);
    GuardedRow<To> result(inCount, inMisalignment / 2);
    inConvert(inCount, source.Get(), result.Get());
    // The destination begins where the source begins, in a block that holds either.
    GuardedRow<double> block(inCount, inMisalignment);
    std::memcpy(block.Get(), source.Get(), inCount * sizeof(From));
    inConvert(inCount, reinterpret_cast<const From*>(block.Get()), reinterpret_cast<To*>(block.Get()));
    for (unsigned i = 0; i < inCount; ++i) {
        const To expected = static_cast<To>(inContents[i] * inFactor);
        To inPlace;
        std::memcpy(&inPlace, reinterpret_cast<const char*>(block.Get()) + i * sizeof(To), sizeof(To));
        ASSERT_TRUE(IsSame(result[i], expected)) << result[i] << " is not " << expected << " at " << i;
        ASSERT_TRUE(IsSame(inPlace, expected)) << inPlace << " is not " << expected << " in place at " << i;
    }
}

TEST_P(CopyTest, ConvertRoundsToNearestAndScalesExactly)
{
    for (const unsigned count : RowLengths()) {
        std::vector<short> shorts(count);
        for (unsigned i = 0; i < count; ++i) {
            shorts[i] = static_cast<short>(i % 5 == 0 ? -32768 : 7919 * i);
        }
        for (const unsigned misalignment : {0u, 1u, 6u}) {
            CheckConvert<double, float>(count, misalignment, RandomRowWithSpecials<double>(count, 1), 1,
                                        Convert);
            CheckConvert<float, double>(count, misalignment, RandomRowWithSpecials<float>(count, 1), 1,
                                        Convert);
            CheckConvert<short, float>(count, misalignment, shorts, 0x1p-15,
                                       [](auto n, auto from, auto to) { Convert(n, from, to, 15); });
            CheckConvert<short, float>(count, misalignment, shorts, 0x1p3,
                                       [](auto n, auto from, auto to) { Convert(n, from, to, -3); });
        }
    }
}

TEST_P(CopyTest, ConvertTakesAnyScaleAndRoundsOnce)
{
    const std::vector<short> samples = {0, 1, -1, 3, 12345, -12345, 32767, -32768};
    for (const int scale : {std::numeric_limits<int>::min(), -253, -128, -127, -113, 113, 126, 127, 137, 149,
                            150, 160, 165, 253, std::numeric_limits<int>::max()}) {
        GuardedRow<float> result(8, 1);
        Convert(8, samples.data(), result.Get(), scale);
        for (unsigned i = 0; i < 8; ++i) {
            const auto exponent = -std::clamp(scale, -1000, 1000);
            const auto expected = static_cast<float>(std::ldexp(double(samples[i]), exponent));
            ASSERT_TRUE(IsSame(result[i], expected)) << samples[i] << " by a scale of " << scale;
        }
    }
}

TEST(MemoryTest, BlocksAreAlignedAndHoldWhatWasAskedFor)
{
    for (const unsigned count : {0u, 1u, 1000u}) {
        auto* bytes = Malloc_Byte(count);
        auto* floats = Malloc_Float(count);
        auto* doubles = Malloc_Double(count);
        for (const void* block :
             {static_cast<void*>(bytes), static_cast<void*>(floats), static_cast<void*>(doubles)}) {
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
        }
        std::fill_n(bytes, count, static_cast<unsigned char>(1));
        std::fill_n(floats, count, 1.0f);
        std::fill_n(doubles, count, 1.0);
        Free(bytes);
        Free(floats);
        Free(doubles);
    }
    Free(static_cast<unsigned char*>(nullptr));
    Free(static_cast<float*>(nullptr));
    Free(static_cast<double*>(nullptr));
}

} // namespace
