#include <tessaro/eq/ParametricEQ.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include <brisken/Utility.h>
#include <tessaro/filters/BiquadDesign.h>

namespace eq {

namespace {

constexpr unsigned kOffsetRun = 128;
constexpr float kOffsetEven = 1e-10f;
constexpr float kOffsetOdd = 2e-10f;
/// Decades; a larger move of a frequency clears the band's memory, for it clicks anyway.
constexpr double kSmallMove = 0.3;
constexpr std::size_t kNumCoefficients = 6;
/// Channels that the filter kernel takes side by side
constexpr unsigned kChannelsAtATime = 2;
/// Doubles that lie on one cache line
constexpr unsigned kPitchUnit = 8;

} // namespace

void ParametricEQ::FreeScratch::operator()(double* inScratch) const
{
    brisken::utility::Free(inScratch);
}

ParametricEQ::ParametricEQ(int inMaxBlockSize, float inSampleRate, ChannelLayout inLayout)
    : mMaxBlockSize(inMaxBlockSize), mSampleRate(inSampleRate), mLayout(std::move(inLayout))
{
    UpdateAudioConfig();
}

ParametricEQ::~ParametricEQ() = default;

void ParametricEQ::UpdateAudioConfig()
{
    mBands = {
        {false, kHighpass, 30.0f, 30.0f, 0.0f, 0.7f, false},
        {true, kPeaking, 180.0f, 180.0f, 0.0f, 0.3f, true},
        {true, kPeaking, 520.0f, 520.0f, 0.0f, 0.3f, true},
        {true, kPeaking, 1870.0f, 1870.0f, 0.0f, 0.3f, true},
        {true, kPeaking, 7400.0f, 7400.0f, 0.0f, 0.3f, true},
        {false, kLowpass, 10000.0f, 10000.0f, 0.0f, 0.7f, false},
    };

    constexpr double kPassing[kNumCoefficients] = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
    mFilters.clear();
    mFilters.resize(mLayout.size());
    for (auto& filters : mFilters) {
        for (auto& handle : filters) {
            brisken::IIRState_Double* state = nullptr;
            brisken::filter::IIRInit_BiQuad(&state, kPassing, 1, nullptr);
            handle.reset(state, brisken::filter::IIRFree);
        }
    }
    for (std::size_t band = 0; band < kNumBands; ++band) {
        CalculateIIRCoefficients(band, false);
    }

    const auto blockSize = static_cast<unsigned>(std::max(mMaxBlockSize, 0));
    mScratchPitch = (blockSize + kPitchUnit - 1) / kPitchUnit * kPitchUnit;
    mScratch.reset(brisken::utility::Malloc_Double(kChannelsAtATime * mScratchPitch));
    if (mScratch == nullptr) {
        throw std::bad_alloc();
    }
}

void ParametricEQ::SetAudioChannelLayout(const ChannelLayout& inLayout)
{
    if (inLayout != mLayout) {
        mLayout = inLayout;
        UpdateAudioConfig();
    }
}

void ParametricEQ::SetSampleRate(float inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        mSampleRate = inSampleRate;
        UpdateAudioConfig();
    }
}

void ParametricEQ::SetMaxProcessingBlockSize(int inMaxBlockSize)
{
    if (inMaxBlockSize != mMaxBlockSize) {
        mMaxBlockSize = inMaxBlockSize;
        UpdateAudioConfig();
    }
}

void ParametricEQ::SetBandEnable(std::size_t inBand, bool inEnabled)
{
    mBands[inBand].mEnabled = inEnabled;
}

void ParametricEQ::SetBandShape(std::size_t inBand, unsigned inShape)
{
    mBands[inBand].mShape = inShape;
    UpdateBypass(inBand);
    CalculateIIRCoefficients(inBand, true);
}

void ParametricEQ::SetFrequency(std::size_t inBand, float inFrequency)
{
    auto& band = mBands[inBand];
    const double move = std::abs(std::log10(static_cast<double>(inFrequency)) -
                                 std::log10(static_cast<double>(band.mLastMoveFrequency)));
    band.mLastMoveFrequency = inFrequency;
    band.mFrequency = inFrequency;
    UpdateBypass(inBand);
    CalculateIIRCoefficients(inBand, move < kSmallMove);
}

