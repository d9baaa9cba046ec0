#include "OfflineDriver.h"

#include <algorithm>
#include <numeric>

#include <boost/intrusive_ptr.hpp>
#include <gtest/gtest.h>
#include <tessaro/frame/DSPMultiPassAnalyzer.h>

#include "HostError.h"

namespace host {

namespace {

/// Channel c holds 1, 2, 3, ... times (c + 1): every sample tells where it comes from.
class CountingSource : public AudioSource
{
public:
    CountingSource(int inChannels, std::int64_t inFrames) : mChannels(inChannels), mFrames(inFrames) {}

    int GetSampleRate() const override { return 8000; }
    int GetChannelCount() const override { return mChannels; }
    std::int64_t GetFrameCount() const override { return mFrames; }
    void Seek(std::int64_t inFrame) override { mPosition = inFrame; }
    unsigned Read(tessaro::AudioBuffer& outBuffer, unsigned inMaxFrames) override
    {
        const auto count = static_cast<unsigned>(std::min<std::int64_t>(inMaxFrames, mFrames - mPosition));
        outBuffer.SetUseSize(count);
        for (int channel = 0; channel < mChannels; ++channel) {
            for (unsigned i = 0; i < count; ++i) {
                outBuffer[static_cast<std::size_t>(channel)][i] =
                    static_cast<float>((mPosition + i + 1) * (channel + 1));
            }
        }
        mPosition += count;
        return count;
    }

private:
    int mChannels;
    std::int64_t mFrames;
    std::int64_t mPosition = 0;
};

/// What the source holds on a frame, with silence behind its end.
float At(std::int64_t inFrame, std::int64_t inFrames)
{
    return inFrame < inFrames ? static_cast<float>(inFrame + 1) : 0.0f;
}

/// Keeps all that it is given of channel 0, and wants blocks of changing sizes.
class Recorder : public tessaro::DSPAnalyzer
{
public:
    explicit Recorder(int inLatency, std::int64_t inStep = 0) : mLatency(inLatency), mStep(inStep) {}

    void SetIOConfig(int inNumChannels, float inSamplingRate) override
    {
        mCalls +=
            "io" + std::to_string(inNumChannels) + "/" + std::to_string(static_cast<int>(inSamplingRate));
    }
    bool SetSelection(std::int64_t inStart, std::int64_t inLength) override
    {
        mCalls += " selection" + std::to_string(inStart);
        mWanted = inLength + mLatency;
        return inLength != 13;
    }
    int GetLatency() const override { return mLatency; }
    int GetDesiredBlockSize() const override { return 100 + static_cast<int>(mHeard.size() % 7) * 9000; }
    bool IsCompleted() const override
    {
        ++mAsked;
        return !mIsEndless && mConsumed >= mWanted;
    }
    float GetProgress() const override { return 50.0f; }
    void Start(float*) override { mCalls += " start"; }
    std::int64_t Analyze(const float* const* inInput, int, int inNumSamples) override
    {
        ++mAnalyzed;
        EXPECT_EQ(mAsked, mAnalyzed - 1);
        mHeard.insert(mHeard.end(), inInput[0], inInput[0] + inNumSamples);
        const auto consumed = mStep > 0 ? std::min<std::int64_t>(mStep, inNumSamples) : inNumSamples;
        mHeard.resize(mHeard.size() - static_cast<std::size_t>(inNumSamples - consumed)); // will come again
        mConsumed += consumed;
        return consumed;
    }
    void Done() override { mCalls += " done"; }

    int mLatency;
    std::int64_t mStep;
    std::int64_t mWanted = 0;
    std::int64_t mConsumed = 0;
    mutable int mAsked = 0;
    int mAnalyzed = 0;
    bool mIsEndless = false;
    std::vector<float> mHeard;
    std::string mCalls;
};

TEST(OfflineDriverTest, AnalyzerHearsTheSelectionAndItsLatencyAndSilenceBehindTheSource)
{
    for (const auto& [selection, latency, step] :
         {std::tuple(Selection{0, 30000}, 0, 0), std::tuple(Selection{500, 2000}, 300, 0),
          std::tuple(Selection{29000, 1000}, 5000, 0), std::tuple(Selection{0, 30000}, 10, 77),
          std::tuple(Selection{4, 0}, 0, 0)}) {
        CountingSource source(2, 30000);
        Recorder recorder(latency, step);
        OfflineDriver("test", source).Analyze(recorder, selection);
        EXPECT_EQ(recorder.mCalls, "io2/8000 selection" + std::to_string(selection.mStart) + " start done");
        EXPECT_EQ(recorder.mAsked, recorder.mAnalyzed);
        ASSERT_EQ(recorder.mHeard.size(), static_cast<std::size_t>(selection.mLength + latency));
        for (std::size_t i = 0; i < recorder.mHeard.size(); ++i) {
            ASSERT_EQ(recorder.mHeard[i], At(selection.mStart + static_cast<std::int64_t>(i), 30000)) << i;
        }
    }
}

TEST(OfflineDriverTest, EndsWithAnErrorWhenAnAnalyzerRefusesOrNeverEnds)
{
    CountingSource source(1, 1000);
    Recorder refusing(0);
    EXPECT_THROW(OfflineDriver("test", source).Analyze(refusing, {0, 13}), HostError);
    EXPECT_EQ(refusing.mAnalyzed, 0);
    Recorder endless(0);
    endless.mIsEndless = true;
    EXPECT_THROW(OfflineDriver("test", source).Analyze(endless, {0, 1000}), HostError);
}

/// Sums each pass, and has another latency in each.
class TwoPasses : public tessaro::DSPMultiPassAnalyzer
{
public:
    TwoPasses() : DSPMultiPassAnalyzer(2) {}

