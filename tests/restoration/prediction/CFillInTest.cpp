#include <tessaro/restoration/prediction/CFillIn.h>

#include <algorithm>
#include <cmath>
#include <complex>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeNoise;
using testing::Row;

constexpr std::size_t kLength = 1200;
constexpr int kStart = 600;
constexpr int kEnd = 640;

/// Root mean square of the difference over the span
double Error(const Row& inActual, const Row& inExpected)
{
    Row difference(inActual.begin() + kStart, inActual.begin() + kEnd);
    std::transform(difference.begin(), difference.end(), inExpected.begin() + kStart, difference.begin(),
                   std::minus<>());
    return testing::Rms(difference);
}

Row MakeTones()
{
    Row row = testing::MakeSine(kLength, 440, 48000, 0.03);
    const Row third = testing::MakeSine(kLength, 1330, 48000, 0.015, 0.5);
    std::transform(row.begin(), row.end(), third.begin(), row.begin(), std::plus<>());
    return row;
}

/// Noise without its highest part
Row MakeSoftNoise()
{
    Row row = MakeNoise(kLength, 21, 0.02);
    for (std::size_t i = 1; i < kLength; ++i) {
        row[i] = 0.2f * row[i] + 0.8f * row[i - 1];
    }
    return row;
}

Row Damage(Row inRow, float inAmplitude)
{
    const Row noise = MakeNoise(kEnd - kStart, 5, inAmplitude);
    std::transform(noise.begin(), noise.end(), inRow.begin() + kStart, inRow.begin() + kStart, std::plus<>());
    return inRow;
}

bool FillIn(CFillIn& ioFillIn, Row& ioRow, int inStart = kStart, int inEnd = kEnd)
{
    return ioFillIn.FillInNow(inStart, inEnd, ioRow.data(), nullptr, 0.0f, 0.0f, nullptr);
}

/// The whole of the method once more, slow and in double precision, with the full complex spectrum
class Reference
{
public:
    Reference(Row inData, int inFrame, int inContext, bool inOneSided)
        : mData(std::move(inData)), mFrame(inFrame), mContext(inContext), mOneSided(inOneSided)
    {
    }

    Row FillIn(int inStart, int inEnd)
    {
        const int half = mFrame / 2;
        int s = inStart - half;
        int e = inEnd + half;
        if (inStart - 2 * half < 0) {
            e -= half - s;
            s = half;
        }
        const int k = std::max(4, 8 * mContext / mFrame);
        const int step = mContext / k;
        const int m = std::min(step, k) + 1;
        std::vector<double> reference = Mean(s - half - mContext, step, m);
        const std::vector<double> right = mOneSided ? reference : Mean(e - half, step, m);
        const std::vector<double> left = reference;
        std::vector<double> gains(static_cast<std::size_t>(mFrame), 1.0);
        Row result = mData;
        for (int p = s + 1; p < e; ++p) {
            auto bins = Spectrum(p - half);
            for (std::size_t b = mOneSided ? 2 : static_cast<std::size_t>(m) + 1; b < bins.size(); ++b) {
                const double limit = (mOneSided ? 2.4 : 1.0) * reference[b];
                const double magnitude = std::abs(bins[b]);
                const double t = magnitude > 1e-10 && magnitude > limit ? limit / magnitude : 1.0;
                const double up = gains[b] * std::exp2(0.05);
                gains[b] = up < t ? up : std::max(t, gains[b] * std::exp2(-0.125));
                bins[b] *= gains[b];
            }
            double sample = 0.0;
            for (std::size_t b = 0; b < bins.size(); ++b) {
                reference[b] += (right[b] - left[b]) / (e - s);
                sample += (b % 2 == 0 ? 1.0 : -1.0) * bins[b].real() / mFrame;
            }
            const auto fade = [half](int inDistance) {
                return inDistance < half ? 0.5 - 0.5 * std::cos(inDistance * M_PI / half) : 1.0;
            };
            const double weight = fade(p - s - 1) * fade(e - 1 - p);
            const auto at = static_cast<std::size_t>(p);
            result[at] = static_cast<float>(mData[at] + weight * (sample - mData[at]));
        }
        return result;
    }

private:
    std::vector<std::complex<double>> Spectrum(int inStart) const
    {
        std::vector<std::complex<double>> bins(static_cast<std::size_t>(mFrame));
        for (int b = 0; b < mFrame; ++b) {
            for (int i = 1; i < mFrame; ++i) {
                const double window = 0.5001 - 0.4999 * std::cos(2.0 * M_PI * i / mFrame);
                bins[static_cast<std::size_t>(b)] += std::polar(
                    window * mData[static_cast<std::size_t>(inStart + i)], -2.0 * M_PI * b * i / mFrame);
            }
        }
        return bins;
    }

