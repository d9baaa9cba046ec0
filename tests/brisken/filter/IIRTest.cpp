#include <brisken/filter/IIR.h>

#include <cmath>
#include <memory>
#include <numbers>

#include <gtest/gtest.h>

#include "FilterTestSupport.h"
#include "support/Targets.h"

namespace brisken::filter {
namespace {

using brisken::testing::ForEachPiece;
using brisken::testing::Noise;
using Row = std::vector<double>;

class IIRTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(IIRTest);

struct Free
{
    void operator()(IIRState_Double* inState) const { IIRFree(inState); }
};
using Filter = std::unique_ptr<IIRState_Double, Free>;

Filter MakeSingle(const Row& inTaps, const double* inDelayLine = nullptr)
{
    IIRState_Double* state = nullptr;
    IIRInit(&state, inTaps.data(), static_cast<unsigned>(inTaps.size() / 2 - 1), inDelayLine);
    return Filter(state);
}

Filter MakeCascade(const Row& inTaps, const double* inDelayLine = nullptr)
{
    IIRState_Double* state = nullptr;
    IIRInit_BiQuad(&state, inTaps.data(), static_cast<unsigned>(inTaps.size() / 6), inDelayLine);
    return Filter(state);
}

Row Apply(const Filter& inFilter, Row inRow)
{
    IIR_InPlace(static_cast<unsigned>(inRow.size()), inRow.data(), inFilter.get());
    return inRow;
}

/// The recursion as written, in the precision of `T`. Past input and output, the most recent first.
template <typename T>
Row Recursion(const Row& inTaps, const Row& inInput, Row inPastInput = {}, Row inPastOutput = {})
{
    const auto order = inTaps.size() / 2 - 1;
    inPastInput.resize(order);
    inPastOutput.resize(order);
    std::vector<T> x(inPastInput.rbegin(), inPastInput.rend());
    std::vector<T> y(inPastOutput.rbegin(), inPastOutput.rend());
    x.insert(x.end(), inInput.begin(), inInput.end());
    for (auto n = order; n < x.size(); ++n) {
        T sum = inTaps[0] * x[n];
        for (std::size_t k = 1; k <= order; ++k) {
            sum += inTaps[k] * x[n - k] - inTaps[order + 1 + k] * y[n - k];
        }
        y.push_back(sum / inTaps[order + 1]);
    }
    return Row(y.begin() + static_cast<std::ptrdiff_t>(order), y.end());
}

double MaxDifference(const Row& inA, const Row& inB)
{
    double most = 0.0;
    for (std::size_t i = 0; i < inA.size(); ++i) {
        most = std::max(most, std::abs(inA[i] - inB[i]));
    }
    return most;
}

/// Resonance at `inAngle` radians a sample with poles at `inRadius`, its zeros at 0 Hz and half the rate.
Row Resonance(double inRadius, double inAngle, double inNormaliser = 1.0)
{
    Row taps{1.0 - inRadius,     0.0, inRadius - 1.0, 1.0, -2.0 * inRadius * std::cos(inAngle),
             inRadius * inRadius};
    for (auto& tap : taps) {
        tap *= inNormaliser;
    }
    return taps;
}

Row Concatenate(std::initializer_list<Row> inRows)
{
    Row joined;
    for (const auto& row : inRows) {
        joined.insert(joined.end(), row.begin(), row.end());
    }
    return joined;
}

TEST_P(IIRTest, ResonancesStayWithinTheirBoundOfExactArithmetic)
{
    constexpr auto pi = std::numbers::pi;
    const auto input = Noise<double>(20000, 1);
    for (double radius : {0.0, 0.5, 0.9, 0.99, 0.999, 0.9999}) {
        for (double angle : {0.0, 0.001, 0.03, 0.5, pi / 4, 1.5, pi / 2, 0.75 * pi, 2.9, pi}) {
            const auto taps = Resonance(radius, angle);
            const auto exact = Recursion<long double>(taps, input);
            EXPECT_LE(MaxDifference(Apply(MakeCascade(taps), input), exact), 0x1p-50 / (1.0 - radius))
                << "radius " << radius << " angle " << angle;
        }
    }
}

TEST_P(IIRTest, AHighPassTakesAConstantOutDownToItsBound)
{
    for (double cutoff : {3e-5, 1e-4, 6.5e-4, 3e-3, 0.05, 0.5}) {
        const auto radius = 1.0 - cutoff / std::numbers::sqrt2;
        auto taps = Resonance(radius, cutoff / std::numbers::sqrt2);
        const auto gain = 0.25 * (1.0 - taps[4] + taps[5]); // unity at half the rate
        taps[0] = taps[2] = gain;
        taps[1] = -2.0 * gain;
        const auto filter = MakeCascade(taps);
        for (double level : {1.0, 0.3, -0.7}) {
            const auto output = Apply(filter, Row(static_cast<std::size_t>(60.0 / cutoff), level));
            EXPECT_LT(std::abs(output.back()), std::abs(level) * 0x1p-52 / ((1.0 - radius) * (1.0 - radius)))
                << cutoff;
        }
    }
}

TEST_P(IIRTest, FiltersOfAnyOrderFollowTheRecursionFromTheirPast)
{
    for (std::size_t order : {0, 1, 2, 3, 4, 7, 20}) {
        auto taps = Noise<double>(2 * order + 2, 2);
        for (std::size_t k = 0; k <= order; ++k) {
            // A normaliser other than 1, and coefficients small enough to be stable.
            taps[order + 1 + k] = k == 0 ? 4.0 : 3.0 * taps[order + 1 + k] / static_cast<double>(order);
        }
        const auto x = Noise<double>(order, 3);
        const auto y = Noise<double>(order, 4);
        const auto line = Concatenate({x, y});
        const auto input = Noise<double>(1500, 5);
        const auto expected = Recursion<long double>(taps, input, x, y);
        EXPECT_LE(MaxDifference(Apply(MakeSingle(taps, line.data()), input), expected), 1e-13) << order;

        const auto filter = MakeSingle(taps);
        Apply(filter, input);
        IIRSetDlyLine(filter.get(), line.data());
        EXPECT_LE(MaxDifference(Apply(filter, input), expected), 1e-13) << order;
        IIRSetDlyLine(filter.get(), nullptr);
        EXPECT_EQ(Apply(filter, input), Apply(MakeSingle(taps), input)) << order;
    }
}

TEST_P(IIRTest, ACascadeIsItsSectionsInTurnFromTheirPast)
{
    const auto input = Noise<double>(2000, 6);
    for (std::size_t sections : {0, 1, 2, 3, 6, 9}) {
        Row taps;
        auto line = Noise<double>(2, 7);
        auto expected = input;
        for (std::size_t i = 0; i < sections; ++i) {
            const auto section =
                Resonance(0.8 + 0.02 * static_cast<double>(i), 0.3 * static_cast<double>(i), 2.0);
            const auto y = Noise<double>(2, static_cast<unsigned>(8 + i));
            expected = Recursion<long double>(section, expected, Row(line.end() - 2, line.end()), y);
            taps.insert(taps.end(), section.begin(), section.end());
            line.insert(line.end(), y.begin(), y.end());
        }
        EXPECT_LE(MaxDifference(Apply(MakeCascade(taps, line.data()), input), expected), 1e-13) << sections;
    }
}

TEST_P(IIRTest, AnySplitGivesTheSameBits)
{
    const auto input = Noise<double>(6000, 9);
    const auto line = Noise<double>(20, 10);
    const auto cascade = Concatenate({Resonance(0.99, 0.1), Resonance(0.9, 2.0), Resonance(0.95, 1.0)});
    const Row single{0.5, 0.2, -0.1, 0.3, 1.0, -0.9, 0.3, 0.1};
    for (const auto isCascade : {true, false}) {
        const auto make = [&] {
            return isCascade ? MakeCascade(cascade, line.data()) : MakeSingle(single, line.data());
        };
        const auto whole = Apply(make(), input);
        auto inPlace = input;
        Row outOfPlace(input.size());
        const auto inPlaceFilter = make();
        const auto outOfPlaceFilter = make();
        ForEachPiece(input.size(), [&](std::size_t inBegin, std::size_t inCount) {
            const auto count = static_cast<unsigned>(inCount);
            IIR_InPlace(count, inPlace.data() + inBegin, inPlaceFilter.get());
            IIR(count, input.data() + inBegin, outOfPlace.data() + inBegin, outOfPlaceFilter.get());
        });
        EXPECT_EQ(inPlace, whole);
        EXPECT_EQ(outOfPlace, whole);
    }
}

TEST_P(IIRTest, NewTapsGoOnFromTheSignalAsItWas)
{
    const auto input = Noise<double>(400, 11);
    const auto first = Resonance(0.95, 0.2);
    const auto second = Resonance(0.7, 2.0, 3.0);
    for (std::size_t change : {1, 2, 3, 50, 200}) {
        const Row head(input.begin(), input.begin() + change);
        const Row tail(input.begin() + change, input.end());
        const auto filter = MakeCascade(first);
        const auto y = Apply(filter, head);
        IIRSetTaps(filter.get(), second.data());
        const Row pastInput(head.rbegin(), head.rend());
        const Row pastOutput(y.rbegin(), y.rend());
        EXPECT_LE(
            MaxDifference(Apply(filter, tail), Recursion<long double>(second, tail, pastInput, pastOutput)),
            1e-14)
            << change;
    }
}

TEST_P(IIRTest, ASeriesIsItsFiltersInTurnWhateverTheyAre)
{
    const Row high{1.0, -2.0, 1.0, 1.0, -1.8, 0.85};
    for (const bool hasLong : {false, true}) {
        std::vector<Filter> series, inTurn;
        for (int i = 0; i < 2 * 3; ++i) {
            for (auto* filters : {&series, &inTurn}) {
                if (hasLong && i == 4) {
                    filters->push_back(MakeSingle({0.5, 0.2, 0.1, 0.0, 1.0, 0.1, -0.2, 0.1}));
                } else {
                    filters->push_back(MakeCascade(i % 3 == 1 ? high : Resonance(0.9 + 0.01 * i, 0.3 * i)));
                }
            }
        }
        std::vector<IIRState_Double*> states;
        for (const auto& filter : series) {
            states.push_back(filter.get());
        }
        const auto input = Noise<double>(6000, 8);
        Row rows[] = {input, Row(input.rbegin(), input.rend())};
        Row wanted[] = {rows[0], rows[1]};
        bool isSeries = false;
        ForEachPiece(input.size(), [&](std::size_t inBegin, std::size_t inCount) {
            const auto count = static_cast<unsigned>(inCount);
            double* const pointers[] = {rows[0].data() + inBegin, rows[1].data() + inBegin};
            isSeries = !isSeries; // the filters' memories are the same either way
            if (isSeries) {
                IIRSeries_InPlace(count, 2, pointers, 3, states.data());
            }
            for (std::size_t i = 0; i < states.size(); ++i) {
                if (!isSeries) {
                    IIR_InPlace(count, pointers[i / 3], states[i]);
                }
                IIR_InPlace(count, wanted[i / 3].data() + inBegin, inTurn[i].get());
            }
        });
        EXPECT_LT(MaxDifference(rows[0], wanted[0]), 1e-9);
        EXPECT_LT(MaxDifference(rows[1], wanted[1]), 1e-9);
    }
}

TEST_P(IIRTest, WritesNothingBehindTheRow)
{
    const auto input = Noise<double>(20, 12);
    for (unsigned count = 0; count < 20; ++count) {
        const auto filter = MakeCascade(Resonance(0.9, 1.0));
        Apply(filter, input);
        Row dest(21, 9.0);
        IIR(count, input.data(), dest.data(), filter.get());
        EXPECT_TRUE(std::all_of(dest.begin() + count, dest.end(), [](double v) { return v == 9.0; }))
            << count;
    }
}

} // namespace
} // namespace brisken::filter
