#include <tessaro/utility/FFTPool.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

/// A cosine on bin 1 must come out there, and come back.
void ExpectTransforms(FFTPool& ioPool, unsigned inOrder)
{
    const std::size_t length = std::size_t{1} << inOrder;
    std::vector<float> samples(length);
    for (std::size_t i = 0; i < length; ++i) {
        samples[i] = static_cast<float>(
            std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(length)));
    }
    std::vector<float> spectrum(length + 2);
    std::vector<float> back(length);
    auto* state = ioPool.GetFFT(inOrder);
    ASSERT_NE(nullptr, state);
    brisken::transform::FFTFwd(samples.data(), spectrum.data(), state, ioPool.GetFFTBuffer());
    brisken::transform::FFTInv(spectrum.data(), back.data(), state, ioPool.GetFFTBuffer());
    const auto half = static_cast<float>(length) / 2.0f;
    EXPECT_NEAR(half, spectrum[2], 1e-5f * half) << inOrder;
    EXPECT_NEAR(0.0f, spectrum[4], 1e-5f * half) << inOrder;
    for (std::size_t i = 0; i < length; ++i) {
        ASSERT_NEAR(samples[i], back[i], 1e-5f) << inOrder << " at " << i;
    }
}

TEST(FFTPoolTest, TransformsOfAllOrdersShareOneBuffer)
{
    FFTPool pool("test");
    EXPECT_EQ("test", pool.GetName());
    EXPECT_EQ(nullptr, pool.GetFFTBuffer());
    for (const unsigned order : {5u, 14u, 2u, 11u, 16u}) {
        ExpectTransforms(pool, order);
        ASSERT_NE(nullptr, pool.GetFFTBuffer());
    }
    const auto* buffer = pool.GetFFTBuffer();
    for (const unsigned order : {3u, 5u, 14u, 15u}) {
        ExpectTransforms(pool, order);
        EXPECT_EQ(buffer, pool.GetFFTBuffer()) << "only a larger transform moves the buffer";
    }
}

TEST(FFTPoolTest, KnownOrderIsALookUp)
{
    FFTPool pool("test");
    pool.AddOrder(10);
    const auto* state = pool.GetFFT(10);
    testing::AllocationGuard guard;
    EXPECT_EQ(state, pool.GetFFT(10));
    pool.AddOrder(10);
    EXPECT_EQ(state, pool.GetFFT(10));
}

TEST(FFTPoolTest, OrdersThatCannotBeLeaveThePoolAsItWas)
{
    FFTPool pool("test");
    for (const unsigned order : {32u, 33u, 64u, 0xFFFFFFFFu}) {
        pool.AddOrder(order);
        EXPECT_EQ(nullptr, pool.GetFFT(order));
    }
    EXPECT_EQ(nullptr, pool.GetFFTBuffer());
    for (unsigned order = brisken::transform::kMaxFFTOrder + 1; order < 32; ++order) {
        EXPECT_THROW(pool.AddOrder(order), std::length_error);
        EXPECT_THROW((void)pool.GetFFT(order), std::length_error);
    }
    EXPECT_EQ(nullptr, pool.GetFFTBuffer());
    ExpectTransforms(pool, 9);
}

TEST(FFTPoolTest, CopySharesWhatItWasGivenAndOwnsWhatItMakes)
{
    FFTPool source("source");
    ExpectTransforms(source, 8);
    {
        FFTPool copy(source);
        EXPECT_EQ("source", copy.GetName());
        EXPECT_EQ(source.GetFFT(8), copy.GetFFT(8));
        EXPECT_EQ(source.GetFFTBuffer(), copy.GetFFTBuffer());
        ExpectTransforms(copy, 12);
        EXPECT_NE(source.GetFFTBuffer(), copy.GetFFTBuffer());
        const FFTPool copyOfCopy(copy);
        EXPECT_EQ(copy.GetFFTBuffer(), copyOfCopy.GetFFTBuffer());
    }
    ExpectTransforms(source, 8); // its state has outlived the copies
    ExpectTransforms(source, 12);
}

TEST(FFTPoolTest, AssignmentFreesOnlyWhatIsNotKept)
{
    FFTPool source("source");
    source.AddOrder(8);
    FFTPool other("other");
    other.AddOrder(8);
    other.AddOrder(9);
    other = source;
    EXPECT_EQ("source", other.GetName());
    EXPECT_EQ(source.GetFFT(8), other.GetFFT(8));
    EXPECT_EQ(source.GetFFTBuffer(), other.GetFFTBuffer());
    ExpectTransforms(other, 9); // made anew

    other = FFTPool(source);
    source = std::as_const(source);
    source = FFTPool(source); // a pool and its own copy: the states live on
    ExpectTransforms(source, 8);
    ExpectTransforms(source, 9);
}

} // namespace

} // namespace tessaro