    std::vector<double> Mean(int inStart, int inStep, int inCount) const
    {
        std::vector<double> mean(static_cast<std::size_t>(mFrame));
        for (int frame = 0; frame < inCount; ++frame) {
            const auto bins = Spectrum(std::max(inStart + frame * inStep, 0));
            for (std::size_t b = 0; b < bins.size(); ++b) {
                mean[b] += (std::abs(bins[b].imag()) + bins[b].real() * bins[b].real()) / inCount;
            }
        }
        return mean;
    }

    Row mData;
    int mFrame;
    int mContext;
    bool mOneSided;
};

TEST(CFillInTest, FollowsTheMethodStepByStep)
{
    struct Case
    {
        int mFrame;
        int mContext;
        bool mOneSided;
        int mStart;
    };
    for (const auto& [frame, context, oneSided, start] :
         {Case{64, 32, false, 600}, Case{64, 32, true, 600}, Case{16, 64, false, 600},
          Case{8, 100, true, 600}, Case{32, 0, false, 600}, Case{64, 40, false, 20}, Case{64, 40, true, 70},
          Case{16, 8, false, 0}}) {
        Row row = Damage(MakeTones(), 0.3f);
        Reference reference(row, frame, context, oneSided);
        CFillIn fillIn;
        fillIn.Init(frame + frame / 2, static_cast<unsigned>(context)); // no power of two
        fillIn.SetMode(oneSided ? CFillIn::kOneSided : CFillIn::kTwoSided);
        const Row expected = reference.FillIn(start, start + 40);
        EXPECT_TRUE(FillIn(fillIn, row, start, start + 40));
        for (std::size_t i = 0; i < kLength; ++i) {
            ASSERT_NEAR(row[i], expected[i], 4e-6) << i << " with frames of " << frame;
        }
    }
}

TEST(CFillInTest, TakesDamageOutOfTonesAndNoise)
{
    for (const Row& original : {MakeTones(), MakeSoftNoise()}) {
        for (const unsigned mode : {CFillIn::kTwoSided, CFillIn::kOneSided}) {
            Row row = Damage(original, 0.4f);
            const double before = Error(row, original);
            CFillIn fillIn;
            fillIn.Init(64, 64);
            fillIn.SetMode(mode);
            EXPECT_TRUE(FillIn(fillIn, row));
            EXPECT_LT(Error(row, original), 0.5 * before);
            EXPECT_TRUE(std::equal(row.begin(), row.begin() + kStart - 32 + 2, original.begin()));
            EXPECT_TRUE(std::equal(row.begin() + kEnd + 32 - 1, row.end(), original.begin() + kEnd + 32 - 1));
        }
    }
}

TEST(CFillInTest, ReusesMemoryTellsProgressAndStopsWhenCancelled)
{
    const Row damaged = Damage(MakeTones(), 0.3f);
    Row expected = damaged;
    CFillIn small;
    small.Init(16, 20);
    FillIn(small, expected);
    Row row = damaged;
    CFillIn fillIn;
    FillIn(fillIn, row); // before Init: nothing
    EXPECT_EQ(row, damaged);
    fillIn.Init(128, 64);
    FillIn(fillIn, row);
    fillIn.Init(16, 20);
    row = damaged;
    float progress = 0.0f;
    bool cancel = false;
    const testing::AllocationGuard guard;
    EXPECT_TRUE(fillIn.FillInNow(kStart, kEnd, row.data(), &progress, 20.0f, 80.0f, &cancel));
    EXPECT_FLOAT_EQ(progress, 80.0f);
    EXPECT_EQ(row, expected);
    cancel = true;
    EXPECT_FALSE(fillIn.FillInNow(kStart, kEnd, row.data(), &progress, 0.0f, 1.0f, &cancel));
    EXPECT_FLOAT_EQ(progress, 80.0f);
    EXPECT_EQ(row, expected);
}

TEST(CFillInTest, ClicksAreReplacedByTheLineAcross)
{
    Row line(100);
    for (std::size_t i = 0; i < line.size(); ++i) {
        line[i] = 0.01f * static_cast<float>(i);
    }
    Row row = line;
    std::fill(row.begin() + 40, row.begin() + 60, 3.0f);
    CFillIn::WindowClickData(40, 60, row.data());
    CFillIn::WindowClickData(70, 70, row.data());
    for (std::size_t i = 0; i < line.size(); ++i) {
        ASSERT_NEAR(row[i], line[i], 1e-6) << i;
    }
}

} // namespace
} // namespace tessaro
