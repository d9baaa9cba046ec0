#include "LoudnessMeasurement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Progress.h"

namespace host {

namespace {

using tessaro::Itu1770;

struct Place
{
    const char* mName;
    Itu1770::ChannelLabel mLabel;
};

using Places = std::vector<Place>;

/// The usual layouts, by their number of channels
const std::map<int, Places>& GetLayouts()
{
    static const Place kL{"L", Itu1770::kLeft};
    static const Place kR{"R", Itu1770::kRight};
    static const Place kC{"C", Itu1770::kCenter};
    static const Place kLFE{"LFE", Itu1770::kLowFrequency};
    static const Place kLs{"Ls", Itu1770::kLeftSurround};
    static const Place kRs{"Rs", Itu1770::kRightSurround};
    static const std::map<int, Places> kLayouts = {{1, {{"mono", Itu1770::kOther}}},
                                                   {2, {kL, kR}},
                                                   {3, {kL, kR, kC}},
                                                   {4, {kL, kR, kLs, kRs}},
                                                   {5, {kL, kR, kC, kLs, kRs}},
                                                   {6, {kL, kR, kC, kLFE, kLs, kRs}}};
    return kLayouts;
}

Places GetPlaces(int inChannels)
{
    const auto found = GetLayouts().find(inChannels);
    if (found != GetLayouts().end()) {
        return found->second;
    }
    return Places(static_cast<std::size_t>(inChannels), Place{"-", Itu1770::kOther});
}

float LoudnessOf(const Itu1770& inMeter)
{
    return inMeter.IsValid() ? inMeter.GetLKFS() : std::numeric_limits<float>::quiet_NaN();
}

} // namespace

LoudnessMeasurement::LoudnessMeasurement(AudioSource& ioSource)
    : mSampleRate(ioSource.GetSampleRate()), mOvershoots({0, 1, 3, 6})
{
    const auto rate = static_cast<float>(mSampleRate);
    for (const auto& [name, label] : GetPlaces(ioSource.GetChannelCount())) {
        mLabels.push_back(label);
        mChannels.push_back({name});
        mCleaned.emplace_back(kBlockFrames);
        mTruePeaks.emplace_back().Init(kBlockFrames, rate);
    }
    mRows.resize(mChannels.size());
    mMeter.Init(kBlockFrames, rate, mLabels);
    StartStretch(0);

    Progress progress("measuring", ioSource.GetFrameCount());
    tessaro::AudioBuffer block(mChannels.size(), kBlockFrames);
    std::int64_t done = 0;
    // No block goes over the end of a second, at which the loudness over time is taken.
    while (const unsigned frames = ioSource.Read(
               block, std::min(kBlockFrames, static_cast<unsigned>(mSampleRate - mFramesOfSecond)))) {
        Add(block);
        progress.Update(done += frames);
    }
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        mTruePeaks[channel].GetPeakValue(mChannels[channel].mTruePeak, mChannels[channel].mTruePeakFrame);
    }
}

void LoudnessMeasurement::Add(const tessaro::AudioBuffer& inBlock)
{
    const unsigned frames = inBlock.GetBufferSize();
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        mRows[channel] = Clean(inBlock, channel);
        mTruePeaks[channel].Process(mRows[channel], frames);
    }
    mMeter.Process(mRows.data(), frames);
    for (int stretch = 0; stretch <= std::min(mSecond, kStretchSeconds - 1); ++stretch) {
        mStretches[static_cast<std::size_t>(stretch)].Process(mRows.data(), frames);
    }
    mOvershoots.Process(mRows.data(), static_cast<std::int64_t>(mRows.size()), frames);
    mFramesOfSecond += static_cast<int>(frames);
    if (mFramesOfSecond == mSampleRate) {
        EndSecond();
    }
}

/// The channel's samples with zeros for what is silent or no number
const float* LoudnessMeasurement::Clean(const tessaro::AudioBuffer& inBlock, std::size_t inChannel)
{
    auto& cleaned = mCleaned[inChannel];
    auto& channel = mChannels[inChannel];
    if (inBlock.IsChannelZero(inChannel)) {
        std::fill(cleaned.begin(), cleaned.end(), 0.0f);
        return cleaned.data();
    }
    for (unsigned i = 0; i < inBlock.GetBufferSize(); ++i) {
        const float sample = inBlock[inChannel][i];
        const bool isNumber = std::isfinite(sample);
        cleaned[i] = isNumber ? sample : 0.0f;
        channel.mInvalidCount += isNumber ? 0 : 1;
        channel.mSamplePeak = std::max(channel.mSamplePeak, static_cast<double>(std::fabs(cleaned[i])));
    }
    return cleaned.data();
}

void LoudnessMeasurement::EndSecond()
{
    mFramesOfSecond = 0;
    ++mSecond;
    const auto stretch = static_cast<std::size_t>(mSecond % kStretchSeconds);
    const float loudness = mSecond >= kStretchSeconds ? LoudnessOf(mStretches[stretch])
                                                      : std::numeric_limits<float>::quiet_NaN();
    mMoments.push_back({static_cast<double>(mSecond), loudness, LoudnessOf(mMeter)});
    StartStretch(stretch);
}

void LoudnessMeasurement::StartStretch(std::size_t inStretch)
{
    mStretches[inStretch].Init(kBlockFrames, static_cast<float>(mSampleRate), mLabels);
}

const LoudnessMeasurement::Channel& LoudnessMeasurement::GetLoudestChannel() const
{
    return *std::max_element(mChannels.begin(), mChannels.end(), [](const Channel& inA, const Channel& inB) {
        return inA.mTruePeak < inB.mTruePeak;
    });
}

} // namespace host
