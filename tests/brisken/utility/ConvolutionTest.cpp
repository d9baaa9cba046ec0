#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

class ConvolutionTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(ConvolutionTest);

TEST_P(ConvolutionTest, MatchesTheDoubleSumForAnyTwoLengths)
{
    for (const unsigned countA : {1u, 2u, 7u, 8u, 31u, 63u, 64u, 65u, 100u, 127u, 129u, 200u, 517u}) {
        for (const unsigned countB : {1u, 2u, 5u, 16u, 63u, 64u, 65u, 127u, 128u, 129u, 300u}) {
            SCOPED_TRACE(std::to_string(countA) + " by " + std::to_string(countB));
            GuardedRow<double> a(1, RandomRow<double>(countA, 1));
            GuardedRow<double> b(0, RandomRow<double>(countB, 2));
            GuardedRow<double> out(countA + countB - 1, 3);
            std::vector<unsigned char> work(ConvolutionWorkBufferSize(countA, countB));
            Convolve(countA, a.Get(), countB, b.Get(), out.Get(), work.data());
            std::vector<double> expected(countA + countB - 1), magnitude(countA + countB - 1);
            for (unsigned i = 0; i < countA; ++i) {
                for (unsigned k = 0; k < countB; ++k) {
                    expected[i + k] += a[i] * b[k];
                    magnitude[i + k] += std::abs(a[i] * b[k]);
                }
            }
            // Both sums round at every step, but errors of either sign add up slowly.
            for (unsigned i = 0; i < expected.size(); ++i) {
                ASSERT_NEAR(out[i], expected[i], 2 * std::numeric_limits<double>::epsilon() * magnitude[i])
                    << i;
            }
        }
    }
}

TEST_P(ConvolutionTest, AnEmptyRowDoesNothing)
{
    double one = 1, out = 5;
    Convolve(0, nullptr, 1, &one, &out, nullptr);
    Convolve(1, &one, 0, nullptr, &out, nullptr);
    EXPECT_EQ(out, 5);
}

TEST(UpSampleTest, PutsZerosBetweenSamplesAndAnySplitGivesTheSame)
{
    const std::vector<float> source = {1, 2, 3, 4, 5};
    for (unsigned factor = 1; factor < 5; ++factor) {
        for (unsigned phase = 0; phase < factor; ++phase) {
            std::vector<float> expected(5 * factor);
            for (unsigned i = 0; i < 5; ++i) {
                expected[i * factor + phase] = source[i];
            }
            for (unsigned split = 0; split <= 5; ++split) {
                GuardedRow<float> out(5 * factor);
                unsigned carried = phase;
                UpSample(split, source.data(), out.Get(), factor, &carried);
                UpSample(5 - split, source.data() + split, out.Get() + split * factor, factor, &carried);
                EXPECT_EQ(out.Contents(), expected);
            }
        }
    }
}

TEST(UpSampleTest, TakesAnyPhaseAndNoneAndAFactorOfZero)
{
    const double source[] = {1, 2};
    GuardedRow<double> out(6);
    unsigned phase = 8;
    UpSample(2, source, out.Get(), 3, &phase);
    EXPECT_EQ(phase, 2u);
    EXPECT_EQ(out.Contents(), (std::vector<double>{0, 0, 1, 0, 0, 2}));
    UpSample(2, source, out.Get(), 3, nullptr);
    EXPECT_EQ(out.Contents(), (std::vector<double>{1, 0, 0, 2, 0, 0}));
    UpSample(2, source, out.Get(), 0, &phase);
    EXPECT_EQ(phase, 2u);
}

} // namespace