    using DSPMultiPassAnalyzer::Analyze;
    using DSPMultiPassAnalyzer::GetLatency;
    int GetLatency(int inPass) const override { return inPass == 0 ? 0 : 50; }
    int GetDesiredBlockSize() const override { return 700; }
    std::int64_t Analyze(int inPass, const float* const* inInput, int, int inNumSamples) override
    {
        mSums[inPass] = std::accumulate(inInput[0], inInput[0] + inNumSamples, mSums[inPass]);
        return GetDesiredBlockSize(); // moves on by whole steps, beyond the end too
    }
    void OnPassDone(int inPass) override { mPassesDone += inPass + 1; }
    void Done() override { mIsDone = true; }

    double mSums[2] = {};
    int mPassesDone = 0;
    bool mIsDone = false;
};

TEST(OfflineDriverTest, MultiPassAnalyzerIsRewoundAndGetsTheLatencyOfEachPass)
{
    for (const std::int64_t length : {1960, 700, 0}) {
        CountingSource source(1, 2000);
        TwoPasses analyzer;
        OfflineDriver("test", source).Analyze(analyzer, {20, length});
        const auto sumUpTo = [](double inFrame) { return inFrame * (inFrame + 1.0) / 2.0; };
        const double end = 20.0 + static_cast<double>(length);
        EXPECT_EQ(analyzer.mSums[0], sumUpTo(end) - sumUpTo(20.0));
        EXPECT_EQ(analyzer.mSums[1], sumUpTo(std::min(end + 50.0, 2000.0)) - sumUpTo(20.0));
        EXPECT_EQ(analyzer.mPassesDone, 3);
        EXPECT_TRUE(analyzer.mIsDone);
    }
}

/// Delays by its latency, and has a tail of falling numbers.
class DelayWithTail : public tessaro::DSPProcess
{
public:
    DelayWithTail(int inLatency, int inTail) : mLine(static_cast<std::size_t>(inLatency)), mTail(inTail) {}

    bool SetSelection(std::int64_t, std::int64_t inLength) override { return inLength != 13; }
    void Process(const float* const* inInput, float* const* outOutput, int inNumChannels,
                 int inNumSamples) override
    {
        for (int i = 0; i < inNumSamples; ++i) {
            mLine.push_back(inInput[0][i]);
            for (int channel = 0; channel < inNumChannels; ++channel) {
                outOutput[channel][i] = mLine.front() * static_cast<float>(channel + 1);
            }
            mLine.erase(mLine.begin());
        }
    }
    int Flush(float* const* outOutput, int, int inNumSamples) override
    {
        const int count = mTail < 0 ? inNumSamples : std::min({mTail, inNumSamples, 1000});
        for (int i = 0; i < count; ++i) {
            outOutput[0][i] = static_cast<float>(-mTail + i);
        }
        mTail -= mTail < 0 ? 0 : count;
        return count;
    }
    void Done() override { mIsDone = true; }
    int GetLatency() const override { return static_cast<int>(mLine.size()); }

    std::vector<float> mLine;
    int mTail; ///< below 0: without end
    bool mIsDone = false;
};

TEST(OfflineDriverTest, ProcessComesOutInStepWithItsInputAndItsTailBehindIt)
{
    for (const auto& [latency, tail, selection] :
         {std::tuple(0, 0, Selection{0, 20000}), std::tuple(37, 0, Selection{0, 20000}),
          std::tuple(5000, 2500, Selection{100, 9000}), std::tuple(9, 0, Selection{0, 0})}) {
        CountingSource source(2, 20000);
        const boost::intrusive_ptr<DelayWithTail> process(new DelayWithTail(latency, tail));
        std::vector<float> heard;
        const auto flushed =
            OfflineDriver("test", source)
                .Process(*process, selection, [&](const tessaro::AudioBuffer& inBlock) {
                    heard.insert(heard.end(), inBlock[0], inBlock[0] + inBlock.GetBufferSize());
                });
        EXPECT_TRUE(process->mIsDone);
        EXPECT_EQ(flushed, tail);
        const auto length = static_cast<std::size_t>(selection.mLength);
        ASSERT_EQ(heard.size(), length + static_cast<std::size_t>(tail));
        for (std::size_t i = 0; i < length; ++i) {
            ASSERT_EQ(heard[i], At(selection.mStart + static_cast<std::int64_t>(i), 20000)) << latency;
        }
        for (std::size_t i = length; i < heard.size(); ++i) {
            ASSERT_EQ(heard[i], -static_cast<float>(heard.size() - i)) << i;
        }
    }
}

TEST(OfflineDriverTest, ProcessThatRefusesOrNeverEndsIsAnError)
{
    CountingSource source(1, 100);
    const auto ignore = [](const tessaro::AudioBuffer&) {};
    const boost::intrusive_ptr<DelayWithTail> process(new DelayWithTail(0, -1));
    EXPECT_THROW(OfflineDriver("test", source).Process(*process, {0, 13}, ignore), HostError);
    EXPECT_THROW(OfflineDriver("test", source).Process(*process, {0, 100}, ignore), HostError);
}

} // namespace

} // namespace host
