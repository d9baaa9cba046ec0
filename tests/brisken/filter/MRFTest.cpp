#include <brisken/filter/MRF.h>

#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include "FilterTestSupport.h"
#include "support/Targets.h"

namespace brisken::filter {
namespace {

using brisken::testing::ForEachPiece;
using brisken::testing::Noise;

struct Ratio
{
    unsigned mUp;
    unsigned mDown;
    unsigned mNumTaps;
    unsigned mUpPhase;
    unsigned mDownPhase;
};

constexpr Ratio kRatios[] = {{1, 1, 31, 0, 0},          {9, 1, 144, 0, 0},     {4, 1, 143, 3, 0},
                             {2, 1, 5, 1, 0},           {17, 1, 40, 16, 0},    {1, 4, 144, 0, 0},
                             {1, 2, 33, 0, 1},          {1, 4, 3, 0, 2},       {1, 8, 100, 0, 7},
                             {1, 3, 1, 0, 1},           {2, 3, 50, 1, 2},      {3, 2, 50, 2, 0},
                             {7, 5, 4, 3, 4},           {5, 7, 0, 0, 0},       {160, 147, 1600, 0, 0},
                             {147, 160, 700, 146, 159}, {3000, 1, 6000, 0, 0}, {8, 1, 600, 5, 0}};

class MRFTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(MRFTest);

struct Free
{
    void operator()(MRFState_Float* inState) const { MRFFree(inState); }
};
using Filter = std::unique_ptr<MRFState_Float, Free>;

std::vector<float> Taps(const Ratio& inRatio)
{
    return Noise<float>(inRatio.mNumTaps, 1);
}

std::vector<float> Past(const Ratio& inRatio)
{
    return Noise<float>((inRatio.mNumTaps + inRatio.mUp - 1) / inRatio.mUp, 2);
}

Filter Make(const Ratio& inRatio)
{
    MRFState_Float* state = nullptr;
    MRFInit(&state, inRatio.mUp, inRatio.mDown, Taps(inRatio).data(), inRatio.mNumTaps, Past(inRatio),
            inRatio.mUpPhase, inRatio.mDownPhase);
    return Filter(state);
}

std::size_t Iterations(const Ratio& inRatio)
{
    return 3000 / std::max(inRatio.mUp, inRatio.mDown) + 7;
}

std::vector<float> Input(const Ratio& inRatio)
{
    return Noise<float>(Iterations(inRatio) * inRatio.mDown, 3);
}

std::vector<float> Apply(const Filter& inFilter, const Ratio& inRatio, const std::vector<float>& inInput)
{
    std::vector<float> output(inInput.size() / inRatio.mDown * inRatio.mUp);
    MRFProcess(inInput.data(), output.data(), static_cast<unsigned>(inInput.size() / inRatio.mDown),
               inFilter.get());
    return output;
}

TEST_P(MRFTest, FiltersTheRowOfInsertedZerosAndKeepsEveryOtherValue)
{
    for (const auto& ratio : kRatios) {
        const auto taps = Taps(ratio);
        const auto past = Past(ratio);
        const auto input = Input(ratio);
        const auto output = Apply(Make(ratio), ratio, input);
        for (std::size_t j = 0; j < output.size(); ++j) {
            double sum = 0.0;
            double magnitude = 0.0;
            for (std::size_t k = 0; k < taps.size(); ++k) {
                const auto place = static_cast<std::ptrdiff_t>(j * ratio.mDown + ratio.mDownPhase) -
                                   static_cast<std::ptrdiff_t>(k + ratio.mUpPhase);
                const auto up = static_cast<std::ptrdiff_t>(ratio.mUp);
                if (place % up == 0) {
                    const auto i = place / up;
                    const double x = i >= 0 ? input[i] : past[-i - 1];
                    sum += taps[k] * x;
                    magnitude += std::abs(taps[k] * x);
                }
            }
            const auto products = taps.size() / ratio.mUp + 1;
            ASSERT_NEAR(output[j], sum, static_cast<double>(products) * 0x1p-24 * magnitude)
                << "output " << j << " of " << ratio.mUp << ":" << ratio.mDown;
        }
    }
}

TEST_P(MRFTest, AnySplitGivesTheSameBitsAndInPlaceToo)
{
    for (const auto& ratio : kRatios) {
        const auto input = Input(ratio);
        const auto whole = Apply(Make(ratio), ratio, input);

        const auto filter = Make(ratio);
        std::vector<float> pieces(whole.size());
        std::vector<float> inPlace(whole.size());
        const auto inPlaceFilter = Make(ratio);
        ForEachPiece(Iterations(ratio), [&](std::size_t inBegin, std::size_t inCount) {
            const auto* source = input.data() + inBegin * ratio.mDown;
            auto* dest = pieces.data() + inBegin * ratio.mUp;
            MRFProcess(source, dest, static_cast<unsigned>(inCount), filter.get());

            std::vector<float> row(inCount * std::max(ratio.mUp, ratio.mDown) + 1, 9.0f);
            std::copy_n(source, inCount * ratio.mDown, row.begin());
            MRFProcess(row.data(), row.data(), static_cast<unsigned>(inCount), inPlaceFilter.get());
            std::copy_n(row.begin(), inCount * ratio.mUp, inPlace.begin() + inBegin * ratio.mUp);
            ASSERT_EQ(row.back(), 9.0f);
        });
        EXPECT_EQ(pieces, whole) << ratio.mUp << ":" << ratio.mDown;
        EXPECT_EQ(inPlace, whole) << ratio.mUp << ":" << ratio.mDown;
    }
}

TEST_P(MRFTest, InPlaceInterpolationOfALongRowRunsFromItsEnd)
{
    const Ratio ratio{4, 1, 143, 0, 0};
    const auto input = Noise<float>(5000, 4);
    const auto whole = Apply(Make(ratio), ratio, input);
    std::vector<float> row(whole.size());
    std::copy(input.begin(), input.end(), row.begin());
    const auto filter = Make(ratio);
    MRFProcess(row.data(), row.data(), 5000, filter.get());
    EXPECT_EQ(row, whole);

    const auto fresh = Make(ratio);
    Apply(fresh, ratio, input);
    EXPECT_EQ(Apply(filter, ratio, input), Apply(fresh, ratio, input));
}

TEST_P(MRFTest, ANewDelayLineMakesAFreshFilter)
{
    for (const auto& ratio : kRatios) {
        const auto filter = Make(ratio);
        const auto input = Input(ratio);
        const auto past = Past(ratio);
        const auto whole = Apply(filter, ratio, input);
        MRFSetDlyLine(filter.get(), past.data(), static_cast<unsigned>(past.size()));
        EXPECT_EQ(Apply(filter, ratio, input), whole);
        MRFSetDlyLine(filter.get(), nullptr, 0);
        const std::vector<float> silence(input.size(), 0.0f);
        EXPECT_EQ(Apply(filter, ratio, silence), std::vector<float>(whole.size(), 0.0f));
    }
}

} // namespace
} // namespace brisken::filter
