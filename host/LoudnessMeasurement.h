#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/loudness/Itu1770.h>
#include <tessaro/loudness/OvershootCounter.h>
#include <tessaro/loudness/TruePeak.h>

#include "AudioSource.h"

namespace host {

/// Loudness and peaks of a whole file: integrated, over time, true peak and sample peak of each channel, and
/// how many blocks go over the full scale.
///
/// What a channel is follows from the number of channels, in the order of WAV files: 5.1 is L R C LFE Ls Rs.
/// Samples that are NaN or infinite count as zeros.
class LoudnessMeasurement
{
public:
    /// Blocks whose peaks are counted, in frames
    static constexpr unsigned kBlockFrames = 1024;
    /// The loudness over time is that of this many seconds, told each second.
    static constexpr int kStretchSeconds = 3;

    struct Channel
    {
        std::string mName;
        float mTruePeak = 0.0f; ///< dB
        std::int64_t mTruePeakFrame = 0;
        double mSamplePeak = 0.0; ///< linear
        std::int64_t mInvalidCount = 0;
    };

    struct Moment
    {
        double mSeconds;
        float mStretch; ///< LKFS of the last stretch, NaN where nothing could be measured
        float mSoFar;   ///< integrated up to here, likewise
    };

    /// Reads the source from where it stands to its end; shows progress.
    explicit LoudnessMeasurement(AudioSource& ioSource);

    bool IsValid() const { return mMeter.IsValid(); }
    float GetLKFS() const { return mMeter.GetLKFS(); }
    const std::vector<Channel>& GetChannels() const { return mChannels; }
    /// The one with the highest true peak
    const Channel& GetLoudestChannel() const;
    std::map<unsigned, unsigned> GetOvershoots() const { return mOvershoots.GetBuckets(); }
    const std::vector<Moment>& GetMoments() const { return mMoments; }

private:
    void Add(const tessaro::AudioBuffer& inBlock);
    const float* Clean(const tessaro::AudioBuffer& inBlock, std::size_t inChannel);
    void EndSecond();
    void StartStretch(std::size_t inStretch);

    int mSampleRate;
    std::vector<tessaro::Itu1770::ChannelLabel> mLabels;
    tessaro::Itu1770 mMeter;
    std::array<tessaro::Itu1770, kStretchSeconds> mStretches; ///< begun a second apart
    std::vector<tessaro::TruePeak> mTruePeaks;
    tessaro::dsp::OvershootCounter mOvershoots;
    std::vector<Channel> mChannels;
    std::vector<Moment> mMoments;
    std::vector<std::vector<float>> mCleaned;
    std::vector<const float*> mRows;
    int mSecond = 0;         ///< whole seconds so far
    int mFramesOfSecond = 0; ///< frames of the one that runs
};

} // namespace host
