#include <tessaro/frame/AudioProcessor.h>

#include <cmath>
#include <limits>
#include <vector>

#include <boost/intrusive_ptr.hpp>
#include <gtest/gtest.h>

namespace tessaro {
namespace {

struct ModeRecorder : AudioProcessor
{
    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize) override
    {
        AudioProcessor::SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
        blockSizes.push_back(inMaxBlockSize);
    }
    std::vector<int> blockSizes;
};

TEST(AudioProcessorTest, GrowsForABlockAboveTheMaximumAndForNoOther)
{
    const boost::intrusive_ptr<ModeRecorder> processor(new ModeRecorder);
    EXPECT_EQ(processor->GetMaxBlockSize(), 0);
    EXPECT_EQ(processor->GetSamplingRate(), 0);
    processor->SetMode(2, 48000, 64);
    for (const int count : {0, 1, 63, 64}) {
        processor->Process(nullptr, count, nullptr, 0);
    }
    EXPECT_EQ(processor->blockSizes, (std::vector{64}));
    processor->Process(nullptr, 65, nullptr, 0);
    EXPECT_EQ(processor->blockSizes, (std::vector{64, 65}));
    EXPECT_EQ(processor->GetNumChannels(), 2);
    EXPECT_EQ(processor->GetSamplingRate(), 48000);

    processor->SetSystemDelay(12);
    processor->SetLookAhead(-3);
    processor->Reset();
    EXPECT_EQ(processor->GetSystemDelay(), 12);
    EXPECT_EQ(processor->GetLookAhead(), -3);
}

TEST(AudioProcessorTest, ConvertsBetweenAmplitudeAndDecibels)
{
    EXPECT_EQ(AudioProcessor::Amp2DB(0.0f), -400.0f);
    EXPECT_EQ(AudioProcessor::Amp2DB(-1.0f), -400.0f);
    EXPECT_EQ(AudioProcessor::Amp2DB(0.99e-20f), -400.0f);
    EXPECT_NEAR(AudioProcessor::Amp2DB(1.01e-20f), -399.91f, 0.01f);
    for (const float decibels : {-120.0f, -6.0f, 0.0f, 24.0f}) {
        EXPECT_NEAR(AudioProcessor::DB2Amp(decibels) / std::pow(10.0, decibels / 20.0), 1.0, 2e-6);
        EXPECT_NEAR(AudioProcessor::Amp2DB(AudioProcessor::DB2Amp(decibels)), decibels, 3e-5);
    }
}

TEST(AudioProcessorTest, TimeConstantReachesItsShareOfAStepInTime)
{
    EXPECT_EQ(AudioProcessor::TimeToIirA(0.0f, 48000.0f), 1.0f);
    const float a = AudioProcessor::TimeToIirA(0.01f, 48000.0f);
    double y = 0.0;
    for (int i = 0; i < 480; ++i) {
        y += a * (1.0 - y);
    }
    EXPECT_NEAR(y, 1.0 - std::exp(-1.0), 1e-4);
}

TEST(AudioProcessorTest, SoftDecisionIsAStraightLineBetweenItsBounds)
{
    EXPECT_EQ(AudioProcessor::SoftDecision(2.0f, 2.0f, 6.0f), 0.0f);
    EXPECT_EQ(AudioProcessor::SoftDecision(3.0f, 2.0f, 6.0f), 0.25f);
    EXPECT_EQ(AudioProcessor::SoftDecision(6.0f, 2.0f, 6.0f), 1.0f);
    EXPECT_EQ(AudioProcessor::SoftDecision(2.0f, 2.0f, 2.0f), 0.0f);
    EXPECT_EQ(AudioProcessor::SoftDecision(3.0f, 2.0f, 2.0f), 1.0f);
}

TEST(AudioProcessorTest, FindMaxLooksAtBothEndsOfItsRange)
{
    const float data[] = {9, 1, 5, 3, 5, 8};
    EXPECT_EQ(AudioProcessor::FindMax(data, 0, 5), 0);
    EXPECT_EQ(AudioProcessor::FindMax(data, 1, 4), 2);
    EXPECT_EQ(AudioProcessor::FindMax(data, 1, 5), 5);
    EXPECT_EQ(AudioProcessor::FindMax(data, 3, 3), 3);
    EXPECT_EQ(AudioProcessor::FindMax(data, 4, 3), 4);
}

} // namespace
} // namespace tessaro