void ParametricEQ::SetGain(std::size_t inBand, float inGain)
{
    mBands[inBand].mGain = inGain;
    UpdateBypass(inBand);
    CalculateIIRCoefficients(inBand, true);
}

void ParametricEQ::SetQ(std::size_t inBand, float inQ)
{
    mBands[inBand].mQ = inQ;
    UpdateBypass(inBand);
    CalculateIIRCoefficients(inBand, true);
}

void ParametricEQ::UpdateBypass(std::size_t inBand)
{
    auto& band = mBands[inBand];
    if (band.mShape == kPeaking) {
        band.mBypassed = band.mGain == 0.0f;
    } else if (band.mShape == kLowpass || band.mShape == kHighpass) {
        band.mBypassed = false;
    }
}

void ParametricEQ::CalculateIIRCoefficients(double* outCoefficients, float inSampleRate, unsigned inShape,
                                            float inFrequency, float inGain, float inQ)
{
    // In double precision, for a `float` Q could be taken for the flag of a first-order design.
    const double rate = inSampleRate, frequency = inFrequency, gain = inGain, q = inQ;
    switch (inShape) {
    case kPeaking:
        tessaro::PeakingEQCoefficients(outCoefficients, rate, frequency, gain, q);
        break;
    case kLowpass:
        tessaro::LowpassCoefficients(outCoefficients, rate, frequency, q);
        break;
    case kHighpass:
        tessaro::HighpassCoefficients(outCoefficients, rate, frequency, q);
        break;
    default:
        break;
    }
}

void ParametricEQ::CalculateIIRCoefficients(std::size_t inBand, bool inKeepHistory)
{
    const auto& band = mBands[inBand];
    double coefficients[kNumCoefficients] = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
    CalculateIIRCoefficients(coefficients, mSampleRate, band.mShape, band.mFrequency, band.mGain, band.mQ);
    for (const auto& filters : mFilters) {
        auto* const filter = filters[inBand].get();
        brisken::filter::IIRSetTaps(filter, coefficients);
        if (!inKeepHistory) {
            brisken::filter::IIRSetDlyLine(filter, nullptr);
        }
    }
}

void ParametricEQ::AddOffset(std::size_t inChannel, unsigned inCount, float* ioSamples) const
{
    float offset = inChannel % 2 == 0 ? kOffsetEven : kOffsetOdd;
    for (unsigned begin = 0; begin < inCount; begin += kOffsetRun) {
        brisken::utility::AddConstant_InPlace(std::min(kOffsetRun, inCount - begin), ioSamples + begin,
                                              offset);
        offset = -offset;
    }
}

void ParametricEQ::ProcessPair(std::size_t inChannel, unsigned inNumChannels, unsigned inCount,
                               float* const* ioChannels)
{
    double* rows[kChannelsAtATime];
    brisken::IIRState_Double* filters[kChannelsAtATime * kNumBands];
    unsigned numFilters = 0;
    for (unsigned i = 0; i < inNumChannels; ++i) {
        float* const samples = ioChannels[inChannel + i];
        AddOffset(inChannel + i, inCount, samples);
        rows[i] = mScratch.get() + i * mScratchPitch;
        brisken::utility::Convert(inCount, samples, rows[i]);
        for (std::size_t band = 0; band < kNumBands; ++band) {
            if (mBands[band].mEnabled && !mBands[band].mBypassed) {
                filters[numFilters++] = mFilters[inChannel + i][band].get();
            }
        }
    }
    brisken::filter::IIRSeries_InPlace(inCount, inNumChannels, rows, numFilters / inNumChannels, filters);
    for (unsigned i = 0; i < inNumChannels; ++i) {
        brisken::utility::Convert(inCount, rows[i], ioChannels[inChannel + i]);
    }
}

void ParametricEQ::ProcessInPlace(unsigned inCount, float* const* ioChannels)
{
    const auto numChannels = mLayout.size();
    for (std::size_t channel = 0; channel < numChannels; channel += kChannelsAtATime) {
        const bool isLast = channel + 1 == numChannels;
        ProcessPair(channel, isLast ? 1 : kChannelsAtATime, inCount, ioChannels);
    }
}

void ParametricEQ::Reset()
{
    for (const auto& filters : mFilters) {
        for (const auto& filter : filters) {
            brisken::filter::IIRSetDlyLine(filter.get(), nullptr);
        }
    }
}

} // namespace eq
