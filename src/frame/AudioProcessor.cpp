#include <tessaro/frame/AudioProcessor.h>

#include <cmath>

#include <brisken/utility/Reductions.h>

namespace tessaro {

namespace {

constexpr float kSmallestAmplitude = 1e-20f;
constexpr float kSmallestDecibels = -400.0f;
constexpr float kDecibelsPerNeper = 8.685889f;
constexpr float kNepersPerDecibel = 0.115129255f;

} // namespace

AudioProcessor::~AudioProcessor() = default;

void AudioProcessor::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    mNumChannels = inNumChannels;
    mSamplingRate = inSamplingRate;
    mMaxBlockSize = inMaxBlockSize;
}

void AudioProcessor::Process(const float* const*, int inNumSamples, float* const*,
                             ombrel::utility::Flags<std::uint64_t>)
{
    if (inNumSamples > mMaxBlockSize) {
        ChangeBufferSize(inNumSamples);
    }
}

void AudioProcessor::Reset() {}

void AudioProcessor::ChangeBufferSize(int inMaxBlockSize)
{
    SetMode(mNumChannels, mSamplingRate, inMaxBlockSize);
}

float AudioProcessor::Amp2DB(float inAmplitude)
{
    return inAmplitude < kSmallestAmplitude ? kSmallestDecibels : std::log(inAmplitude) * kDecibelsPerNeper;
}

float AudioProcessor::DB2Amp(float inDecibels)
{
    return std::exp(inDecibels * kNepersPerDecibel);
}

float AudioProcessor::TimeToIirA(float inSeconds, float inRate)
{
    return inSeconds == 0.0f ? 1.0f : 1.0f - std::exp(-1.0f / (inSeconds * inRate));
}

float AudioProcessor::SoftDecision(float inX, float inLow, float inHigh)
{
    if (inX <= inLow) {
        return 0.0f;
    }
    if (inX >= inHigh) {
        return 1.0f;
    }
    return (inX - inLow) / (inHigh - inLow);
}

int AudioProcessor::FindMax(const float* inData, int inFirst, int inLast)
{
    if (inLast < inFirst) {
        return inFirst;
    }
    const auto count = static_cast<unsigned>(inLast - inFirst) + 1;
    return inFirst + static_cast<int>(brisken::utility::MaxIndex(count, inData + inFirst, nullptr));
}

} // namespace tessaro
